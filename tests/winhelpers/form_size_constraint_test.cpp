#include <gtest/gtest.h>

#include <array>
#include <cstring>

#include "support/import_patch.h"
#include "support/late_bound.h"
#include "support/test_hook.h"
#include "support/test_window.h"

namespace velk::test {
namespace {

using Form = ComPtr<_CFormSizeConstraint>;

Form NewForm() { return CreateObject<_CFormSizeConstraint>(__uuidof(CFormSizeConstraint)); }

HRESULT Init(const Form& form, LONG handle) { return form->Init(&handle); }

LONG HandleOf(const Form& form) {
    LONG handle = -1;
    EXPECT_EQ(S_OK, form->get_hWnd(&handle));
    return handle;
}

void ExpectFailure(const Outcome& outcome, HRESULT code, const wchar_t* description) {
    EXPECT_EQ(DISP_E_EXCEPTION, outcome.result);
    EXPECT_EQ(code, outcome.code);
    EXPECT_EQ(description, outcome.description);
    EXPECT_EQ(L"VelkSprt.CFormSizeConstraint", outcome.source);
}

constexpr const wchar_t* kFailure = L"CFormSizeConstraint component failure";
constexpr const wchar_t* kNoWindow = L"Invalid window handle";

class FormSize : public testing::Test {
  protected:
    void LetAll(const Form& form, LONG minWidth, LONG minHeight, LONG maxWidth, LONG maxHeight) {
        EXPECT_EQ(S_OK, form->put_MinWidth(&minWidth));
        EXPECT_EQ(S_OK, form->put_MinHeight(&minHeight));
        EXPECT_EQ(S_OK, form->put_MaxWidth(&maxWidth));
        EXPECT_EQ(S_OK, form->put_MaxHeight(&maxHeight));
    }
    // What a window asked for this size becomes.
    SIZE Resized(const TestWindow& window, int width, int height) {
        SetWindowPos(window.get(), nullptr, 0, 0, width, height, SWP_NOZORDER | SWP_NOMOVE);
        RECT is{};
        GetWindowRect(window.get(), &is);
        return {is.right - is.left, is.bottom - is.top};
    }
    void ExpectLimits(const TestWindow& window, bool limited) {
        const SIZE small = Resized(window, 150, 130), large = Resized(window, 900, 700);
        EXPECT_EQ(limited ? 250 : 150, small.cx);
        EXPECT_EQ(limited ? 180 : 130, small.cy);
        EXPECT_EQ(limited ? 350 : 900, large.cx);
        EXPECT_EQ(limited ? 240 : 700, large.cy);
    }

