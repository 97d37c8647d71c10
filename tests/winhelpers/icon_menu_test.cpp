// cIconMenu as its clients see it: what happens to their menus and windows, keys and screen readers.
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <tuple>

#include "support/boxes.h"
#include "support/departures.h"
#include "support/heap.h"
#include "support/process_counts.h"
#include "winhelpers/menu_fixture.h"

#include <oleacc.h>

namespace velk::test {
namespace {

using namespace std::string_view_literals;
using IconMenu = IconMenuTest;
using Steps = std::vector<std::function<void()>>;

// One item of each kind, where some have bitmaps; and a separator that the client draws.
Menu MenuWithBitmaps() {
    static const GdiObject bitmap(CreateBitmap(10, 10, 1, 1, nullptr));
    const auto handle = static_cast<HBITMAP>(bitmap.get());
    Menu made = FullMenu(handle);
    SetMenuItemBitmaps(made.get(), kRadio, MF_BYPOSITION, nullptr, handle);
    SetMenuItemBitmaps(made.get(), kLong, MF_BYPOSITION, handle, nullptr);
    AppendMenuW(made.get(), MF_SEPARATOR | MF_OWNERDRAW, UINT{CommandAt(kLine)}, reinterpret_cast<LPCWSTR>(4712));
    return made;
}

// A letter an item: d where the library draws it. Otherwise the menu is as its twin, which nobody draws.
std::string DrawnBeside(HMENU twin, HMENU menu) {
    std::string drawn;
    EXPECT_EQ(GetMenuItemCount(twin), GetMenuItemCount(menu));
    for (UINT i = 0; i < static_cast<UINT>(GetMenuItemCount(twin)); ++i) {
        const MenuItem wanted(twin, i);
        MenuItem given(menu, i);
        const bool isDrawn = (given.fType ^ wanted.fType) & MFT_OWNERDRAW;
        drawn += isDrawn ? 'd' : '.';
        if (isDrawn) {
            given.fType ^= MFT_OWNERDRAW;
            EXPECT_NE(wanted.dwItemData, std::exchange(given.dwItemData, wanted.dwItemData));
        }
        EXPECT_EQ(wanted.Described(), given.Described());
    }
    return drawn;
}
bool IsDrawnBeside(HMENU twin, HMENU menu) { return DrawnBeside(twin, menu).find('d') != std::string::npos; }

// e x  a menu loop begins, ends          m s  a menu, its submenu is announced; E X M in another window; i, and the
// o    the menu as the window's own           library gets no memory
// a A  attached to the window, to the other one; b B a second object; d detached; r the last reference is released
// z    menus that do not exist           k    the menu is destroyed, and another gets its handle
// > <  an item, the window reads from right to left
// .    notes which of the menus are drawn
TEST_F(IconMenu, DrawsMenusWhileTheyAreShownAndKeepsThemAsTheyWere) {
    const std::pair<const char*, const char*> plays[] = {
        {"m.", ";"},  // as an accelerator brings about, and no loop ends
        {"eo.z.m.s.m.x.", ";;m;ms;ms;;"},
        {"emes.x.x.", "ms;m;;"},  // a loop inside another one
        {"em.dam.", "m;;"},       // the loop ended with the attachment
        {"em.A.m.EM.X.d.d.", "m;;;m;;;;"},
        {"BemEM.Xx.", "m;;"},
        {"bem.x.", "m;;"},
        {"emkx.", ";"},
        {"ei.m.x.", ";m;;"},
        {">em.x.", ";;"},
        {"<em.x.", ";;"},
        {"ems.r.", "ms;;"},
    };
    const Boxes boxes([](auto...) { ADD_FAILURE() << "a box in the middle of a message"; });
    for (const std::pair<const char*, const char*>& play : plays) {
        TestWindow other;
        const Menu twin = MenuWithBitmaps();
        menu_ = MenuWithBitmaps(), menu = menu_.get();
        icons_ = CreateObject<_cIconMenu>(__uuidof(::cIconMenu));
        auto another = CreateObject<_cIconMenu>(__uuidof(::cIconMenu));
        std::string noted;
        const auto note = [&](char name, const std::string& drawn, std::string_view all) {
            if (drawn == all) noted += name;
            EXPECT_TRUE(drawn == all || drawn.find('d') == drawn.npos) << play.first << ' ' << drawn;
        };
        const std::map<char, std::function<void()>> actions{
            {'e', [&] { Send(WM_ENTERMENULOOP); }},
            {'x', [&] { Close(); }},
            {'m', [&] { Send(WM_INITMENUPOPUP, menu); }},
            {'s', [&] { Send(WM_INITMENUPOPUP, GetSubMenu(menu, kMore)); }},
            {'o', [&] { Send(WM_INITMENUPOPUP, menu, LongToPtr(MAKELPARAM(0, TRUE))); }},
            {'i', [&] { Heap(Library(), [](std::size_t) { return true; }), Send(WM_INITMENUPOPUP, menu); }},
            {'E', [&] { SendMessageW(other.get(), WM_ENTERMENULOOP, 0, 0); }},
            {'X', [&] { SendMessageW(other.get(), WM_EXITMENULOOP, 0, 0); }},
            {'M', [&] { SendMessageW(other.get(), WM_INITMENUPOPUP, reinterpret_cast<WPARAM>(menu), 0); }},
            {'a', [&] { Attach(window_.get()); }},
            {'A', [&] { Attach(other.get()); }},
            {'b', [&] { another->Attach(window_.handle()); }},
            {'B', [&] { another->Attach(other.handle()); }},
            {'d', [&] { EXPECT_EQ(S_OK, icons_->Detach()); }},
            {'r', [&] { icons_ = another = nullptr; }},
            {'z', [&] { Send(WM_INITMENUPOPUP), Send(WM_INITMENUPOPUP, reinterpret_cast<HMENU>(0x12345)); }},
            {'k', [&] { menu_ = Menu(), menu_ = MenuWithBitmaps(), menu = menu_.get(); }},
            {'>',
             [&] {
                 for (const HMENU one : {menu, twin.get()})
                     Change(one, kSave, MIIM_FTYPE, &MENUITEMINFOW::fType, MFT_RIGHTORDER);
             }},
            {'<', [&] { SetWindowLongPtrW(window_.get(), GWL_EXSTYLE, WS_EX_LAYOUTRTL); }},
            {'.', [&] {
                 // What has a bitmap, or is the client's to draw, stays so.
                 note('m', DrawnBeside(twin.get(), menu), "dddd.ddd....");
                 note('s', DrawnBeside(GetSubMenu(twin.get(), kMore), GetSubMenu(menu, kMore)), "d"), noted += ';';
             }}};
        Attach(window_.get());
        for (const char event : std::string_view(play.first)) actions.at(event)();
        EXPECT_EQ(play.second, noted) << play.first;
        SetWindowLongPtrW(window_.get(), GWL_EXSTYLE, 0);
    }
    EXPECT_TRUE(CanUnload()) << "it lives as long as it is attached";
}

// What a client does to an open menu has the same effect as on one that nobody draws.
TEST_F(IconMenu, KeepsWhatTheClientChangesMeanwhile) {
    const std::function<void(HMENU)> changes[] = {
        [](HMENU to) { EnableMenuItem(to, kOpen, MF_BYPOSITION | MF_GRAYED); },
        [](HMENU to) { CheckMenuItem(to, kChecked, MF_BYPOSITION | MF_UNCHECKED); },
        [](HMENU to) { InsertMenuW(to, 0, MF_BYPOSITION, 500, L"New first"); },
        [](HMENU to) { InsertMenuW(to, 2, MF_BYPOSITION | MF_OWNERDRAW, 501, nullptr); },
        [](HMENU to) { DeleteMenu(to, kSave, MF_BYPOSITION); },
        [](HMENU to) { Change(to, kDefault, MIIM_DATA, &MENUITEMINFOW::dwItemData, 77); },
        [](HMENU to) { Change(to, kOpen, MIIM_FTYPE, &MENUITEMINFOW::fType, 0); },
        [](HMENU to) { AppendMenuW(to, MF_SEPARATOR, 0, nullptr); },
        [](HMENU to) { DeleteMenu(to, kLine, MF_BYPOSITION); },  // another separator is the client's own to draw
        [](HMENU to) {
            while (DeleteMenu(to, 0, MF_BYPOSITION)) continue;
        },
        [](HMENU to) { Rename(to, kSave, L"Renamed"), Change(to, kSave, MIIM_ID, &MENUITEMINFOW::wID, 900); },
    };
    for (const auto& change : changes) {
        const Menu twin = MenuWithBitmaps(), changed = MenuWithBitmaps();
        Open(changed.get());
        for (const HMENU one : {twin.get(), changed.get()}) change(one);
        Close();
        EXPECT_FALSE(IsDrawnBeside(twin.get(), changed.get())) << &change - changes;
    }
}

TEST_F(IconMenu, ForgetsTheIconsOfMenusThatAreGone) {
    const auto picture = PictureOf(L"red.bmp");
    const ULONG before = References(picture.get());
    for (const auto& end : Steps{[&] { Close(); }, [&] { icons_->Detach(); }}) {
        const HMENU submenu = CreatePopupMenu();
        EXPECT_EQ(S_OK, icons_->putref_SubmenuPicture(HandleOf(submenu), picture.get()));
        EXPECT_LT(before, References(picture.get()));
        DestroyMenu(submenu);
        end();
        EXPECT_EQ(before, References(picture.get()));
    }
}

TEST_F(IconMenu, LetsTheWindowSeeItsMessages) {
    int seen = 0;
    bool drawnBefore = true;
    window_.handler = [&](HWND, UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
        ++seen;
        if (message == WM_INITMENUPOPUP) drawnBefore = IsDrawn(menu);
        return 4711;
    };
    const auto expect = [&](LRESULT answer, UINT message, HMENU first = nullptr, const void* second = nullptr) {
        seen = 0;
        EXPECT_EQ(answer, Send(message, first, second)) << message;
        EXPECT_EQ(answer == 4711, seen == 1) << message;
    };
    const auto pressed = [](wchar_t key) { return reinterpret_cast<HMENU>(MAKEWPARAM(key, MF_POPUP)); };
    expect(4711, WM_ENTERMENULOOP);
    expect(4711, WM_INITMENUPOPUP, menu);
    EXPECT_FALSE(drawnBefore) << "the window goes first, so that its changes are drawn too";
    expect(4711, WM_SETTINGCHANGE);
    MEASUREITEMSTRUCT measured{ODT_MENU, 0, UINT{CommandAt(kOpen)}, 1, 2, MenuItem(menu, kOpen).dwItemData};
    expect(TRUE, WM_MEASUREITEM, nullptr, &measured);
    for (const auto& [type, data] : {std::pair<UINT, ULONG_PTR>{ODT_MENU, 4711}, {ODT_BUTTON, measured.itemData}}) {
        MEASUREITEMSTRUCT foreign{type, 0, 1, 1, 2, data};
        expect(4711, WM_MEASUREITEM, nullptr, &foreign);
        EXPECT_EQ(1u, foreign.itemWidth);
        const DRAWITEMSTRUCT drawn{type, 0, 0, 0, 0, nullptr, nullptr, {}, data};
        expect(4711, WM_DRAWITEM, nullptr, &drawn);
    }
    expect(4711, WM_MEASUREITEM);
    expect(4711, WM_DRAWITEM);
    expect(4711, WM_MENUCHAR, pressed(L'#'), menu);
    const DRAWITEMSTRUCT gone{ODT_MENU, 0, 0, 0, 0, nullptr, nullptr, {}, MenuItem(menu, kSave).dwItemData};
    DeleteMenu(menu, kSave, MF_BYPOSITION);
    expect(TRUE, WM_DRAWITEM, nullptr, &gone);  // its data mean nothing to the window
    expect(4711, WM_EXITMENULOOP);
    expect(4711, WM_MEASUREITEM, nullptr, &measured);
    expect(4711, WM_MENUCHAR, pressed(L'o'), menu);
    expect(4711, WM_DESTROY);
    EXPECT_EQ(0, AttachedTo());
    window_.handler = nullptr;
}

// The letter of a mnemonic, the last one that a label has, else that of a label without one. More items of a key are
// selected one after the other, from the highlighted one on; first letters lead nowhere while a mnemonic does.
TEST_F(IconMenu, FindsItemsByTheirKeys) {
    enum : UINT { kOther = kCount, kOdd, kSecond, kDoubled, kRight, kCd, kCe, kEnds };
    for (const wchar_t* text : {L"&Other", L"odd", L"&First &Second", L"B&&&W", L"Cut\b&Paste", L"cd", L"CE", L"Yes&"})
        AppendMenuW(menu, MF_STRING, 600, text);
    Rename(menu, kOwn, L"&Zoom");
    Open(menu);
    const auto key = [&](WORD pressed, bool wide = true) {
        return (wide ? SendMessageW : SendMessageA)(window_.get(), WM_MENUCHAR, MAKEWPARAM(pressed, MF_POPUP),
                                                    reinterpret_cast<LPARAM>(menu));
    };
    EXPECT_EQ(MAKELRESULT(kOpen, MNC_SELECT), key(L'o')) << "nothing is highlighted";
    const std::tuple<char, UINT, UINT> found[] = {{'o', kOpen, kOther}, {'O', kOther, kOpen}, {'o', kCe, kOpen},
                                                  {'c', kOpen, kRight}, {'c', kRight, kCd},   {'c', kCd, kCe},
                                                  {'c', kEnds, kRight}};
    for (const auto& [pressed, highlighted, position] : found) {
        Change(menu, highlighted, MIIM_STATE, &MENUITEMINFOW::fState, MFS_HILITE);
        EXPECT_EQ(MAKELRESULT(position, MNC_SELECT), key(pressed)) << pressed << highlighted;
        Change(menu, highlighted, MIIM_STATE, &MENUITEMINFOW::fState, 0);
    }
    const std::pair<char, UINT> only[] = {{'s', kSecond}, {'w', kDoubled}, {'y', kEnds}, {'f', kDefault}};
    for (const auto& [pressed, position] : only) EXPECT_EQ(MAKELRESULT(position, MNC_EXECUTE), key(pressed)) << pressed;
    for (const char none : {'z', '#', 'b', 'p', '\0'}) EXPECT_EQ(0, HIWORD(key(none))) << none;
    icons_->Detach();
    SetWindowLongPtrA(window_.get(), GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&DefWindowProcA));
    Attach(window_.get());
    Open(menu);
    EXPECT_EQ(MAKELRESULT(kSave, MNC_EXECUTE), key(0x9A, false)) << "in the Western code page";
    while (DeleteMenu(menu, 0, MF_BYPOSITION)) continue;
    EXPECT_EQ(0, HIWORD(key('o', false))) << "no items";
}

// A real menu loop. Does one step each time that it waits for input; then closes it.
class ShownMenu : public IconMenuTest {
  protected:
    LONG Show(const Steps& steps) {
        std::size_t next = 0;
        window_.handler = [&](HWND, UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
            if (message != WM_ENTERIDLE) return std::nullopt;
            if (next == steps.size()) return EndMenu(), 0;
            steps[next++]();
            PostThreadMessageW(GetCurrentThreadId(), WM_NULL, 0, 0);  // so that it waits once more
            return 0;
        };
        ShowWindow(window_.get(), SW_SHOW);
        const auto command = TrackPopupMenu(menu, TPM_RETURNCMD, 5, 5, 0, window_.get(), nullptr);
        window_.handler = nullptr;
        return PumpMessages(), command;
    }
    std::function<void()> Press(UINT key) const {
        return [=, this] { PostMessageW(window_.get(), WM_KEYDOWN, key, 1); };
    }
    bool IsAsBefore() const { return !IsDrawnBeside(FullMenu().get(), menu); }
};

// The same keys in the system's own menu and in a drawn one: mnemonics, none, of what is disabled, in the submenu, back
// out of it, round both ends, past the separator, into the second column. h e d u r l: the keys Home, End, the arrows;
// . Return; x Escape.
TEST_F(ShownMenu, AnswersKeysAsTheSystemsOwn) {
    const std::map<char, UINT> names{{'h', VK_HOME},  {'e', VK_END},  {'d', VK_DOWN},   {'u', VK_UP},
                                     {'r', VK_RIGHT}, {'l', VK_LEFT}, {'.', VK_RETURN}, {'x', VK_ESCAPE}};
    std::set<LONG> chosen;
    for (const std::string_view keys : {"O", "dK", "F", "Q", "D", "MI", "M.", "Mlh.", "Mxh.", "x.", "dd.", "u.", "e.",
                                        "ed.", "eh.", "ddd.", "hr.", "X"}) {
        Steps steps;
        for (const char key : keys) steps.push_back(Press(names.contains(key) ? names.at(key) : key));
        icons_->Detach();
        const LONG command = Show(steps);
        Attach(window_.get());
        const bool isLost = keys == "X" && Departs("TrackPopupMenu, letters");  // it has no mnemonic
        EXPECT_EQ(isLost ? CommandAt(kLong) : command, *chosen.insert(Show(steps)).first) << keys;
    }
    EXPECT_EQ((std::set{0L, CommandAt(kOpen), CommandAt(kSave), CommandAt(kChecked), CommandAt(kDefault),
                        CommandAt(kLong), 300L}),
              chosen);
    EXPECT_TRUE(IsAsBefore());
}

TEST_F(ShownMenu, MayLoseItsIconsOrItsWindow) {
    Show({Press('M'), Press('I')});
    EXPECT_EQ(Departs("TrackPopupMenu"), (GetMenuState(menu, kMore, MF_BYPOSITION) & MF_HILITE) != 0);
    Show({[&] { icons_->Detach(); }, Press(VK_DOWN)});
    EXPECT_TRUE(IsAsBefore());
    bool drawn = false;
    Show({[&] { Attach(window_.get()); }, Press('M'), [&] { drawn = IsDrawn(more); }});
    EXPECT_TRUE(drawn) << "attached in the middle of a loop";
    EXPECT_FALSE(IsDrawn(more));
    const int objects = GdiObjects();
    for (int i = 0; i < 100; ++i) Show({Press(VK_DOWN)});
    EXPECT_EQ(objects, GdiObjects());
    Show({[&] { icons_->ClearIcons(); }, [&] { window_.Destroy(), EndMenu(); }});
    EXPECT_TRUE(IsAsBefore());
    EXPECT_EQ(0, AttachedTo());
    icons_ = nullptr;
    EXPECT_LT(GdiObjects(), objects);
}

// As a screen reader gets it: from the popup's window through its menu to the record.
TEST_F(ShownMenu, IsReadAloud) {
    std::wstring texts;
    const auto speak = [&](UINT position) {
        const HWND popup = FindWindowW(L"#32768", nullptr);
        const auto shown = reinterpret_cast<HMENU>(SendMessageW(popup, MN_GETHMENU, 0, 0));
        const auto& record = *reinterpret_cast<const MSAAMENUINFO*>(MenuItem(shown, position).dwItemData);
        EXPECT_EQ(MSAA_MENU_SIG, record.dwMSAASignature);
        texts.append(record.pszWText, record.cchWText + 1);
    };
    Show({[&] {
        for (const UINT position : {kOpen, kSave, kLine, kMore}) speak(position);
        Rename(menu, kOpen, L"&Open a file with a longer name");
        RedrawWindow(FindWindowW(L"#32768", nullptr), nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
        speak(kOpen);
    }});
    EXPECT_EQ(L"&Open...\tCtrl+O\0\u0160ave \u6F22\0\0&More\0&Open a file with a longer name\0"sv, texts);
    EXPECT_EQ(12345u, MenuItem(menu, kOpen).dwItemData);
}

}  // namespace
}  // namespace velk::test
