// CHourglass over real windows, with the real pointer of the virtual screen.
#include <gtest/gtest.h>

#include <functional>
#include <set>

#include "support/client.h"
#include "support/import_patch.h"
#include "support/late_bound.h"
#include "support/library_copy.h"
#include "support/report_recorder.h"
#include "support/test_window.h"

namespace velk::test {
namespace {

HCURSOR Shape(LPCWSTR shape) { return LoadCursorW(nullptr, shape); }
const HCURSOR kArrow = Shape(IDC_ARROW);
const HCURSOR kWait = Shape(IDC_WAIT);
const HCURSOR kCross = Shape(IDC_CROSS);

// A window that chooses a cross for itself, wherever the pointer is in it.
TestWindow::Handler ChoosesCross() {
    return [](HWND, UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
        if (message != WM_SETCURSOR) return std::nullopt;
        SetCursor(kCross);
        return TRUE;
    };
}

// Moves the pointer over a window, as a user does, and gives what it looks like there.
HCURSOR Over(const TestWindow& window) {
    static int step = 0;
    RECT place{};
    GetWindowRect(window.get(), &place);
    SetWindowPos(window.get(), HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_SHOWWINDOW);
    SetCursorPos(place.left + 100 + step++ % 5, place.top + 100);
    PumpMessages();
    return GetCursor();
}

// Which hooks the library has set and not taken away again.
class HookRecorder {
  public:
    explicit HookRecorder(HMODULE module)
        : set_(module, "SetWindowsHookExW", reinterpret_cast<void*>(&Set)),
          unhook_(module, "UnhookWindowsHookEx", reinterpret_cast<void*>(&Unhook)) {
        hooks.clear();
        refuse = false;
    }

    static inline std::set<HHOOK> hooks;
    static inline bool refuse = false;

  private:
    static HHOOK WINAPI Set(int kind, HOOKPROC procedure, HINSTANCE module, DWORD thread) {
        if (refuse) SetLastError(ERROR_ACCESS_DENIED);
        const HHOOK hook = refuse ? nullptr : SetWindowsHookExW(kind, procedure, module, thread);
        if (hook) hooks.insert(hook);
        return hook;
    }
    static BOOL WINAPI Unhook(HHOOK hook) {
        EXPECT_EQ(1u, hooks.erase(hook));
        return UnhookWindowsHookEx(hook);
    }

    ImportPatch set_, unhook_;
};

ComPtr<IDispatch> NewHourglass() { return CreateObject<IDispatch>(__uuidof(::CHourglass)); }
void Set(const ComPtr<IDispatch>& hourglass, bool value) {
    EXPECT_EQ(S_OK, Let(hourglass.get(), L"Value", {Arg(value)}).result);
    EXPECT_EQ(value, Get(hourglass.get(), L"Value").value.boolVal == VARIANT_TRUE);
}

class Hourglass : public testing::Test {
  protected:
    ComPtr<IDispatch> hourglass_ = NewHourglass();
    TestWindow arrow_;
    TestWindow cross_{WS_OVERLAPPEDWINDOW, ChoosesCross()};
};

TEST_F(Hourglass, CoversEveryWindowUntilItIsTakenAway) {
    EXPECT_EQ(VARIANT_FALSE, Get(hourglass_.get(), L"Value").value.boolVal);
    EXPECT_EQ(kArrow, Over(arrow_));
    EXPECT_EQ(kCross, Over(cross_));
    Set(hourglass_, true);
    EXPECT_EQ(kWait, GetCursor()) << "at once";
    EXPECT_EQ(kWait, Over(arrow_));
    EXPECT_EQ(kWait, Over(cross_));
    const TestWindow later(WS_OVERLAPPEDWINDOW, ChoosesCross());
    EXPECT_EQ(kWait, Over(later)) << "a window made meanwhile";
    Set(hourglass_, false);
    EXPECT_EQ(kCross, GetCursor()) << "the window under the pointer has chosen already";
    EXPECT_EQ(kArrow, Over(arrow_));
    EXPECT_EQ(kCross, Over(cross_));
}

TEST_F(Hourglass, IsNotCounted) {
    const ComPtr<IDispatch> other = NewHourglass();
    Set(hourglass_, true);
    Set(hourglass_, true);
    Set(other, true);
    Set(other, false);
    EXPECT_EQ(kCross, Over(cross_));
    EXPECT_EQ(VARIANT_TRUE, Get(hourglass_.get(), L"Value").value.boolVal) << "each object tells what it was set to";
}

TEST_F(Hourglass, GoesWithAnyObjectAlsoOneThatNeverSetIt) {
    Set(hourglass_, true);
    NewHourglass() = nullptr;
    EXPECT_EQ(kCross, Over(cross_));
    Set(hourglass_, true);
    EXPECT_EQ(kWait, Over(cross_));
    hourglass_ = nullptr;
    EXPECT_EQ(kCross, Over(cross_));
    SetCursor(kCross);
    SetCursorPos(1000, 700);  // over no window of ours
    NewHourglass() = nullptr;
    EXPECT_EQ(kArrow, GetCursor()) << "the default, without any override";
}

// A thread with a window of its own, in which it runs what it is told.
class WindowThread {
  public:
    WindowThread() {
        thread_ = CreateThread(nullptr, 0, &Run, this, 0, nullptr);
        WaitForSingleObject(done_, INFINITE);
    }
    WindowThread(const WindowThread&) = delete;
    WindowThread& operator=(const WindowThread&) = delete;
    ~WindowThread() {
        Do(nullptr);
        WaitForSingleObject(thread_, INFINITE);
        for (const HANDLE handle : {thread_, go_, done_}) CloseHandle(handle);
    }
    void Do(std::function<void(TestWindow&)> task) {
        task_ = std::move(task);
        SignalObjectAndWait(go_, done_, INFINITE, FALSE);
    }
    HCURSOR PointerOver() {
        HCURSOR seen = nullptr;
        Do([&](TestWindow& window) { seen = Over(window); });
        return seen;
    }

