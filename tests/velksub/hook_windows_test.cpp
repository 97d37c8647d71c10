// Windows that others have a hand in: other programs' procedures, ANSI windows, other threads.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>

#include "platform/text.h"
#include "support/late_bound.h"
#include "support/own_process.h"
#include "velksub/hooks_fixture.h"

namespace velk::test {
namespace {

constexpr const wchar_t* kMark = L"VelkSub.HookedWindow";

// Another program's procedure, of either character set: notes what it sees and passes it on.
template <bool kAnsi>
struct OtherProgram {
    static inline WNDPROC before = nullptr;
    static inline std::string seen;
    static inline bool marked = false;  // whether the window keeps the mark of a hooked one to its end

    static void Set(HWND window, WNDPROC procedure) {
        const auto set = kAnsi ? SetWindowLongPtrA : SetWindowLongPtrW;
        before = reinterpret_cast<WNDPROC>(set(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(procedure)));
    }
    static void Subclass(HWND window) { Set(window, &Procedure); }
    static void Leave(HWND window) { Set(window, before); }
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == kMessage) seen += 'o';
        if (kAnsi && message == WM_SETTEXT) seen = reinterpret_cast<const char*>(lParam);
        const LRESULT result = (kAnsi ? CallWindowProcA : CallWindowProcW)(before, window, message, wParam, lParam);
        if (message == WM_NCDESTROY) marked = GetPropW(window, kMark) != nullptr;
        return result;
    }
};
using Wide = OtherProgram<false>;
using Ansi = OtherProgram<true>;

TEST_F(Hooks, DoNotBreakAnothersSubclassing) {
    const auto hook = Logging('a', kAfter);
    Wide::Subclass(window.get());  // before us
    AddToWindow(hook.get());
    EXPECT_EQ(7, Send());
    RemoveFromWindow(hook.get());
    EXPECT_EQ(&Wide::Procedure, window.CurrentProcedure());
    Wide::Leave(window.get());
    EXPECT_EQ("o", std::exchange(Wide::seen, ""));

    AddToWindow(hook.get());
    Wide::Subclass(window.get());  // after us
    RemoveFromWindow(hook.get());
    EXPECT_EQ(1u, hook->count());
    EXPECT_EQ(&Wide::Procedure, window.CurrentProcedure());
    log.clear();
    EXPECT_EQ(7, Send());
    AddToWindow(hook.get());
    EXPECT_EQ(7, Send());
    Wide::Leave(window.get());
    EXPECT_EQ(7, Send());
    EXPECT_EQ("wwawa", log);
    EXPECT_EQ("oo", Wide::seen);
    RemoveFromWindow(hook.get());
    ExpectUntouched();
    EXPECT_EQ(7, Send());
    AddToWindow(hook.get());
    Wide::Subclass(window.get());
    Wide::marked = true;
    window.Destroy();
    EXPECT_FALSE(Wide::marked);
}

// Another program clears all properties of a window, ours among them.
TEST_F(Hooks, StayWhereTheirMarkIsTakenAway) {
    const auto first = Logging('a', kAfter), second = Logging('b', kAfter);
    AddToWindow(first.get());
    EXPECT_NE(nullptr, RemovePropW(window.get(), kMark));
    AddToWindow(second.get());
    EXPECT_EQ(7, Send());
    EXPECT_EQ("wab", log);
    for (const auto& hook : {first, second}) RemoveFromWindow(hook.get());
    ExpectUntouched();
}

// A program that puts back what it found while the window was hooked: nobody is left to pass messages on to.
TEST_F(Hooks, LeaveAWindowToTheSystemWhenOnlyTheirProcedureIsLeft) {
    const auto hook = Logging('a', kAfter);
    AddToWindow(hook.get());
    const auto found = reinterpret_cast<LONG_PTR>(window.CurrentProcedure());
    RemoveFromWindow(hook.get());
    SetWindowLongPtrW(window.get(), GWLP_WNDPROC, found);
    for (const bool hooked : {false, true}) {
        if (hooked) AddToWindow(hook.get());
        EXPECT_EQ(4, SendMessageW(window.get(), WM_GETTEXTLENGTH, 0, 0));
        EXPECT_EQ(0, Send());
    }
    EXPECT_EQ("a", log);
    RemoveFromWindow(hook.get());
    SetWindowLongPtrW(window.get(), GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(own));
    ExpectUntouched();
}

TEST_F(Hooks, PassNothingOnWhenTheWindowIsGone) {
    Wide::Subclass(window.get());
    const auto hook = TestHook::Make(kAlone);
    hook->handle = [&](const TestHook::Message& m, LONG* result) {
        window.Destroy();
        return manager->CallPreviousProc(m.window, m.number, m.wParam, m.lParam, result);
    };
    AddToWindow(hook.get());
    Wide::seen.clear();
    EXPECT_EQ(0, Send());
    EXPECT_EQ("", Wide::seen);
}

