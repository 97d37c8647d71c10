// Hooks and what happens to their window, as text.
//
// A hook is a name, its response (0, 1, 2, / for -1; f fails) and what it does when it is called; in brackets before
// that, while it is asked for its response, and behind > when it is destroyed. The n-th hook's result is 10 n, plus
// what it got for passing the message on.
//   c f    pass the message on; fail
// Hooks and tests may
//   +a -a  attach, detach a hook; with ' for another message, ^ for the end of the window, ~ for the last. A window
//   that
//          does not take it any more is noted as x
//   *a     release the tests' own reference to it
//   d !    destroy the window; send the message (with ' the other) and note the result
//   . #a   note the message that is being dispatched (1, with ' 2, none 0); whether a hook is held (+) or not (1)
//   q      note whose procedure the window has: its own (W), another program's (O), a hooked one's (H)
//   s l    another program subclasses the window, or puts back what it found; S L: a program without Unicode
//   t m    set and read the window's text, of which a program without Unicode notes what it sees; take off the mark
//   h p r  remember the window's procedure, put back the remembered one, put back the window's own
// What the window itself gets is noted as w, what another program does as o. A hook is noted after it was called.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "support/client.h"
#include "support/late_bound.h"
#include "support/test_hook.h"
#include "support/test_window.h"

namespace velk::test {
namespace {

constexpr UINT kMessage = WM_APP + 1;
constexpr UINT kInner = WM_APP + 2;
constexpr const wchar_t* kMark = L"VelkSub.HookedWindow";

std::string events;  // what was noted

// Another program's procedure, of either character set: passes all on.
template <bool kAnsi>
struct OtherProgram {
    static inline WNDPROC before = nullptr;

    static WNDPROC Set(HWND window, WNDPROC procedure) {
        const auto set = kAnsi ? SetWindowLongPtrA : SetWindowLongPtrW;
        return reinterpret_cast<WNDPROC>(set(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(procedure)));
    }
    static void Subclass(HWND window) { before = Set(window, &Procedure); }
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == kMessage) events += 'o';
        if (kAnsi && message == WM_SETTEXT) events += reinterpret_cast<const char*>(lParam);
        const bool onTop = GetWindowLongPtrW(window, GWLP_WNDPROC) == reinterpret_cast<LONG_PTR>(&Procedure);
        const LRESULT result = (kAnsi ? CallWindowProcA : CallWindowProcW)(before, window, message, wParam, lParam);
        if (message == WM_NCDESTROY && onTop && GetPropW(window, kMark)) events += "marked to its end";
        return result;
    }
};
using Wide = OtherProgram<false>;
using Ansi = OtherProgram<true>;

// A window that answers 7, and hooks for it.
class Hooks : public testing::TestWithParam<std::tuple<char, std::string>> {
  protected:
    Hooks() { events.clear(); }

    static ComPtr<IHookManager> Manager() {
        ComPtr<IHookManager> manager;
        EXPECT_EQ(S_OK, CoCreateInstance(__uuidof(HookManager), nullptr, CLSCTX_INPROC_SERVER, __uuidof(IHookManager),
                                         manager.ReceiveVoid()));
        return manager;
    }
    HRESULT Change(const wchar_t* how, const VARIANT& hook, LONG of, UINT message) const {
        const Outcome outcome = Call(manager.get(), how, {hook, Arg(of), Arg(static_cast<LONG>(message))});
        return outcome.result == DISP_E_EXCEPTION ? outcome.code : outcome.result;
    }
    HRESULT Add(IDispatch* hook, LONG to, UINT message = kMessage) {
        VARIANT variable = Arg(hook);  // a script's
        return Change(L"AddHook", Arg(&variable), to, message);
    }
    HRESULT Remove(IDispatch* hook, LONG from, UINT message = kMessage) {
        return Change(L"RemoveHook", Arg(hook), from, message);
    }
    HRESULT CallPrevious(LONG of, LONG result = -1) { return manager->CallPreviousProc(of, kMessage, 0, 0, &result); }

    TestHook* Make(std::string_view word, char kind = 'n') {
        const std::size_t end = word.find(')'), called = end == word.npos ? 2 : end + 1, last = word.find('>');
        TestHook* const hook = (hooks[word[0]] = TestHook::Make(kind)).get();
        hook->respond = [=, this, how = word[1], asked = std::string(word.substr(2, called - 2))](LONG* response) {
            Do(asked);
            return *response = how - '0', how == 'f' ? E_FAIL : S_OK;
        };
        const auto dies = [this, does = last == word.npos ? "" : std::string(word.substr(last + 1))](void*) {
            if (!does.empty()) Do(does);
        };
        hook->handle = [=, this, own = static_cast<LONG>(10 * hooks.size()), name = word[0],
                        does = std::string(word.substr(called, last - called)),
                        kept = std::shared_ptr<void>(nullptr, dies)](const TestHook::Message& m, LONG_PTR* result) {
            *result = own;
            Do(does, [&] { *result += hook->PassOn(manager.get(), m); });
            return events += name, does.ends_with('f') ? E_FAIL : S_OK;
        };
        return hook;
    }