    HookLibrary library;
    TestWindow window;
    Form form = NewForm();
};

TEST_F(FormSize, RaisesForEachContradictoryLimitAndKeepsTheOldOne) {
    struct Case {
        const wchar_t* name;
        const wchar_t* counterpart;
        LONG accepted, contradicted;  // the counterpart's value, and one that it forbids
        HRESULT code;
        const wchar_t* description;
    };
    const Case cases[] = {
        {L"MaxHeight", L"MinHeight", 300, 299, eErrFormSizeConstraint_InvalidMaxHeight, L"Invalid maximum height"},
        {L"MaxWidth", L"MinWidth", 300, 299, eErrFormSizeConstraint_InvalidMaxWidth, L"Invalid maximum width"},
        {L"MinHeight", L"MaxHeight", 300, 301, eErrFormSizeConstraint_InvalidMinHeight, L"Invalid minimum height"},
        {L"MinWidth", L"MaxWidth", 300, 301, eErrFormSizeConstraint_InvalidMinWidth, L"Invalid minimum width"},
    };
    for (const Case& c : cases) {
        const Form fresh = NewForm();
        EXPECT_EQ(0, Get(fresh.get(), c.name).value.lVal);
        EXPECT_EQ(S_OK, Let(fresh.get(), c.name, {Arg(c.contradicted)}).result) << "without a counterpart";
        const Form other = NewForm();
        EXPECT_EQ(S_OK, Let(other.get(), c.counterpart, {Arg(c.accepted)}).result);
        EXPECT_EQ(S_OK, Let(other.get(), c.name, {Arg(c.accepted)}).result);
        for (const LONG rejected : {c.contradicted, 0L, -1L}) {
            ExpectFailure(Let(other.get(), c.name, {Arg(rejected)}), c.code, c.description);
            EXPECT_EQ(c.accepted, Get(other.get(), c.name).value.lVal);
        }
    }
}

TEST_F(FormSize, ChangesOnlyTheLimitsThatAreSet) {
    using Record = std::array<LONG, 10>;
    static_assert(sizeof(Record) == sizeof(MINMAXINFO));
    const Record filled{1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    window.handler = [&](HWND, UINT message, WPARAM, LPARAM lParam) -> std::optional<LRESULT> {
        if (message != WM_GETMINMAXINFO) return std::nullopt;
        std::memcpy(reinterpret_cast<void*>(lParam), filled.data(), sizeof(filled));
        return 99;
    };
    struct Limit {
        const wchar_t* name;
        std::size_t place;
        LONG value;
    };
    const Limit limits[] = {
        {L"MinWidth", 6, 106}, {L"MinHeight", 7, 107}, {L"MaxWidth", 8, 108}, {L"MaxHeight", 9, 109}};
    for (unsigned set = 0; set < 16; ++set) {
        const Form each = NewForm();
        EXPECT_EQ(S_OK, Init(each, window.handle()));
        Record expected = filled;
        for (unsigned i = 0; i < 4; ++i) {  // after Init: the hook reads what is current
            if (!(set & 1u << i)) continue;
            Let(each.get(), limits[i].name, {Arg(limits[i].value)});
            expected[limits[i].place] = limits[i].value;
        }
        Record record{};
        EXPECT_EQ(99, SendMessageW(window.get(), WM_GETMINMAXINFO, 0, reinterpret_cast<LPARAM>(record.data())));
        EXPECT_EQ(expected, record) << set;
        EXPECT_EQ(S_OK, each->ReleaseForm());
    }
}

// A user who pulls the right border, on a thread of his own: the drag is a modal loop. Gives the width afterwards.
struct Drag {
    static inline int by;
    static inline HANDLE begun;

    static DWORD WINAPI Move(void*) {
        WaitForSingleObject(begun, 5000);
        for (int i = 0; i < 10; ++i, Sleep(10)) mouse_event(MOUSEEVENTF_MOVE, static_cast<DWORD>(by / 10), 0, 0, 0);
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
    LetAll(form, 250, 180, 350, 240);
    EXPECT_EQ(S_OK, Init(form, window.handle()));
    ShowWindow(window.get(), SW_SHOW);
    SetForegroundWindow(window.get());
    PumpMessages();
    Drag::begun = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    window.handler = [](HWND, UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
        if (message == WM_ENTERSIZEMOVE) SetEvent(Drag::begun);
        return std::nullopt;
    };
    // The platform confines the pointer instead of the window, which may leave a pixel over.
    EXPECT_NEAR(350, Drag::Run(window, 200), 1);
    EXPECT_NEAR(250, Drag::Run(window, -200), 1);
    EXPECT_NEAR(280, Drag::Run(window, 30), 1);
    CloseHandle(Drag::begun);
}

TEST_F(FormSize, AttachesAndDetaches) {
    LetAll(form, 250, 180, 350, 240);
    EXPECT_EQ(0, HandleOf(form));
    ExpectFailure(Call(form.get(), L"Init", {Arg(0L)}), eErrFormSizeConstraint_InvalidWindowHandle, kNoWindow);
    EXPECT_EQ(S_OK, Let(form.get(), L"hWnd", {Arg(window.handle())}).result);
    ExpectFailure(Let(form.get(), L"hWnd", {Arg(12345L)}), eErrFormSizeConstraint_InvalidWindowHandle, kNoWindow);
    EXPECT_EQ(window.handle(), HandleOf(form));
    ExpectLimits(window, true);
    const TestWindow second;
    EXPECT_EQ(S_OK, Init(form, second.handle()));
    ExpectLimits(window, false);
    ExpectLimits(second, true);
    form->AddRef();
    const ULONG count = form->Release();
    EXPECT_EQ(S_OK, Call(form.get(), L"Release").result) << "the class's own, not the identity's";
    EXPECT_EQ(S_OK, InvokeByPlatform(form.get(), L"release", DISPATCH_METHOD, {}).result);
    ExpectLimits(second, false);
    form->AddRef();
    EXPECT_EQ(count - 1, form->Release()) << "the hook manager's reference went, and no other";
    EXPECT_EQ(second.handle(), HandleOf(form));
    EXPECT_EQ(S_OK, Init(form, second.handle()));
    ExpectLimits(second, true);
}

TEST_F(FormSize, LivesAsLongAsItIsAttached) {
    LetAll(form, 250, 180, 350, 240);
    EXPECT_EQ(S_OK, Init(form, window.handle()));
    form = nullptr;
    ExpectLimits(window, true);
    EXPECT_FALSE(CanUnload());
    window.Destroy();
    EXPECT_TRUE(CanUnload());
}

TEST_F(FormSize, MayBeReleasedInsideItsOwnMessage) {
    LetAll(form, 250, 180, 350, 240);
    EXPECT_EQ(S_OK, Init(form, window.handle()));
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
    LetAll(form, 250, 180, 350, 240);
    MINMAXINFO record{};
    const Outcome called =
        Call(hook.get(), L"WindowProc", {Arg(0L), Arg(1L), Arg(2L), Arg(static_cast<LONG>(PtrToLong(&record)))});
    EXPECT_EQ(S_OK, called.result);
    EXPECT_EQ(0, called.value.lVal);
    EXPECT_EQ(250, record.ptMinTrackSize.x);
    EXPECT_EQ(DISPID_UNKNOWN, IdOf(hook.get(), L"MaxWidth"));
    EXPECT_EQ(DISPID_UNKNOWN, IdOf(form.get(), L"WindowProc"));
    LONG result = 1;
    EXPECT_EQ(E_POINTER, hook->WindowProc(0, WM_GETMINMAXINFO, 0, 0, &result)) << "no record";
    ComPtr<ITypeInfo> info;
    EXPECT_EQ(S_OK, hook->GetTypeInfo(0, 0, info.Receive())) << "described without the hook library";
}

// Neither registered nor in a manifest.
TEST(FormSizeAlone, FailsAndSaysWhatIsMissing) {
    HookLibrary::Unregister();
    static std::wstring said;
    struct Debugger {
        static void WINAPI Say(LPCWSTR text) { said += text; }
    };
    const ImportPatch patch(Library(), "OutputDebugStringW", reinterpret_cast<void*>(&Debugger::Say));
    const TestWindow window;
    {
        const Form form = NewForm();
        for (int i = 0; i < 2; ++i) {
            ExpectFailure(Call(form.get(), L"Init", {Arg(window.handle())}), eErrFormSizeConstraint_ComponentFailure,
                          kFailure);
        }
        EXPECT_EQ(window.handle(), HandleOf(form));
    }
    EXPECT_EQ(
        L"VelkSprt: VelkSub.HookManager cannot be created (0x80040154), windows are not hooked. Is VelkSub.dll "
        L"registered?\n",
        said);
    EXPECT_TRUE(CanUnload());
}

}  // namespace
}  // namespace velk::test