// A program without Unicode stands below us, then above us as well: the platform translates between them.
TEST_F(Hooks, KeepAWindowsCharacterSet) {
    const auto hook = TestHook::Make(kAfter);
    const auto set = [&](bool ansi) {
        wchar_t text[20] = L"";
        EXPECT_EQ(!ansi, IsWindowUnicode(window.get()) != FALSE);
        EXPECT_TRUE(SetWindowTextW(window.get(), L"wide"));
        GetWindowTextW(window.get(), text, ARRAYSIZE(text));
        EXPECT_STREQ(L"wide", text);
        EXPECT_EQ(ansi ? "wide" : "", std::exchange(Ansi::seen, ""));
    };
    for (const bool ansi : {false, true}) {
        if (ansi) Ansi::Subclass(window.get());
        AddToWindow(hook.get(), WM_NULL);
        set(ansi);
        RemoveFromWindow(hook.get(), WM_NULL);
        set(ansi);
    }
    SetWindowLongPtrW(window.get(), GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(own));
    AddToWindow(hook.get(), WM_NULL);
    Ansi::Subclass(window.get());
    set(true);
    Ansi::Leave(window.get());
    RemoveFromWindow(hook.get(), WM_NULL);
}

DWORD WINAPI RunBody(void* body) {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    (*static_cast<std::function<void()>*>(body))();
    CoUninitialize();
    return 0;
}

void OnAnotherThread(std::function<void()> body) {
    const HANDLE thread = CreateThread(nullptr, 0, &RunBody, &body, 0, nullptr);
    ASSERT_NE(nullptr, thread);
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(thread, 20000));
    CloseHandle(thread);
}

std::wstring LastDescription() {
    ComPtr<IErrorInfo> info;
    Bstr source, description;
    if (GetErrorInfo(0, info.Receive()) != S_OK) return {};
    info->GetSource(source.Receive());
    info->GetDescription(description.Receive());
    return std::wstring(View(source.get())) + L": " + std::wstring(View(description.get()));
}

TEST_F(Hooks, AreRefusedForWindowsOfOtherThreadsAndForNoWindows) {
    const auto hook = TestHook::Make(kAlone);
    AddToWindow(hook.get());
    OnAnotherThread([&] {
        const HookLibrary here;
        EXPECT_EQ(manager.As<IUnknown>().get(), here.Manager().As<IUnknown>().get()) << "one manager a process";
        EXPECT_EQ(eErrHookManager_OtherThread, Add(hook.get(), window.handle(), kInner));
        EXPECT_EQ(L"VelkSub.HookManager: The window belongs to another thread", LastDescription());
        EXPECT_EQ(eErrHookManager_OtherThread, Remove(hook.get(), window.handle()));
        EXPECT_EQ(S_OK, Remove(hook.get(), window.handle() & 0xFFFF)) << "no hook can be there";
        EXPECT_EQ(eErrHookManager_OtherThread, CallPrevious(window.handle()));
        const TestWindow mine;
        EXPECT_EQ(S_OK, Add(hook.get(), mine.handle()));
        EXPECT_EQ(S_OK, Remove(hook.get(), mine.handle()));
    });
    EXPECT_EQ(eErrHookManager_OtherThread, Add(hook.get(), HandleToLong(GetDesktopWindow())));
    // The platform answers for the low word of a handle too, with or without a sign.
    const LONG low = window.handle() & 0xFFFF;
    for (const LONG none : {0L, low, static_cast<LONG>(low | 0xFFFF0000)}) {
        EXPECT_EQ(eErrHookManager_InvalidWindowHandle, Add(hook.get(), none)) << std::hex << none;
        EXPECT_EQ(L"VelkSub.HookManager: Invalid window handle", LastDescription());
    }
    for (const LONG other : {HandleToLong(GetDesktopWindow()), low}) {
        EXPECT_EQ(S_OK, Remove(hook.get(), other)) << "where nothing can be attached";
    }
    RemoveFromWindow(hook.get());
    OnAnotherThread([&] { EXPECT_EQ(S_OK, Remove(hook.get(), window.handle())) << "not attached any more"; });
    EXPECT_EQ(eErrHookManager_NotHooked, CallPrevious(window.handle()));
    EXPECT_EQ(L"VelkSub.HookManager: The window has no hooks", LastDescription());
    EXPECT_EQ(1u, hook->count());
}

