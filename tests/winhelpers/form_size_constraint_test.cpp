#include <gtest/gtest.h>

#include <array>
#include <utility>

#include "support/late_bound.h"
#include "winhelpers/hooked_fixture.h"

namespace velk::test {
namespace {

using Form = ComPtr<_CFormSizeConstraint>;

constexpr std::pair<HRESULT, const wchar_t*> kNoWindow{eErrFormSizeConstraint_InvalidWindowHandle,
                                                       L"Invalid window handle"};
constexpr std::pair<HRESULT, const wchar_t*> kFailure{eErrFormSizeConstraint_ComponentFailure,
                                                      L"CFormSizeConstraint component failure"};

class FormSize : public testing::Test {
  protected:
    static Form NewForm() { return CreateObject<_CFormSizeConstraint>(__uuidof(CFormSizeConstraint)); }
    Form Limited() {
        Form made = NewForm();
        for (const auto& [name, value] :
             {std::pair{L"MinWidth", 250L}, {L"MinHeight", 180L}, {L"MaxWidth", 350L}, {L"MaxHeight", 240L}}) {
            EXPECT_EQ(S_OK, Let(made.get(), name, {Arg(value)}).result) << name;
        }
        return made;
    }
    void Init(const TestWindow& on) { EXPECT_EQ(S_OK, Call(form.get(), L"Init", {Arg(on.handle())}).result); }
    static void ExpectLimits(const TestWindow& window, bool limited) {
        for (const SIZE asked : {SIZE{150, 130}, {900, 700}}) {
            SetWindowPos(window.get(), nullptr, 0, 0, asked.cx, asked.cy, SWP_NOZORDER | SWP_NOMOVE);
            RECT is{};
            GetWindowRect(window.get(), &is);
            EXPECT_EQ(limited ? asked.cx < 250 ? 250 : 350 : asked.cx, is.right - is.left);
            EXPECT_EQ(limited ? asked.cy < 180 ? 180 : 240 : asked.cy, is.bottom - is.top);
        }
    }

