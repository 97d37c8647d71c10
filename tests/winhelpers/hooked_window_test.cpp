// The classes that hook windows, by the messages that they hook.
#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "support/fake.h"
#include "winhelpers/menu_fixture.h"

#include <commctrl.h>

namespace velk::test {
namespace {

using Object = ComPtr<IDispatch>;

// n: no smaller than 250 by 150, x: no larger than 400 by 300, c: columns are not resized, i: menus with icons.
Object Made(char what) {
    const auto made = CreateObject<IDispatch>(what == 'c'   ? __uuidof(CListViewExtended)
                                              : what == 'i' ? __uuidof(::cIconMenu)
                                                            : __uuidof(CFormSizeConstraint));
    const auto let = [&](const wchar_t* property, VARIANT value) {
        EXPECT_EQ(S_OK, Let(made.get(), property, {value}).result);
    };
    if (what == 'n') let(L"MinWidth", Arg(250L)), let(L"MinHeight", Arg(150L));
    if (what == 'x') let(L"MaxWidth", Arg(400L)), let(L"MaxHeight", Arg(300L));
    if (what == 'c') let(L"PreventColumnResize", Arg(true));
    return made;
}
HRESULT Attach(const Object& object, const TestWindow& window) {
    const bool isMenu = IdOf(object.get(), L"Attach") != DISPID_UNKNOWN;
    return Call(object.get(), isMenu ? L"Attach" : L"Init", {Arg(window.handle())}).code;
}

// A window with a menu, which answers notifications and questions for its sizes with their place.
class HookedWindow : public testing::Test {
  protected:
    ~HookedWindow() override { VirtualFree(place, 0, MEM_RELEASE); }

    Object Attached(char what) const {
        const Object made = Made(what);
        EXPECT_EQ(S_OK, Attach(made, window)) << what;
        return made;
    }
    template <class Record>
    LRESULT Send(UINT message, Record& record) const {
        std::memcpy(place, &record, sizeof record);
        const LRESULT answer = window.Send(message, nullptr, place);
        return std::memcpy(&record, place, sizeof record), answer;
    }
    bool MeasuresItem() const {
        MEASUREITEMSTRUCT measured{ODT_MENU, 0, 1, 0, 0, MenuItem(menu.get(), 0).dwItemData};
        return Send(WM_MEASUREITEM, measured) == TRUE && measured.itemWidth > 0;
    }
    // What is held back and changed, in the order of the objects' letters: of all else nothing is.
    std::string InEffect() const {
        std::string all;
        constexpr UINT kCodes[] = {HDN_BEGINTRACKA, HDN_DIVIDERDBLCLICKA, HDN_BEGINTRACKW, HDN_DIVIDERDBLCLICKW,
                                   HDN_ITEMCLICKA};
        for (std::size_t i = 0; i < 5; ++i) {
            NMHDR header{nullptr, 0, kCodes[i]};
            const LRESULT answer = Send(WM_NOTIFY, header);
            if (answer != reinterpret_cast<LRESULT>(place)) all += answer == 1 ? "cc???"[i] : '?';
        }
        window.Send(WM_ENTERMENULOOP), window.Send(WM_INITMENUPOPUP, menu.get());
        if (MeasuresItem()) all += 'i';
        window.Send(WM_EXITMENULOOP);
        if (MeasuresItem()) all += '?';
        std::array<LONG, 10> limits{0, 1, 2, 3, 4, 5, 6, 7, 8, 9};  // a MINMAXINFO
        Send(WM_GETMINMAXINFO, limits);
        constexpr LONG kLimits[] = {0, 0, 0, 0, 0, 0, 250, 150, 400, 300};
        for (std::size_t i = 0; i < 10; ++i) {
            if (limits[i] != static_cast<LONG>(i)) all += limits[i] == kLimits[i] ? "??????nnxx"[i] : '?';
        }
        return all;
    }

