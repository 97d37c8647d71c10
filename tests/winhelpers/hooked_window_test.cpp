// The classes that hook windows, on one window: a list view that has a border to drag, and a menu.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "support/fake.h"
#include "support/late_bound.h"
#include "support/test_window.h"
#include "winhelpers/hook_layers.h"
#include "winhelpers/test_bitmaps.h"

#include <commctrl.h>

namespace velk::test {
namespace {

using Object = ComPtr<IDispatch>;

// n: no narrower than 250, x: no wider than 400, c: the columns fill the width, i: menus with icons.
Object Made(char what) {
    const CLSID& clsid = what == 'c'   ? __uuidof(CListViewExtended)
                         : what == 'i' ? __uuidof(::cIconMenu)
                                       : __uuidof(CFormSizeConstraint);
    auto made = CreateObject<IDispatch>(clsid);
    const auto red = PictureOf(L"square.bmp");
    const Outcome set = what == 'n'   ? Let(made.get(), L"MinWidth", {Arg(250L)})
                        : what == 'x' ? Let(made.get(), L"MaxWidth", {Arg(400L)})
                        : what == 'c' ? Let(made.get(), L"ResizeColumnsToFitWidth", {Arg(true)})
                                      : Let(made.get(), L"CommandPicture", {Arg(1L), Arg(red.get())});
    EXPECT_EQ(S_OK, set.result);
    return made;
}
HRESULT Attach(const Object& object, LONG window) {
    const bool isMenu = IdOf(object.get(), L"Attach") != DISPID_UNKNOWN;
    return Call(object.get(), isMenu ? L"Attach" : L"Init", {Arg(window)}).code;
}

class HookedWindow : public testing::Test {
  protected:
    HookedWindow() {
        for (int i = 0; i < 3; ++i) AddColumn(i);
        AppendMenuW(menu, MF_STRING, 1, L"&Item");
    }
    ~HookedWindow() override { DestroyWindow(window), DestroyMenu(menu); }

    Object Attached(char what) const {
        const Object made = Made(what);
        EXPECT_EQ(S_OK, Attach(made, HandleToLong(window))) << what;
        return made;
    }
    std::map<char, Object> AllAttached() const {
        std::map<char, Object> all;
        for (const char what : {'c', 'i', 'n', 'x'}) all[what] = Attached(what);
        return all;
    }

    LRESULT Send(LONG message, WPARAM wParam = 0, const void* lParam = nullptr) const {
        return SendMessageW(window, static_cast<UINT>(message), wParam, reinterpret_cast<LPARAM>(lParam));
    }
    int AddColumn(int position) const {
        const LVCOLUMNW column{};
        return static_cast<int>(Send(LVM_INSERTCOLUMNW, static_cast<WPARAM>(position), &column));
    }
    HWND Header() const { return reinterpret_cast<HWND>(Send(LVM_GETHEADER)); }
    int ColumnsWidth() const {
        int all = 0;
        for (int i = 0; i < columns; ++i) all += ListView_GetColumnWidth(window, i);
        return all;
    }
    static int Width(HWND of, int asked = 0) {
        if (asked) SetWindowPos(of, nullptr, 0, 0, asked, 200, SWP_NOZORDER | SWP_NOMOVE);
        RECT is{};
        GetWindowRect(of, &is);
        return static_cast<int>(is.right - is.left);
    }
    // A user who pulls the right border: a modal loop, which takes what is posted with the pointer's place at that
    // time.
    int Dragged(int distance) const {
        RECT is{};
        GetWindowRect(window, &is);
        const auto post = [&](UINT message, int by) {
            SetCursorPos(is.right - 2 + by, (is.top + is.bottom) / 2);
            PostMessageW(window, message, 0, 0);
        };
        post(WM_NULL, 0);
        PumpMessages();
        for (int i = 1; i <= 10; ++i) post(WM_MOUSEMOVE, distance * i / 10);
        post(WM_LBUTTONUP, distance);
        Send(WM_SYSCOMMAND, SC_SIZE | WMSZ_RIGHT);
        return Width(window);
    }
    bool IsOwnerDrawn() const { return GetMenuState(menu, 0, MF_BYPOSITION) & MF_OWNERDRAW; }
    // In the order of their letters.
    std::string InEffect() const {
        std::string all;
        RECT client{};
        for (int i = 0; i < columns; ++i) ListView_SetColumnWidth(window, i, 4);
        Width(window, 300), Width(window, 320), GetClientRect(window, &client);
        if (ColumnsWidth() == client.right) all += 'c';
        Send(WM_ENTERMENULOOP, TRUE);
        Send(WM_INITMENUPOPUP, reinterpret_cast<WPARAM>(menu));
        if (IsOwnerDrawn()) all += 'i';
        Send(WM_EXITMENULOOP, TRUE);
        if (IsOwnerDrawn()) all += '?';
        if (Width(window, 150) == 250) all += 'n';
        if (Width(window, 600) == 400) all += 'x';
        return all;
    }
    WNDPROC Procedure() const { return reinterpret_cast<WNDPROC>(GetWindowLongPtrW(window, GWLP_WNDPROC)); }