    HookLibrary library;
    TestWindow window;
    Form form = Limited();
};

TEST_F(FormSize, RaisesForEachContradictoryLimitAndKeepsTheOldOne) {
    const struct {
        const wchar_t *name, *counterpart;
        LONG contradicted;  // by a counterpart of 300
        std::pair<HRESULT, const wchar_t*> error;
    } cases[] = {
        {L"MaxHeight", L"MinHeight", 299, {eErrFormSizeConstraint_InvalidMaxHeight, L"Invalid maximum height"}},
        {L"MaxWidth", L"MinWidth", 299, {eErrFormSizeConstraint_InvalidMaxWidth, L"Invalid maximum width"}},
        {L"MinHeight", L"MaxHeight", 301, {eErrFormSizeConstraint_InvalidMinHeight, L"Invalid minimum height"}},
        {L"MinWidth", L"MaxWidth", 301, {eErrFormSizeConstraint_InvalidMinWidth, L"Invalid minimum width"}},
    };
    for (const auto& c : cases) {
        const Form other = NewForm();
        EXPECT_EQ(0, Get(other.get(), c.name).value.lVal);
        for (const wchar_t* name : {c.counterpart, c.name}) {
            EXPECT_EQ(S_OK, Let(other.get(), name, {Arg(300L)}).result) << name;
        }
        for (const LONG rejected : {c.contradicted, 0L, -1L}) {
            ExpectRaised(Let(other.get(), c.name, {Arg(rejected)}), c.error, L"VelkSprt.CFormSizeConstraint");
            EXPECT_EQ(300, Get(other.get(), c.name).value.lVal);
        }
    }
}

TEST_F(FormSize, ChangesOnlyTheLimitsThatAreSet) {
    using Record = std::array<LONG, 10>;
    static_assert(sizeof(Record) == sizeof(MINMAXINFO));
    const Record filled{1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    window.handler = [&](HWND, UINT message, WPARAM, LPARAM lParam) -> std::optional<LRESULT> {
        if (message != WM_GETMINMAXINFO) return std::nullopt;
        *reinterpret_cast<Record*>(lParam) = filled;
        return 99;
    };
    const wchar_t* const limits[] = {L"MinWidth", L"MinHeight", L"MaxWidth", L"MaxHeight"};  // as the record has them
    for (unsigned set = 0; set < 16; ++set) {
        form = NewForm();
        Init(window);
        Record expected = filled, record{};
        for (unsigned i = 0; i < 4; ++i) {  // after Init: the hook reads what is current
            if (!(set & 1u << i)) continue;
            expected[6 + i] = static_cast<LONG>(100 + i);
            Let(form.get(), limits[i], {Arg(expected[6 + i])});
        }
        EXPECT_EQ(99, SendMessageW(window.get(), WM_GETMINMAXINFO, 0, reinterpret_cast<LPARAM>(record.data())));
        EXPECT_EQ(expected, record) << set;
        EXPECT_EQ(S_OK, form->ReleaseForm());
    }
}

// A user who pulls the right border, on a thread of his own: the drag is a modal loop. Gives the width afterwards.
struct Drag {
    static inline int by;
    static inline HANDLE begun;

    static DWORD WINAPI Move(void*) {
        WaitForSingleObject(begun, 5000);
        POINT at{};
        for (int i = 0; i < 10; ++i, Sleep(10)) GetCursorPos(&at), SetCursorPos(at.x + by / 10, at.y);
        mouse_event(MOUSEEVENTF_LEFTUP, 0, 0, 0, 0);
        return 0;
    }
    static int Run(const TestWindow& window, int distance) {
        by = distance;
        RECT is{};
        GetWindowRect(window.get(), &is);
        SetCursorPos(is.right - 2, (is.top + is.bottom) / 2);
        mouse_event(MOUSEEVENTF_LEFTDOWN, 0, 0, 0, 0);
        const HANDLE user = CreateThread(nullptr, 0, &Move, nullptr, 0, nullptr);
        while (MsgWaitForMultipleObjects(1, &user, FALSE, 20000, QS_ALLINPUT) == WAIT_OBJECT_0 + 1) PumpMessages();
        PumpMessages();
        CloseHandle(user);
        GetWindowRect(window.get(), &is);
        return is.right - is.left;
    }
};

TEST_F(FormSize, HoldsAgainstADragOfTheBorder) {
    Init(window);
    ShowWindow(window.get(), SW_SHOW);
    SetForegroundWindow(window.get());
    PumpMessages();
    Drag::begun = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    window.handler = [](HWND, UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
        if (message == WM_ENTERSIZEMOVE) SetEvent(Drag::begun);
        return std::nullopt;
    };
    // The platform confines the pointer instead of the window, which may leave a pixel over.
    for (const auto& [distance, width] : {std::pair{200, 350}, {-200, 250}, {30, 280}}) {
        EXPECT_NEAR(width, Drag::Run(window, distance), 1);
    }
    CloseHandle(Drag::begun);
}

TEST_F(FormSize, AttachesAndDetaches) {
    const auto handle = [&] { return Get(form.get(), L"hWnd").value.lVal; };
    EXPECT_EQ(0, handle());
    ExpectRaised(Call(form.get(), L"Init", {Arg(0L)}), kNoWindow, L"VelkSprt.CFormSizeConstraint");
    EXPECT_EQ(S_OK, Let(form.get(), L"hWnd", {Arg(window.handle())}).result);
    ExpectRaised(Let(form.get(), L"hWnd", {Arg(12345L)}), kNoWindow, L"VelkSprt.CFormSizeConstraint");
    EXPECT_EQ(window.handle(), handle());
    ExpectLimits(window, true);
    const LONG others[] = {HandleToLong(GetDesktopWindow()),
                           window.handle() & 0xFFFF};  // the low word, too, is a window
    for (const LONG other : others) {
        ExpectRaised(Call(form.get(), L"Init", {Arg(other)}), kFailure, L"VelkSprt.CFormSizeConstraint");
        EXPECT_EQ(other, handle());
        ExpectLimits(window, false);
        Init(window);
        ExpectLimits(window, true);
    }
    const TestWindow second;
    Init(second);
    ExpectLimits(window, false);
    ExpectLimits(second, true);
    EXPECT_EQ(S_OK, Call(form.get(), L"Release").result) << "the class's own, not the identity's";
    EXPECT_EQ(S_OK, InvokeByPlatform(form.get(), L"release", DISPATCH_METHOD, {}).result);
    ExpectLimits(second, false);
    EXPECT_EQ(second.handle(), handle());
    Init(second);
    ExpectLimits(second, true);
}

TEST_F(FormSize, LivesAsLongAsItIsAttached) {
    Init(window);
    form = nullptr;
    ExpectLimits(window, true);
    EXPECT_FALSE(CanUnload());
    window.Destroy();
    EXPECT_TRUE(CanUnload());
}

TEST_F(FormSize, MayBeReleasedInsideItsOwnMessage) {
    Init(window);
    window.handler = [&](HWND, UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
        if (message == WM_GETMINMAXINFO && form) {
            EXPECT_EQ(S_OK, form->ReleaseForm());
            form = nullptr;
        }
        return std::nullopt;
    };
    ExpectLimits(window, false);
    EXPECT_TRUE(CanUnload());
}

TEST_F(FormSize, IsAHookWithADispatchOfItsOwn) {
    const auto hook = form.As<ISubclass>();
    ASSERT_TRUE(hook);
    EXPECT_EQ(form.As<IUnknown>().get(), hook.As<IUnknown>().get());
    EXPECT_EQ(form.get(), hook.As<IDispatch>().get()) << "the default interface";
    EXPECT_EQ(S_OK, form.As<ISupportErrorInfo>()->InterfaceSupportsErrorInfo(__uuidof(ISubclass)));
    EXPECT_EQ(eMsgResponse_PreviousFirst, Get(hook.get(), L"MsgResponse").value.lVal);
    MINMAXINFO record{};
    const LONG place = PtrToLong(&record);
    EXPECT_EQ(0, Call(hook.get(), L"WindowProc", {Arg(0L), Arg(1L), Arg(2L), Arg(place)}).value.lVal);
    EXPECT_EQ(250, record.ptMinTrackSize.x);
    EXPECT_EQ(DISPID_UNKNOWN, IdOf(hook.get(), L"MaxWidth"));
    EXPECT_EQ(DISPID_UNKNOWN, IdOf(form.get(), L"WindowProc"));
    LONG result = 1;
    EXPECT_EQ(eErrFormSizeConstraint_ComponentFailure, hook->WindowProc(0, WM_GETMINMAXINFO, 0, 0, &result))
        << "no record";
    ComPtr<ITypeInfo> info;
    EXPECT_EQ(S_OK, hook->GetTypeInfo(0, 0, info.Receive())) << "described without the hook library";
}

TEST(FormSizeAlone, FailsAndSaysWhatIsMissing) {
    const NoHookLibrary none;
    const TestWindow window;
    {
        const auto form = CreateObject<IDispatch>(__uuidof(CFormSizeConstraint));
        for (int i = 0; i < 2; ++i) {
            ExpectRaised(Call(form.get(), L"Init", {Arg(window.handle())}), kFailure, L"VelkSprt.CFormSizeConstraint");
        }
        EXPECT_EQ(window.handle(), Get(form.get(), L"hWnd").value.lVal);
    }
    EXPECT_EQ(
        L"VelkSprt: VelkSub.HookManager cannot be created (0x80040154), windows are not hooked. Is VelkSub.dll "
        L"registered?\n",
        none.said());
    EXPECT_TRUE(CanUnload());
}

}  // namespace
}  // namespace velk::test