    void Do(std::string_view what, const std::function<void()>& passOn = {}) {
        TestHook* hook = nullptr;
        char name = 0;
        UINT message = kMessage;
        LONG number = -1;
        wchar_t text[20] = L"";
        const HWND its = window.get();
        const std::map<char, std::function<void()>> actions{
            {'+', [&] { events += Add(hook, handle, message) == S_OK ? "" : "x"; }},
            {'-', [&] { EXPECT_EQ(S_OK, Remove(hook, handle, message)); }},
            {'*', [&] { hooks.erase(name); }},
            {'#', [&] { events += hook->count() == 1 ? '1' : '+'; }},
            {'c', passOn},
            {'!', [&] { events += std::to_string(SendMessageW(its, message, 3, 4)); }},
            {'.', [&] { manager->get_DispatchedMessage(&number), events += std::to_string(number & 0xFF); }},
            {'q', [&] { events += Owner(); }},
            {'d', [&] { window.Destroy(); }},
            {'s', [&] { Wide::Subclass(its); }},
            {'l', [&] { Wide::Set(its, Wide::before); }},
            {'S', [&] { Ansi::Subclass(its); }},
            {'L', [&] { Ansi::Set(its, Ansi::before); }},
            {'t', [&] { EXPECT_STREQ(L"wide", (SetWindowTextW(its, L"wide"), GetWindowTextW(its, text, 20), text)); }},
            {'m', [&] { EXPECT_NE(nullptr, RemovePropW(its, kMark)); }},
            {'h', [&] { remembered = window.CurrentProcedure(); }},
            {'p', [&] { Wide::Set(its, remembered); }},
            {'r', [&] { Wide::Set(its, own); }}};
        for (std::size_t i = 0; i < what.size(); ++i) {
            const auto action = actions.find(what[i]);
            if (action == actions.end()) continue;
            if (std::string_view("+-#*").find(what[i]) != what.npos) hook = hooks[name = what[++i]].get();
            const char suffix = i + 1 < what.size() ? what[i + 1] : ' ';
            message = suffix == '\'' ? kInner : suffix == '^' ? WM_NCDESTROY : suffix == '~' ? ~0u : kMessage;
            action->second();
        }
    }
    char Owner() const {
        const WNDPROC now = window.CurrentProcedure();
        return now == own ? 'W' : now == &Wide::Procedure ? 'O' : 'H';
    }
    // Nothing is left of the hooks.
    void ExpectUntouched() {
        for (const auto& [name, hook] : hooks) {
            for (const UINT message : {kMessage, kInner}) EXPECT_EQ(S_OK, Remove(hook.get(), handle, message));
            EXPECT_EQ(1u, hook->count()) << name;
            if (window.get()) continue;
            EXPECT_EQ(eErrHookManager_InvalidWindowHandle, Add(hook.get(), handle));
            EXPECT_EQ(eErrHookManager_InvalidWindowHandle, CallPrevious(handle));
        }
        EXPECT_TRUE(!window.get() || (Owner() == 'W' && properties == window.CountProperties()));
    }

    const std::shared_ptr<void> library = HookLibrary();
    ComPtr<IHookManager> manager = Manager();
    TestWindow window{WS_OVERLAPPEDWINDOW,
                      [](HWND, UINT message, WPARAM wParam, LPARAM lParam) -> std::optional<LRESULT> {
                          if (message != kMessage && message != kInner) return std::nullopt;
                          EXPECT_TRUE(wParam == 3 && lParam == 4) << "passed on as it was";
                          return events += 'w', 7;
                      }};
    const LONG handle = window.handle();
    const WNDPROC own = window.CurrentProcedure();
    const int properties = window.CountProperties();  // the platform's own
    WNDPROC remembered = nullptr;
    std::map<char, ComPtr<TestHook>> hooks;
};

// The hooks are attached in their order, unless the test does so.
TEST_P(Hooks, DoAsTheirResponsesSay) {
    const auto& [kind, play] = GetParam();
    const std::size_t middle = play.find(" ("), end = play.find(')', middle + 2);
    std::string attach, does = play.substr(middle + 2, end - middle - 2);
    std::istringstream words(play.substr(0, middle));
    for (std::string word; words >> word; attach += {'+', word[0]}) Make(word, kind);
    Do(does.find('+') == does.npos ? attach + does : does);
    EXPECT_EQ(play.substr(end + 1), events) << play;
    ExpectUntouched();
}