    const std::shared_ptr<void> library = HookLibrary();
    const Menu menu = FullMenu();
    // In 64-bit programs the system's records lie above what a Long holds: here in the highest memory that there is.
    void* const place = VirtualAlloc(nullptr, 4096, MEM_RESERVE | MEM_COMMIT | MEM_TOP_DOWN, PAGE_READWRITE);
    TestWindow window{WS_OVERLAPPEDWINDOW, [](HWND, UINT message, WPARAM, LPARAM at) -> std::optional<LRESULT> {
                          return message == WM_NOTIFY || message == WM_GETMINMAXINFO ? at : std::optional<LRESULT>();
                      }};
    const WNDPROC own = window.CurrentProcedure();
};

// Each of the 24 orders to attach in, and each to let go in: what is left stays in effect.
TEST_F(HookedWindow, TakesAllInEveryOrderAndLetsThemGo) {
    std::string order = "cinx", away = "xnic";
    do {
        std::map<char, Object> objects;
        for (const char what : order) objects[what] = Attached(what);
        for (const char what : away) {
            std::string expected;
            for (const auto& [name, object] : objects) expected += std::string(name == 'i' ? 1 : 2, name);
            EXPECT_EQ(expected, InEffect()) << order << away;
            objects.erase(what);
        }
        EXPECT_EQ("", InEffect());
        EXPECT_EQ(own, window.CurrentProcedure());
        EXPECT_TRUE(CanUnload());
    } while (std::next_permutation(order.begin(), order.end()) && std::prev_permutation(away.begin(), away.end()));
    const Object list = Attached('c');
    Let(list.get(), L"PreventColumnResize", {Arg(false)});
    EXPECT_EQ("", InEffect()) << "not asked for any more";
}

// The last reference is released while a message is passed on to the window.
TEST_F(HookedWindow, MayLoseAnObjectInTheMiddleOfItsMessage) {
    Object object;
    UINT expected = 0;
    window.handler = [&](HWND, UINT message, auto...) -> std::optional<LRESULT> {
        return object && message == expected ? object = nullptr, 0 : std::optional<LRESULT>();
    };
    for (const auto& [what, message] : {std::pair<char, UINT>{'n', WM_GETMINMAXINFO},
                                        {'c', WM_WINDOWPOSCHANGED},
                                        {'c', WM_NOTIFY},
                                        {'i', WM_INITMENUPOPUP},
                                        {'i', WM_EXITMENULOOP},
                                        {'i', WM_SETTINGCHANGE},
                                        {'i', WM_ENTERMENULOOP},
                                        {'i', WM_DRAWITEM}}) {
        object = Attached(what), expected = message;
        const std::array<char, 256> record{};  // what all of them may read
        const bool opens = message == WM_INITMENUPOPUP;
        window.Send(message, opens ? menu.get() : nullptr, opens ? nullptr : record.data());
        EXPECT_TRUE(!object && !MeasuresItem() && CanUnload()) << message;
        EXPECT_EQ(own, window.CurrentProcedure()) << message;
    }
    window.handler = nullptr;
}

constexpr HRESULT kRefused = eErrHookManager_NotHooked;

// Notes each call, as "+36a": attach, the message, the window. It is older than IHookManager2.
class NotingManager final : public BareObject<IHookManager> {
  public:
    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) noexcept override {
        return E_NOTIMPL;
    }
    STDMETHODIMP AddHook(ISubclass** hook, LONG window, LONG message) noexcept override {
        return --refused == 0 ? kRefused : Note('+', *hook, window, message);
    }
    STDMETHODIMP RemoveHook(ISubclass** hook, LONG window, LONG message) noexcept override {
        return Note('-', *hook, window, message), refusesAll ? kRefused : S_OK;
    }
    STDMETHODIMP get_DispatchedMessage(LONG*) noexcept override { return kRefused; }
    STDMETHODIMP CallPreviousProc(LONG, LONG, LONG wParam, LONG, LONG*) noexcept override {
        return wParam == -5 ? kRefused : E_UNEXPECTED;
    }

    LONG first = 0;
    int refused = 0;  // the number of the attach that fails, counted from 1
    bool refusesAll = false;
    std::string calls;
    ComPtr<ISubclass> kept;

