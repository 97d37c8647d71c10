// The classes that hook windows, by the messages that they hook.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "support/fake.h"
#include "support/late_bound.h"
#include "support/sheet.h"
#include "support/test_hook.h"
#include "support/test_window.h"
#include "winhelpers/test_bitmaps.h"

#include <commctrl.h>

namespace velk::test {
namespace {

using Object = ComPtr<IDispatch>;

// n: no narrower than 250, x: no wider than 400, c: columns are not resized, i: menus with icons.
Object Made(char what) {
    const auto with = [](const CLSID& clsid, const wchar_t* property, std::initializer_list<VARIANT> values) {
        auto made = CreateObject<IDispatch>(clsid);
        EXPECT_EQ(S_OK, Let(made.get(), property, values).result);
        return made;
    };
    if (what == 'n') return with(__uuidof(CFormSizeConstraint), L"MinWidth", {Arg(250L)});
    if (what == 'x') return with(__uuidof(CFormSizeConstraint), L"MaxWidth", {Arg(400L)});
    if (what == 'c') return with(__uuidof(CListViewExtended), L"PreventColumnResize", {Arg(true)});
    return with(__uuidof(::cIconMenu), L"CommandPicture", {Arg(1L), Arg(PictureOf(L"square.bmp").get())});
}
HRESULT Attach(const Object& object, LONG window) {
    const bool isMenu = IdOf(object.get(), L"Attach") != DISPID_UNKNOWN;
    return Call(object.get(), isMenu ? L"Attach" : L"Init", {Arg(window)}).code;
}

// A window with a menu, which answers notifications with their place.
class HookedWindow : public testing::Test {
  protected:
    HookedWindow() { AppendMenuW(menu, MF_STRING, 1, L"&Item"); }
    ~HookedWindow() override { DestroyMenu(menu), VirtualFree(place, 0, MEM_RELEASE); }

    Object Attached(char what) const {
        const Object made = Made(what);
        EXPECT_EQ(S_OK, Attach(made, window.handle())) << what;
        return made;
    }
    LRESULT Send(UINT message, const void* first = nullptr, const void* second = nullptr) const {
        return SendMessageW(window.get(), message, reinterpret_cast<WPARAM>(first), reinterpret_cast<LPARAM>(second));
    }
    template <class Record>
    LRESULT SendRecord(UINT message, Record& record) const {
        std::memcpy(place, &record, sizeof record);
        const LRESULT answer = Send(message, nullptr, place);
        return std::memcpy(&record, place, sizeof record), answer;
    }
    LRESULT Notify(UINT code) const {
        NMHDR header{nullptr, 0, code};
        return SendRecord(WM_NOTIFY, header);
    }
    bool DrawsItem() const {
        MENUITEMINFOW item{};
        item.cbSize = sizeof item, item.fMask = MIIM_DATA;
        GetMenuItemInfoW(menu, 0, TRUE, &item);
        const Sheet sheet(100, 30);
        MEASUREITEMSTRUCT measured{ODT_MENU, 0, 1, 0, 0, item.dwItemData};
        DRAWITEMSTRUCT drawn{ODT_MENU, 0, 1, 0, 0, nullptr, sheet.get(), {0, 0, 100, 30}, item.dwItemData};
        SendRecord(WM_MEASUREITEM, measured), SendRecord(WM_DRAWITEM, drawn);
        return measured.itemWidth && sheet.At(12, 15) == kRed;
    }
    // In the order of their letters.
    std::string InEffect() const {
        std::string all;
        MINMAXINFO limits{};
        SendRecord(WM_GETMINMAXINFO, limits);
        if (Notify(HDN_BEGINTRACKA) == 1) all += 'c';
        Send(WM_ENTERMENULOOP), Send(WM_INITMENUPOPUP, menu);
        if (DrawsItem()) all += 'i';
        Send(WM_EXITMENULOOP);
        if (DrawsItem()) all += '?';
        if (limits.ptMinTrackSize.x == 250) all += 'n';
        if (limits.ptMaxTrackSize.x == 400) all += 'x';
        return all;
    }