// By what a test is about: responses; hooks that fail; subclassing once, and nested messages; hooks that come and go
// while they are asked or called; windows that are destroyed, where nothing is passed on and nothing attached; other
// programs that subclass the window before us, after us and on both sides, and those without Unicode.
constexpr const char kPlays[] =
    "a0 (!)a10;a0c (!)wa17;a2 (!)wa7;a1 (!)wa7;a/ (!)wa7;a2 (+a~+a!-a-a~)wa7;a2 b2 c2 (+a+b+c!-b+b!)wabc7wacb7;a0 b0 "
    "(!)b20;"
    "a0c b0c (!)wab37;a0 b2 (!)ab10;a2 b0 (!)b20;a2 b0c (!)wab27;a0f (!)aw7;a0cf (!)wa7;a2f (!)wa7;a0 b0f (!)ba10;"
    "a0f b0c (!)awb27;af (!)w7;a0 b2 (q+aq+a+b+a'#a#b-a#a-b-b-b^q-a'q#a#b)WH+++HW11;"
    "a0(.).!'.c. b0(.).f (.+a+b'!.)01122bw71w1a170;a2 b2 x0c-b (!!)wabx37wax37;a2 b2 x0-bc (!!)wax37wax37;"
    "a2 b2 x0(-b)c (!)wax37;a2 b2 x0-a-bc (!)wx37;a2 b2 x0-b+bc (!)wax37;a2 b2 x0-xc (!!)wabx37wab7;"
    "a2 b2 x0(-x)c (!!)wab7wab7;a2 b2 c2 x0+cc (+a+b+x!!)wabx47wabxc47;b2 (+b+b^d)b;b2 x0dc (+b+x+b^!)bx20;"
    "b2 x0d (+b+x+b^!)bx20;b2 x0(d)c (+b+x+b^!)b0;b2 x2d (+b+x+b^!)wbbx7;x0dc (s+x!)x10;a2 (s+a!-aql!)owa7Ow7;"
    "a2 (+as-aq#a!+a!l!-aq!)O1ow7owa7wa7Ww7;a2 (+asd);a2 b2 (+am+b!)wab7;a2 (+ah-apt!+at!-ar)0a0;a2 (+at-at);"
    "a2 (S+at-atr)widewide;a2 (+aStL)wide;a2 (+amr+a!)wa7;a2>+b b2 (+a*ad)x;";
std::vector<std::string> Plays() {
    std::vector<std::string> all;
    std::istringstream text(kPlays);
    for (std::string play; std::getline(text, play, ';');) all.push_back(play);
    return all;
}
INSTANTIATE_TEST_SUITE_P(, Hooks, testing::Combine(testing::Values('w', 'n', 's'), testing::ValuesIn(Plays())));

// Values at and above what a Long holds, as the system's records lie in 64-bit programs: only hooks with ISubclass2 see
// what has more than 32 bits. All get and give the rest whole, and so what comes back. Another value that a hook passes
// on, or to another message or window, which goes straight to the window's own procedure: an address has no sign, and a
// hook with ISubclass2 means what it says.
TEST_F(Hooks, SeeAndPassOnTheWholeOfAMessage) {
    static LPARAM got;
    const TestWindow::Handler echo = [](HWND, UINT message, WPARAM, LPARAM lParam) -> std::optional<LRESULT> {
        return message == kMessage || message == kInner ? got = lParam : std::optional<LRESULT>();
    };
    TestWindow other(WS_OVERLAPPEDWINDOW, echo);
    window.handler = echo;
    for (const std::uint64_t value : {0x20000000ull, 0x7FF00000ull, 0x80000000ull, 0xFFF00000ull, 0x100000000ull,
                                      0x123000000000ull, ~0ull, ~4ull, ~0x80000000ull}) {
        const auto whole = static_cast<LONG_PTR>(value), high = static_cast<LONG_PTR>(0x9000000090000000ull);
        if (std::int64_t{whole} != static_cast<std::int64_t>(value))
            continue;  // more than this process's pointers hold
        for (const bool wide : {false, true}) {
            TestHook* const hook = Make("a0", wide ? 'w' : 'n');
            int calls = 0;
            hook->handle = [&](const TestHook::Message& m, LONG_PTR* result) {
                EXPECT_EQ(wide ? whole : static_cast<LONG>(whole), m.wParam);
                hook->PassOn(manager.get(), {m.window, kInner, 0, high});
                EXPECT_EQ(wide ? high : static_cast<LONG_PTR>(0x90000000ul), got);
                EXPECT_EQ(5, hook->PassOn(manager.get(), {other.handle(), kMessage, 0, 5}));
                return ++calls, *result = hook->PassOn(manager.get(), m), S_OK;
            };
            EXPECT_EQ(S_OK, Add(hook, other.handle()));
            Do("+a+a'");
            EXPECT_EQ(whole, SendMessageW(window.get(), kMessage, static_cast<WPARAM>(whole), whole));
            EXPECT_EQ(wide || value <= 0xFFFFFFFF || value >= ~0x7FFFFFFFull, calls == 1) << std::hex << value;
            Do("-a-a'");
            EXPECT_EQ(S_OK, Remove(hook, other.handle()));
        }
    }
}