  private:
    HRESULT Note(char what, ISubclass* hook, LONG window, LONG message) {
        kept = ComPtr<ISubclass>(hook);
        return calls += what + std::to_string(message) + (window == first ? "a " : "b "), S_OK;
    }
};

// a b: attaches to that window; r: lets go; e: the client's last reference; a digit: that attach is refused; !: all
// that is taken off is refused. Failures are noted with their numbers.
TEST(HookCalls, LetGoOfEachHookWithTheLastReference) {
    const TestWindow a, b;
    const auto manager = ComPtr<NotingManager>::Attach(new NotingManager);
    manager->first = a.handle();
    const Fake create("CoCreateInstance", &CoCreateInstance, [&](REFCLSID, IUnknown*, DWORD, REFIID iid, void** made) {
        return manager->QueryInterface(iid, made);
    });
    const std::string on = "+279a +530a +26a +2a +529a +44a +43a +288a ",
                      off = "-279a -530a -26a -2a -529a -44a -43a -288a ";
    const std::tuple<char, std::string, std::string> cases[] = {
        {'n', "abre", "+36a -36a +36b -36b -36b "},  // once more at its end
        {'n', "a!re", "+36a -36a 17586 -36a "},
        {'c', "2a1aa1be", "+71a +78a +71a +78a -71a -78a +78b -71b -78b "},  // no failure
        {'c', "a!e", "+71a +78a -71a -78a "},                                // each is tried
        {'c', "a!b", "+71a +78a -71a -78a 18223 "},
        {'i', "3aaa", "+279a +530a " + off + "refused " + on},  // wholly or not at all, and once
        {'i', "a!rre", on + off + "refused "},
        {'i', "a!e", on + off},
    };
    for (const auto& [what, events, calls] : cases) {
        auto object = Made(what);
        const auto let = what == 'i' ? L"Detach" : L"Release";
        manager->refusesAll = false, manager->calls.clear();
        for (const char event : events) {
            HRESULT code = S_OK;
            if (event == 'a' || event == 'b') code = Attach(object, event == 'a' ? a : b);
            if (event == 'r') code = Call(object.get(), let).code;
            if (event == 'e') object = nullptr;
            if (event == '!') manager->refusesAll = true;
            if (event < '9' && event > '0') manager->refused = event - '0';
            if (code != S_OK) manager->calls += code == kRefused ? "refused " : std::to_string(code & 0xFFFF) + ' ';
        }
        EXPECT_EQ(calls, manager->calls) << what << events;
    }
    LONG result = 1;
    EXPECT_TRUE(manager->kept.As<ISubclass2>());
    EXPECT_NE(S_OK, manager->kept->get_MsgResponse(&result)) << "a hook that could not be taken off";
    EXPECT_NE(S_OK, manager->kept->WindowProc(a.handle(), WM_NOTIFY, 0, 0, &result));
    manager->kept = nullptr;
    EXPECT_TRUE(CanUnload());
    // Called by whoever asks for it; the hook manager's own numbers reach them.
    std::array<LONG, 10> record{};
    LONG_PTR whole = 1;
    const auto call = [&](char what, LONG message) {
        return Made(what).As<ISubclass2>()->WindowProcPtr(a.handle(), message, -5,
                                                          reinterpret_cast<LPARAM>(record.data()), &whole);
    };
    EXPECT_EQ(S_OK, call('n', 0));
    EXPECT_EQ(0, whole);
    for (const HRESULT answer :
         {call('c', WM_NOTIFY), call('i', WM_ENTERMENULOOP), Made('c').As<ISubclass>()->get_MsgResponse(&result),
          Made('i').As<ISubclass>()->get_MsgResponse(&result)})
        EXPECT_EQ(kRefused, answer);
    EXPECT_EQ(E_POINTER, Made('n').As<ISubclass>()->WindowProc(0, 0, 0, 0, nullptr));
}

}  // namespace
}  // namespace velk::test