    HookLibrary library;
    int columns = 3;
    HWND window = CreateWindowExW(0, WC_LISTVIEWW, L"", WS_OVERLAPPEDWINDOW | LVS_REPORT, 0, 0, 400, 200, nullptr,
                                  nullptr, nullptr, nullptr);
    HMENU menu = CreatePopupMenu();
    const WNDPROC own = Procedure();
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
        EXPECT_EQ(own, Procedure());
        EXPECT_TRUE(CanUnload());
    } while (std::next_permutation(order.begin(), order.end()) && std::prev_permutation(away.begin(), away.end()));
}

TEST_F(HookedWindow, MayBeChangedMeanwhile) {
    const TestWindow parent;
    const LONG style = GetWindowLongW(window, GWL_STYLE);
    const auto restyle = [&](LONG to) { SetWindowLongW(window, GWL_STYLE, to); };
    std::vector<int> reversed{2, 1, 0};
    auto objects = AllAttached();
    const std::pair<const char*, std::function<void()>> changes[] = {
        {"cinx", [&] { EnableWindow(window, FALSE); }},
        {"cinx", [&] { restyle((style & ~WS_POPUP) | WS_CHILD), SetParent(window, parent.get()); }},
        {"cinx", [&] { SetParent(window, nullptr), restyle(style), EnableWindow(window, TRUE); }},
        {"inx", [&] { restyle((style & ~LVS_TYPEMASK) | LVS_ICON); }},
        {"cinx", [&] { restyle(style); }},
        {"cinx",
         [&] {
             while (columns < 50) reversed.insert(reversed.begin(), AddColumn(columns++));
         }},
        {"cinx", [&] { Send(LVM_SETCOLUMNORDERARRAY, 50, reversed.data()); }},          // as the user drags them
        {"cinx", [&] { objects['C'] = Attached('c'), objects['I'] = Attached('i'); }},  // a second one for the window
        {"cinx", [&] { objects.erase('c'), objects.erase('i'); }},
        {"nx", [&] { objects.erase('C'), objects.erase('I'); }},
    };
    for (const auto& [inEffect, change] : changes) {
        change();
        EXPECT_EQ(inEffect, InEffect()) << objects.size() << columns;
    }
}

// The last reference is dropped while a message is passed on to the window, by an object's own call or before it.
TEST_F(HookedWindow, MayLoseAnObjectInTheMiddleOfItsMessage) {
    const std::pair<char, std::vector<LONG>> cases[] = {
        {'n', {WM_GETMINMAXINFO}},
        {'c', {WM_WINDOWPOSCHANGED, WM_NOTIFY}},
        {'i', {WM_INITMENUPOPUP, WM_EXITMENULOOP, WM_SETTINGCHANGE, WM_ENTERMENULOOP, WM_DRAWITEM}}};
    for (const auto& [what, messages] : cases) {
        for (const LONG message : messages) {
            auto below = std::make_unique<Layer>(window, std::vector{message});
            Object object = Attached(what);
            below->hook->handle = [&](const TestHook::Message&, LONG_PTR*) { return object = nullptr, S_OK; };
            const std::array<char, 256> record{};  // what all of them may read
            const bool opens = message == WM_INITMENUPOPUP;
            Send(message, opens ? reinterpret_cast<WPARAM>(menu) : 0, opens ? nullptr : record.data());
            EXPECT_TRUE(!object && !IsOwnerDrawn() && CanUnload()) << message;
            below = nullptr;
            EXPECT_EQ(own, Procedure()) << message;
        }
    }
}

// In 64-bit programs the system's records lie below or above what a Long holds. A border is dragged; a real menu is
// drawn and looked at, and loses its icons while it is open.
TEST_F(HookedWindow, UsesRecordsWhereverTheyLie) {
    for (const std::uint64_t address :
         {0x30000000ull, 0x7FF00000ull, 0x80000000ull, 0xFFF00000ull, 0x100000000ull, kFarthest}) {
        if (address > kFarthest) continue;
        auto objects = AllAttached();
        const RelocatedRecords relocated(window, address);
        EXPECT_EQ("cinx", InEffect()) << std::hex << address;
        int red = 0;
        const TestWindow idle(WS_POPUP, [&](HWND, UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
            const HWND shown = message == WM_TIMER ? FindWindowW(MAKEINTRESOURCEW(32768), nullptr) : nullptr;
            if (!shown) return std::nullopt;
            const ScreenContext screen(GetDC(nullptr));
            RECT place{};
            GetWindowRect(shown, &place);
            for (int y = place.top; y < place.bottom; ++y) red += GetPixel(screen.get(), place.left + 12, y) == kRed;
            objects.erase('i');
            EXPECT_FALSE(IsOwnerDrawn());
            return EndMenu(), 0;
        });
        SetTimer(idle.get(), 1, 100, nullptr);
        ShowWindow(window, SW_SHOW);
        TrackPopupMenu(menu, TPM_RETURNCMD, 5, 5, 0, window, nullptr);
        EXPECT_EQ(16, red) << std::hex << address;
        // The platform confines the pointer instead of the window, which may leave a pixel over.
        for (const auto& [distance, width] : {std::pair{-300, 250}, {300, 400}, {-50, 350}}) {
            EXPECT_NEAR(width, Dragged(distance), 1) << std::hex << address;
        }
    }
}

TEST_F(HookedWindow, KeepsTheSizesThatAreNotLimited) {
    for (unsigned set = 0; set < 16; ++set) {
        const auto form = CreateObject<IDispatch>(__uuidof(CFormSizeConstraint));
        std::array<LONG, sizeof(MINMAXINFO) / sizeof(LONG)> record{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}, expected = record;
        for (unsigned i = 0; i < 4; ++i) {
            const wchar_t* const names[] = {L"MinWidth", L"MinHeight", L"MaxWidth", L"MaxHeight"};
            if (set & 1u << i) Let(form.get(), names[i], {Arg(expected[6 + i] = static_cast<LONG>(100 + i))});
        }
        const auto hook = form.As<ISubclass2>();
        LONG_PTR result = 1;
        EXPECT_EQ(S_OK, hook->WindowProcPtr(0, 0, 0, reinterpret_cast<LPARAM>(record.data()), &result));
        EXPECT_EQ(expected, record) << set;
        EXPECT_EQ(0, result);
        EXPECT_EQ(form.As<IUnknown>().get(), hook.As<ISubclass>().As<IUnknown>().get());
        EXPECT_EQ(form.get(), hook.As<IDispatch>().get()) << "the default interface";
        EXPECT_EQ(E_POINTER, hook.As<ISubclass>()->WindowProc(0, 0, 0, 0, nullptr));
        for (const IID& iid : {__uuidof(ISubclass), __uuidof(ISubclass2)}) {
            EXPECT_EQ(S_OK, form.As<ISupportErrorInfo>()->InterfaceSupportsErrorInfo(iid));
        }
    }
}

// The platform holds every size against the limits, a maximised one and that of a frame's child, too.
TEST_F(HookedWindow, IsLimitedInEveryState) {
    const TestWindow frame;
    CLIENTCREATESTRUCT given{nullptr, 1};
    const HWND client = CreateWindowExW(0, L"MDICLIENT", L"", WS_CHILD | WS_VISIBLE, 0, 0, 800, 600, frame.get(),
                                        nullptr, nullptr, &given);
    WNDCLASSW description{};
    description.lpfnWndProc = DefMDIChildProcW;
    description.lpszClassName = L"VelkTestChild";
    RegisterClassW(&description);
    const HWND child = CreateWindowExW(WS_EX_MDICHILD, description.lpszClassName, L"", 0, 0, 0, 300, 200, client,
                                       nullptr, nullptr, nullptr);
    for (const HWND one : {window, child}) {
        const Object limits[] = {Made('n'), Made('x')};
        for (const Object& limit : limits) EXPECT_EQ(S_OK, Attach(limit, HandleToLong(one)));
        EXPECT_EQ(250, Width(one, 100));
        EXPECT_EQ(400, Width(one, 700));
        EXPECT_EQ(260, Width(one, 260));
        ShowWindow(one, SW_MAXIMIZE);
        EXPECT_EQ(400, Width(one));
        ShowWindow(one, SW_RESTORE);
        EXPECT_EQ(260, Width(one));
    }
}

TEST_F(HookedWindow, LetsTheUserResizeItsColumnsOrNot) {
    const Object list = CreateObject<IDispatch>(__uuidof(CListViewExtended));
    EXPECT_EQ(S_OK, Attach(list, HandleToLong(window)));
    // The mouse on the divider behind the first column, as the header sees it, which speaks in either form; the wide
    // one is let through.
    const RelocatedRecords relocated(window);
    for (const auto& [prevents, unicode] : {std::pair{true, FALSE}, {false, FALSE}, {true, TRUE}}) {
        Let(list.get(), L"PreventColumnResize", {Arg(prevents)});
        SendMessageW(Header(), HDM_SETUNICODEFORMAT, static_cast<WPARAM>(unicode), 0);
        ListView_SetColumnWidth(window, 0, 100);
        const auto mouse = [&](UINT message, int x) {
            SendMessageW(Header(), message, MK_LBUTTON, MAKELPARAM(x, 8));
            return ListView_GetColumnWidth(window, 0);
        };
        mouse(WM_LBUTTONDOWN, 99), mouse(WM_MOUSEMOVE, 139);
        const bool isHeld = prevents && !unicode;
        EXPECT_EQ(isHeld ? 100 : 140, mouse(WM_LBUTTONUP, 139)) << prevents;
        const int before = ListView_GetColumnWidth(window, 0);
        EXPECT_EQ(isHeld, mouse(WM_LBUTTONDBLCLK, before - 1) == before) << prevents;
    }
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
