// CHourglass over real windows, with the real pointer of the virtual screen. Its hooks are in hourglass.facts.
#include <atomic>
#include <thread>

#include "support/client.h"
#include "support/late_bound.h"
#include "support/test_window.h"

namespace velk::test {
namespace {

HCURSOR Shape(LPCWSTR shape) { return LoadCursorW(nullptr, shape); }
const HCURSOR kArrow = Shape(IDC_ARROW);
const HCURSOR kWait = Shape(IDC_WAIT);
const HCURSOR kCross = Shape(IDC_CROSS);

// Moves the pointer over a window, as a user does, and gives what it looks like there.
HCURSOR Over(HWND window) {
    static int step = 0;
    RECT place{};
    GetWindowRect(window, &place);
    SetWindowPos(window, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_SHOWWINDOW);
    SetCursorPos(place.left + 100 + step++ % 5, place.top + 100);
    MsgWaitForMultipleObjects(0, nullptr, FALSE, 500, QS_MOUSEMOVE);  // on a busy machine the move takes its time
    PumpMessages();
    return GetCursor();
}
HCURSOR Over(const TestWindow& window) { return Over(window.get()); }

// A window that chooses a cross for itself, wherever the pointer is in it. Asked for it (WM_APP), it gives what the
// pointer looks like over it in its own thread.
std::optional<LRESULT> ChooseCross(HWND window, UINT message, WPARAM, LPARAM) {
    if (message == WM_APP) return reinterpret_cast<LRESULT>(Over(window));
    if (message != WM_SETCURSOR) return std::nullopt;
    SetCursor(kCross);
    return TRUE;
}

class Hourglass : public testing::Test {
  protected:
    static ComPtr<IDispatch> New() { return CreateObject<IDispatch>(__uuidof(::CHourglass)); }
    static void Set(const ComPtr<IDispatch>& hourglass, bool value) {
        EXPECT_EQ(S_OK, Let(hourglass.get(), L"Value", {Arg(value)}).result);
        EXPECT_EQ(value ? L"True" : L"False", Fact(hourglass.get(), L"Value"));
    }

    void ExpectOverBoth(HCURSOR first, HCURSOR second) const {
        EXPECT_TRUE(Over(arrow_) == first && Over(cross_) == second);
    }

    ComPtr<IDispatch> hourglass_ = New();
    const TestWindow arrow_, cross_{WS_OVERLAPPEDWINDOW, &ChooseCross};
};

TEST_F(Hourglass, CoversEveryWindowUntilItIsTakenAway) {
    ExpectOverBoth(kArrow, kCross);
    Set(hourglass_, true);
    EXPECT_EQ(kWait, GetCursor()) << "at once";
    ExpectOverBoth(kWait, kWait);
    Set(hourglass_, false);
    EXPECT_EQ(kCross, GetCursor()) << "the window under the pointer has chosen already";
    ExpectOverBoth(kArrow, kCross);
}

TEST_F(Hourglass, IsNotCountedAndGoesWithAnyObject) {
    const ComPtr<IDispatch> other = New();
    for (const auto& hourglass : {hourglass_, hourglass_, other}) Set(hourglass, true);
    Set(other, false);
    EXPECT_EQ(kCross, Over(cross_));
    EXPECT_EQ(L"True", Fact(hourglass_.get(), L"Value")) << "each object tells what it was set to";
    Set(hourglass_, true);
    New() = nullptr;
    EXPECT_EQ(kCross, Over(cross_));
    Set(hourglass_, true);
    EXPECT_EQ(kWait, Over(cross_));
    hourglass_ = nullptr;
    EXPECT_EQ(kCross, Over(cross_));
    SetCursor(kCross);
    SetCursorPos(1000, 700);  // over no window of ours
    New() = nullptr;
    EXPECT_EQ(kArrow, GetCursor()) << "the default, without any override";
}

TEST_F(Hourglass, CoversTheWindowsOfOtherThreads) {
    std::atomic<HWND> other = nullptr;
    const std::jthread thread([&] {
        const TestWindow window(WS_OVERLAPPEDWINDOW, &ChooseCross);
        other = window.get();
        for (MSG message; GetMessageW(&message, nullptr, 0, 0);) DispatchMessageW(&message);
    });
    ASSERT_TRUE(WaitUntil([&] { return other != nullptr; }));
    for (const bool covered : {true, false}) {
        Set(hourglass_, covered);
        EXPECT_EQ(covered ? kWait : kCross, reinterpret_cast<HCURSOR>(SendMessageW(other, WM_APP, 0, 0)));
    }
    PostMessageW(other, WM_QUIT, 0, 0);
}

// With the hook on the way.
TEST_F(Hourglass, MayLoseItsLastReferenceToTheWindowThatChooses) {
    const TestWindow window(WS_OVERLAPPEDWINDOW, [&](HWND, UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
        if (message == WM_SETCURSOR) hourglass_ = nullptr;
        return std::nullopt;
    });
    Over(arrow_);
    Set(hourglass_, true);
    Over(window);
    EXPECT_TRUE(CanUnload());
    EXPECT_EQ(kArrow, Over(arrow_));
}

TEST_F(Hourglass, MayBeSetByTheWindowThatChooses) {
    int asked = 0;
    const TestWindow window(WS_OVERLAPPEDWINDOW, [&](HWND, UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
        if (message == WM_SETCURSOR) Set(hourglass_, ++asked < 20);
        return std::nullopt;
    });
    Over(window);
    const int before = asked;
    Set(hourglass_, true);
    EXPECT_EQ(before + 1, asked) << "asked once";
}

}  // namespace
}  // namespace velk::test