  private:
    static DWORD WINAPI Run(void* raw) {
        auto& self = *static_cast<WindowThread*>(raw);
        TestWindow window(WS_OVERLAPPEDWINDOW, ChoosesCross());
        do {
            if (self.task_) self.task_(window);
            SetEvent(self.done_);
            WaitForSingleObject(self.go_, INFINITE);
        } while (self.task_);
        SetEvent(self.done_);
        return 0;
    }

    HANDLE go_ = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    HANDLE done_ = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    std::function<void(TestWindow&)> task_;
    HANDLE thread_ = nullptr;
};

TEST_F(Hourglass, CoversTheWindowsOfOtherThreads) {
    WindowThread early;
    Set(hourglass_, true);
    EXPECT_EQ(kWait, early.PointerOver());
    WindowThread late;
    EXPECT_EQ(kCross, late.PointerOver()) << "a thread without windows when it was set";
    Set(hourglass_, true);
    EXPECT_EQ(kWait, late.PointerOver()) << "setting it again takes the thread in";
    Set(hourglass_, false);
    EXPECT_EQ(kCross, early.PointerOver());
    EXPECT_EQ(kCross, late.PointerOver());
}

TEST_F(Hourglass, LeavesNothingHookedWhateverEndsIt) {
    const HookRecorder recorder(Library());
    WindowThread thread;
    for (int i = 0; i < 3; ++i) Set(hourglass_, true);
    EXPECT_EQ(2u, HookRecorder::hooks.size()) << "one for each thread";
    Set(hourglass_, false);
    EXPECT_TRUE(HookRecorder::hooks.empty());
    Set(hourglass_, true);
    hourglass_ = nullptr;
    EXPECT_TRUE(HookRecorder::hooks.empty());
}

TEST_F(Hourglass, TheLibraryCanGoAfterIt) {
    LibraryCopy copy;
    {
        const ComPtr<IDispatch> hourglass = copy.Create(__uuidof(::CHourglass));
        Set(hourglass, true);
        EXPECT_EQ(kWait, Over(cross_));
    }
    copy.Unload();
    EXPECT_EQ(kCross, Over(cross_));
    EXPECT_EQ(kArrow, Over(arrow_));
}

// A window that drops the last reference while it is asked for its pointer, with the hook on the way.
TEST_F(Hourglass, MayEndWhileAWindowChooses) {
    TestWindow window(WS_OVERLAPPEDWINDOW, [&](HWND, UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
        if (message == WM_SETCURSOR) hourglass_ = nullptr;
        return std::nullopt;
    });
    Over(arrow_);
    Set(hourglass_, true);
    EXPECT_EQ(kWait, Over(arrow_));
    Over(window);
    EXPECT_EQ(nullptr, hourglass_.get());
    EXPECT_EQ(kArrow, Over(arrow_));
    EXPECT_TRUE(CanUnload());
}

TEST_F(Hourglass, ARefusedHookIsShownAndTheValueStays) {
    const HookRecorder hooks(Library());
    const ReportRecorder recorder(Library());
    HookRecorder::refuse = true;
    Set(hourglass_, true);
    ASSERT_EQ(1u, recorder.reports().size());
    EXPECT_EQ(L"Value", recorder.reports()[0].title);
    EXPECT_EQ(L"Error: 70. Permission denied", recorder.reports()[0].text);
    EXPECT_EQ(0u, recorder.reports()[0].type & MB_ICONMASK);
}

}  // namespace
}  // namespace velk::test