void OnAnotherThread(const std::function<void()>& body) {
    std::thread([&] {
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        body();
        CoUninitialize();
    }).join();
}

TEST_F(Hooks, AreRefusedForWindowsOfOtherThreadsAndForNoWindowsAndWhatIsNone) {
    TestHook* const hook = Make("a0");
    const LONG low = handle & 0xFFFF, desktop = HandleToLong(GetDesktopWindow());
    Do("+a");
    OnAnotherThread([&] {
        EXPECT_EQ(manager.As<IUnknown>().get(), Manager().As<IUnknown>().get()) << "one manager a process";
        for (const HRESULT answer : {Add(hook, handle), Remove(hook, handle), CallPrevious(handle)})
            EXPECT_EQ(eErrHookManager_OtherThread, answer);
        EXPECT_EQ(S_OK, Remove(hook, low)) << "the platform answers for it, but no hook can be there";
    });
    EXPECT_EQ(eErrHookManager_OtherThread, Add(hook, desktop));
    for (const LONG none : {0L, low, static_cast<LONG>(low | 0xFFFF0000)})
        EXPECT_EQ(eErrHookManager_InvalidWindowHandle, Add(hook, none));
    for (const LONG nothing : {0L, desktop, low}) EXPECT_EQ(S_OK, Remove(hook, nothing));
    for (const HRESULT answer : {Add(nullptr, handle), Remove(nullptr, handle)})
        EXPECT_EQ(static_cast<HRESULT>(0x800A005B), answer);
    for (const VARIANT& none : {Arg(manager.get()), Arg(5L)})
        EXPECT_EQ(DISP_E_TYPEMISMATCH, Change(L"AddHook", none, handle, kMessage)) << "no hooks by any name";
    Do("-a");
    OnAnotherThread([&] { EXPECT_EQ(S_OK, Remove(hook, handle)) << "not attached any more"; });
    const Outcome refused = Call(manager.get(), L"CallPreviousProc", {Arg(handle), Arg(1L), Arg(0L), Arg(0L)});
    EXPECT_EQ(std::tuple(eErrHookManager_NotHooked, L"The window has no hooks", L"VelkSub.HookManager"),
              std::tie(refused.code, refused.description, refused.source));
    EXPECT_EQ(S_OK, manager.As<ISupportErrorInfo>()->InterfaceSupportsErrorInfo(__uuidof(IHookManager2)));
    // The platform destroys a thread's windows at its end without a message, when objects may not be called any more.
    OnAnotherThread([&] {
        const HWND left = CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
        EXPECT_EQ(S_OK, Add(hook, HandleToLong(left)));
    });
    EXPECT_EQ(2u, hook->count());
    hook->Release();  // the reference that was left behind
    EXPECT_EQ("", events);
    manager = nullptr;
    EXPECT_TRUE(CanUnload(GetModuleHandleW(L"VelkSub.dll")));
}

// Run by the test after it, as a process of its own.
TEST_F(Hooks, DISABLED_EndWithHooksAttached) {
    Make("a0");
    Do("+a");
    std::exit(42);
}
TEST(HooksAtExit, DoNotDisturbTheEndOfTheProcess) { EXPECT_EQ(42, RunAlone(L"Hooks.DISABLED_*")); }

// Each round takes a slot of the thread's storage, of which a process has few.
TEST_F(Hooks, GiveEverythingBackWhenUnloaded) {
    Make("a0");
    for (int i = 0; i < 300; ++i) {
        manager = Manager();
        Do("+a");
        CoFreeUnusedLibrariesEx(0, 0);
        ASSERT_NE(nullptr, GetModuleHandleW(L"VelkSub.dll")) << "a hooked window needs it";
        Do("-a");
        manager = nullptr;
        CoFreeUnusedLibrariesEx(0, 0);
        ASSERT_EQ(nullptr, GetModuleHandleW(L"VelkSub.dll"));
    }
}

}  // namespace
}  // namespace velk::test