    const HookLibrary library;
    const HMENU menu = CreatePopupMenu();
    // In 64-bit programs the system's records lie above what a Long holds: here in the highest memory that there is.
    void* const place = VirtualAlloc(nullptr, 4096, MEM_RESERVE | MEM_COMMIT | MEM_TOP_DOWN, PAGE_READWRITE);
    TestWindow window{WS_OVERLAPPEDWINDOW, [](HWND, UINT message, WPARAM, LPARAM at) -> std::optional<LRESULT> {
                          return message == WM_NOTIFY ? at : std::optional<LRESULT>();
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
            for (const auto& [name, object] : objects) expected += name;
            EXPECT_EQ(expected, InEffect()) << order << away;
            objects.erase(what);
        }
        EXPECT_EQ("", InEffect());
        EXPECT_EQ(own, window.CurrentProcedure());
        EXPECT_TRUE(CanUnload());
    } while (std::next_permutation(order.begin(), order.end()) && std::prev_permutation(away.begin(), away.end()));
}

// The last reference is released while a message is passed on to the window.
TEST_F(HookedWindow, MayLoseAnObjectInTheMiddleOfItsMessage) {
    const std::pair<char, std::vector<UINT>> cases[] = {
        {'n', {WM_GETMINMAXINFO}},
        {'c', {WM_WINDOWPOSCHANGED, WM_NOTIFY}},
        {'i', {WM_INITMENUPOPUP, WM_EXITMENULOOP, WM_SETTINGCHANGE, WM_ENTERMENULOOP, WM_DRAWITEM}}};
    Object object;
    UINT expected = 0;
    window.handler = [&](HWND, UINT message, auto...) -> std::optional<LRESULT> {
        return object && message == expected ? object = nullptr, 0 : std::optional<LRESULT>();
    };
    for (const auto& [what, messages] : cases) {
        for (const UINT message : messages) {
            object = Attached(what), expected = message;
            const std::array<char, 256> record{};  // what all of them may read
            const bool opens = message == WM_INITMENUPOPUP;
            Send(message, opens ? menu : nullptr, opens ? nullptr : record.data());
            EXPECT_TRUE(!object && !DrawsItem() && CanUnload()) << message;
            EXPECT_EQ(own, window.CurrentProcedure()) << message;
        }
    }
    window.handler = nullptr;
}

TEST_F(HookedWindow, HoldsBackTheHeadersNarrowNotificationsOnly) {
    const Object list = Attached('c');
    const auto passed = reinterpret_cast<LRESULT>(place);
    for (const UINT code : {HDN_BEGINTRACKW, HDN_DIVIDERDBLCLICKW, HDN_ITEMCLICKA}) EXPECT_EQ(passed, Notify(code));
    EXPECT_EQ(1, Notify(HDN_DIVIDERDBLCLICKA));
    Let(list.get(), L"PreventColumnResize", {Arg(false)});
    for (const UINT code : {HDN_BEGINTRACKA, HDN_DIVIDERDBLCLICKA}) EXPECT_EQ(passed, Notify(code));
}

TEST_F(HookedWindow, KeepsTheSizesThatAreNotLimited) {
    const auto form = CreateObject<IDispatch>(__uuidof(CFormSizeConstraint));
    const auto hook = form.As<ISubclass2>();
    std::array<LONG, sizeof(MINMAXINFO) / sizeof(LONG)> record{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}, expected = record;
    for (const auto& [name, place] :
         {std::pair{L"MaxWidth", 8u}, {L"MinHeight", 7u}, {L"MinWidth", 6u}, {L"MaxHeight", 9u}}) {
        Let(form.get(), name, {Arg(expected[place] = static_cast<LONG>(100 + place))});
        LONG_PTR result = 1;
        EXPECT_EQ(S_OK, hook->WindowProcPtr(0, 0, 0, reinterpret_cast<LPARAM>(record.data()), &result));
        EXPECT_EQ(expected, record) << name;
        EXPECT_EQ(0, result);
    }
    EXPECT_EQ(form.As<IUnknown>().get(), hook.As<ISubclass>().As<IUnknown>().get());
    EXPECT_EQ(form.get(), hook.As<IDispatch>().get()) << "the default interface";
    EXPECT_EQ(E_POINTER, hook.As<ISubclass>()->WindowProc(0, 0, 0, 0, nullptr));
    for (const IID& iid : {__uuidof(ISubclass), __uuidof(ISubclass2)})
        EXPECT_EQ(S_OK, form.As<ISupportErrorInfo>()->InterfaceSupportsErrorInfo(iid));
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
        {'n', "1a", "17586 "},
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
            if (event == 'a' || event == 'b') code = Attach(object, (event == 'a' ? a : b).handle());
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
    // The hook manager's own numbers reach whoever calls the hook.
    const NMHDR header{};
    LONG_PTR whole = 1;
    for (const char what : {'c', 'i'}) {
        const auto hook = Made(what).As<ISubclass2>();
        EXPECT_EQ(kRefused, hook.As<ISubclass>()->get_MsgResponse(&result));
        EXPECT_EQ(kRefused, hook->WindowProcPtr(a.handle(), what == 'c' ? WM_NOTIFY : WM_ENTERMENULOOP, -5,
                                                reinterpret_cast<LPARAM>(&header), &whole));
    }
    EXPECT_EQ(E_POINTER, Made('c').As<ISubclass2>()->WindowProcPtr(a.handle(), WM_NOTIFY, 0, 0, &whole));
}

}  // namespace
}  // namespace velk::test