// The platform destroys a thread's windows at its end without a message, when objects may not be called any more.
TEST_F(Hooks, OfAThreadThatEndsAreLeftAlone) {
    const auto hook = TestHook::Make(kAlone);
    hook->respond = [](LONG*) { return ADD_FAILURE() << "called", S_OK; };
    OnAnotherThread([&] {
        const HookLibrary here;
        const HWND left = CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
        EXPECT_EQ(S_OK, Add(hook.get(), HandleToLong(left)));
    });
    EXPECT_EQ(2u, hook->count());
    hook->Release();  // the reference that was left behind
    manager = nullptr;
    EXPECT_TRUE(HookLibrary::CanUnload());
}

// What a script's object is: the members of ISubclass by name and nothing else.
class NamedHook final : public BareDispatch {
  public:
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* ids) noexcept override {
        *ids = !_wcsicmp(names[0], L"msgresponse") ? 5 : !_wcsicmp(names[0], L"windowproc") ? 6 : DISPID_UNKNOWN;
        return *ids != DISPID_UNKNOWN ? S_OK : DISP_E_UNKNOWNNAME;
    }
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT* result, EXCEPINFO*,
                        UINT*) noexcept override {
        result->vt = id == 5 ? VT_I2 : VT_R8;  // numbers come as scripts keep them
        if (id == 5) return result->iVal = eMsgResponse_HookAlone, S_OK;
        result->dblVal = parameters->rgvarg[3].lVal == window ? parameters->rgvarg[0].lVal * 2.0 : -1;
        return parameters->cArgs == 4 ? ends : DISP_E_BADPARAMCOUNT;
    }
    LONG window = 0;
    HRESULT ends = S_OK;
};

TEST_F(Hooks, MayBeObjectsOfScripts) {
    const VARIANT handle = Arg(window.handle()), message = Arg(LONG{kMessage});
    const auto call = [&](const wchar_t* member, const VARIANT& hook) {
        return Call(manager.get(), member, {hook, handle, message});
    };
    const auto script = ComPtr<NamedHook>::Attach(new NamedHook);
    script->window = window.handle();
    const auto real = Logging('a', kAlone, 10);
    for (IDispatch* const hook : {static_cast<IDispatch*>(script.get()), static_cast<IDispatch*>(real.get())}) {
        Variant variable;
        variable.vt = VT_DISPATCH;
        variable.pdispVal = hook;
        hook->AddRef();
        for (const VARIANT& given : {Arg(hook), Arg(&variable)}) EXPECT_EQ(S_OK, call(L"AddHook", given).result);
        EXPECT_EQ(hook == real.get() ? 10 : 42, SendMessageW(window.get(), kMessage, 0, 21));
        script->ends = DISP_E_EXCEPTION;
        EXPECT_EQ(hook == real.get() ? 10 : 7, Send());
        EXPECT_EQ(S_OK, call(L"RemoveHook", Arg(hook)).result);
    }
    EXPECT_EQ(1u, script->count());
    EXPECT_EQ(1u, real->count());
    EXPECT_EQ(DISP_E_TYPEMISMATCH, call(L"AddHook", Arg(manager.get())).result) << "no hook by any name";
    const Outcome nothing = call(L"AddHook", Arg(static_cast<IDispatch*>(nullptr)));
    EXPECT_EQ(static_cast<HRESULT>(0x800A005B), nothing.code);
    EXPECT_EQ(L"VelkSub", nothing.source);
    ExpectUntouched();
}

// Run by the test after it, as a process of its own.
TEST(HooksAtExit, DISABLED_EndWithHooksAttached) {
    const HookLibrary library;
    auto* const hook = TestHook::Make(kAlone).Detach();
    auto* const window = new TestWindow;
    ISubclass* subclass = hook;
    const auto manager = library.Manager();
    ASSERT_EQ(S_OK, manager->AddHook(&subclass, window->handle(), kMessage));
    std::exit(42);
}

TEST(HooksAtExit, DoNotDisturbTheEndOfTheProcess) { EXPECT_EQ(42u, OwnProcess(L"HooksAtExit.DISABLED_*").Ended()); }

// Each round takes a slot of the thread's storage, of which a process has few.
TEST(HooksUnloaded, GiveEverythingBack) {
    TestWindow window;
    const auto hook = TestHook::Make(kAlone);
    ISubclass* subclass = hook.get();
    for (int i = 0; i < 300; ++i) {
        {
            const HookLibrary library;
            const auto manager = library.Manager();
            ASSERT_EQ(S_OK, manager->AddHook(&subclass, window.handle(), kMessage));
            CoFreeUnusedLibrariesEx(0, 0);
            ASSERT_NE(nullptr, GetModuleHandleW(L"VelkSub.dll")) << "a hooked window needs it";
            ASSERT_EQ(S_OK, manager->RemoveHook(&subclass, window.handle(), kMessage));
        }
        CoFreeUnusedLibrariesEx(0, 0);
        ASSERT_EQ(nullptr, GetModuleHandleW(L"VelkSub.dll"));
    }
}

}  // namespace
}  // namespace velk::test
