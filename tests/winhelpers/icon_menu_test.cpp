// cIconMenu as its clients see it: what happens to their menus and windows, keys and screen readers.
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <vector>

#include "support/boxes.h"
#include "support/departures.h"
#include "support/heap.h"
#include "winhelpers/menu_fixture.h"

#include <oleacc.h>

namespace velk::test {
namespace {

using namespace std::string_view_literals;
using IconMenu = IconMenuTest;

// A letter an item: d where the library draws it; nothing at all where it draws none. Otherwise the menu is as its
// twin, which nobody draws.
std::string DrawnBeside(HMENU twin, HMENU menu) {
    std::string drawn;
    EXPECT_EQ(GetMenuItemCount(twin), GetMenuItemCount(menu));
    for (int i = 0; i < GetMenuItemCount(twin); ++i) {
        const MenuItem wanted(twin, static_cast<UINT>(i));
        MenuItem given(menu, static_cast<UINT>(i));
        const bool isDrawn = (given.fType ^ wanted.fType) & MFT_OWNERDRAW;
        drawn += isDrawn ? 'd' : '.';
        if (isDrawn) {
            const auto& spoken = *reinterpret_cast<const MSAAMENUINFO*>(given.dwItemData);
            EXPECT_TRUE(spoken.dwMSAASignature == MSAA_MENU_SIG && spoken.cchWText == std::wcslen(wanted.text));
            EXPECT_STREQ(wanted.text, spoken.pszWText) << "for screen readers";
            given.fType ^= MFT_OWNERDRAW;
            given.dwItemData = wanted.dwItemData;
        }
        EXPECT_EQ(wanted.Described(), given.Described());
    }
    return drawn.find('d') == drawn.npos ? "" : drawn;
}

// What a client does to a menu has the same effect on an open one as on one that nobody draws.
const std::map<char, std::function<void(HMENU)>> kChanges{
    {'0', [](HMENU to) { EnableMenuItem(to, kOpen, MF_BYPOSITION | MF_GRAYED); }},
    {'1', [](HMENU to) { InsertMenuW(to, 0, MF_BYPOSITION, 500, L"New first"); }},
    {'2', [](HMENU to) { InsertMenuW(to, 2, MF_BYPOSITION | MF_OWNERDRAW, 501, nullptr); }},
    {'3', [](HMENU to) { DeleteMenu(to, kSave, MF_BYPOSITION); }},
    {'4', [](HMENU to) { Change(to, kDefault, MIIM_DATA, &MENUITEMINFOW::dwItemData, 77); }},
    {'5', [](HMENU to) { Change(to, kOpen, MIIM_FTYPE, &MENUITEMINFOW::fType, 0); }},
    {'6', [](HMENU to) { DeleteMenu(to, kLine, MF_BYPOSITION); }},  // another separator is the client's own to draw
    {'7', [](HMENU to) { Rename(to, kSave, L"Renamed"), Change(to, kSave, MIIM_ID, &MENUITEMINFOW::wID, 900); }},
    {'-',
     [](HMENU to) {
         while (DeleteMenu(to, 0, MF_BYPOSITION)) continue;
     }},
    {'>', [](HMENU to) { Change(to, kSave, MIIM_FTYPE, &MENUITEMINFOW::fType, MFT_RIGHTORDER); }}};

// e x  a menu loop begins, ends          m s  a menu, its submenu is announced; E X M in another window; i, and the
// o    the menu as the window's own           library gets no memory
// a A  attached to the window, to the other one; b B a second object; d detached; r the last reference is released
// z    menus that do not exist           k    the menu is destroyed, and another gets its handle
// p    a submenu gets a picture and is destroyed; ? whether the picture is held (+) or not (-)
// <    the window reads from right to left; > an item, one of the changes
// D .  the items are drawn, which tells screen readers of new texts; notes which of the menus are drawn
TEST_F(IconMenu, DrawsMenusWhileTheyAreShownAndKeepsThemAsTheyWere) {
    std::vector<std::pair<std::string, std::string>> plays{
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
        {"p?x?p?d?", "+-+-"},
        {"em7D.x.", "m;;"},
    };
    for (const auto& change : kChanges) plays.emplace_back(std::string("em") + change.first + "x.", ";");
    const Boxes boxes([](auto...) { ADD_FAILURE() << "a box in the middle of a message"; });
    const auto picture = PictureOf(L"red.bmp");
    const ULONG references = References(picture.get());
    for (const auto& play : plays) {
        TestWindow other;
        const Menu twin = FullMenu();
        menu_ = FullMenu(), menu = menu_.get();
        icons_ = CreateObject<_cIconMenu>(__uuidof(::cIconMenu));
        auto another = CreateObject<_cIconMenu>(__uuidof(::cIconMenu));
        std::string noted;
        const auto note = [&](char name, const std::string& drawn, const char* all) {
            noted += drawn == all ? std::string(1, name) : drawn;
        };
        const std::map<char, std::function<void()>> actions{
            {'e', [&] { window_.Send(WM_ENTERMENULOOP); }},
            {'x', [&] { Close(); }},
            {'m', [&] { window_.Send(WM_INITMENUPOPUP, menu); }},
            {'s', [&] { window_.Send(WM_INITMENUPOPUP, GetSubMenu(menu, kMore)); }},
            {'o', [&] { window_.Send(WM_INITMENUPOPUP, menu, LongToPtr(MAKELPARAM(0, TRUE))); }},
            {'i', [&] { Heap(Library(), [](auto) { return true; }), window_.Send(WM_INITMENUPOPUP, menu); }},
            {'E', [&] { other.Send(WM_ENTERMENULOOP); }},
            {'X', [&] { other.Send(WM_EXITMENULOOP); }},
            {'M', [&] { other.Send(WM_INITMENUPOPUP, menu); }},
            {'a', [&] { Attach(window_); }},
            {'A', [&] { Attach(other); }},
            {'b', [&] { another->Attach(window_.handle()); }},
            {'B', [&] { another->Attach(other.handle()); }},
            {'d', [&] { EXPECT_EQ(S_OK, icons_->Detach()); }},
            {'r', [&] { icons_ = another = nullptr; }},
            {'z', [&] { window_.Send(WM_INITMENUPOPUP), window_.Send(WM_INITMENUPOPUP, LongToPtr(0x12345)); }},
            {'k', [&] { menu_ = Menu(), menu_ = FullMenu(), menu = menu_.get(); }},
            {'p', [&] { icons_->putref_SubmenuPicture(HandleToLong(FullMenu().get()), picture.get()); }},
            {'?', [&] { noted += References(picture.get()) > references ? '+' : '-'; }},
            {'<', [&] { SetWindowLongPtrW(window_.get(), GWL_EXSTYLE, WS_EX_LAYOUTRTL); }},
            {'D',
             [&] {
                 for (UINT i = 0; i < kOwn; ++i) DrawItem(MenuItem(menu, i).dwItemData);
             }},
            {'.', [&] {
                 note('m', DrawnBeside(twin.get(), menu), "ddddddddd.....");
                 note('s', DrawnBeside(GetSubMenu(twin.get(), kMore), GetSubMenu(menu, kMore)), "d"), noted += ';';
             }}};
        Attach(window_);
        for (const char event : play.first) {
            if (actions.contains(event)) {
                actions.at(event)();
            } else {
                for (const HMENU one : {menu, twin.get()}) kChanges.at(event)(one);
            }
        }
        EXPECT_EQ(play.second, noted) << play.first;
        SetWindowLongPtrW(window_.get(), GWL_EXSTYLE, 0);
    }
    icons_ = nullptr;
    EXPECT_TRUE(CanUnload()) << "it lives as long as it is attached";
}

TEST_F(IconMenu, LetsTheWindowSeeItsMessages) {
    LRESULT seen = 4711, passed = seen;
    bool drawnBefore = true;
    window_.handler = [&](HWND, UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
        if (message == WM_INITMENUPOPUP) drawnBefore = IsDrawn(menu);
        return ++seen;
    };
    const auto expectPassed = [&](UINT message, const void* first = nullptr, const void* second = nullptr) {
        EXPECT_EQ(++passed, window_.Send(message, first, second)) << message;
    };
    const auto pressed = [](wchar_t key) { return LongToPtr(MAKELONG(key, MF_POPUP)); };
    for (const UINT message : {WM_ENTERMENULOOP, WM_INITMENUPOPUP, WM_SETTINGCHANGE}) expectPassed(message, menu);
    EXPECT_FALSE(drawnBefore) << "the window goes first, so that its changes are drawn too";
    MEASUREITEMSTRUCT measured{ODT_MENU, 0, UINT{CommandAt(kOpen)}, 1, 2, MenuItem(menu, kOpen).dwItemData};
    EXPECT_EQ(TRUE, window_.Send(WM_MEASUREITEM, nullptr, &measured));
    for (const auto& [type, data] : {std::pair<UINT, ULONG_PTR>{ODT_MENU, 4711}, {ODT_BUTTON, measured.itemData}}) {
        const MEASUREITEMSTRUCT foreign{type, 0, 1, 1, 2, data};
        const DRAWITEMSTRUCT drawn{type, 0, 0, 0, 0, nullptr, nullptr, {}, data};
        expectPassed(WM_MEASUREITEM, nullptr, &foreign), expectPassed(WM_DRAWITEM, nullptr, &drawn);
    }
    expectPassed(WM_MEASUREITEM), expectPassed(WM_DRAWITEM), expectPassed(WM_MENUCHAR, pressed(L'#'), menu);
    const ULONG_PTR gone = MenuItem(menu, kSave).dwItemData;
    DeleteMenu(menu, kSave, MF_BYPOSITION);
    EXPECT_EQ(TRUE, DrawItem(gone)) << "its data mean nothing to the window";
    expectPassed(WM_EXITMENULOOP), expectPassed(WM_MEASUREITEM, nullptr, &measured);
    expectPassed(WM_MENUCHAR, pressed(L'o'), menu), expectPassed(WM_DESTROY);
    EXPECT_EQ(0, AttachedTo());
    window_.handler = nullptr;
}

// The letter of a mnemonic, the last one that a label has, else that of a label without one. More items of a key are
// selected one after the other, from the highlighted one on; first letters lead nowhere while a mnemonic does.
TEST_F(IconMenu, FindsItemsByTheirKeys) {
    for (const wchar_t* text : {L"&Other", L"odd", L"&First &Second", L"B&&&W", L"Cut\b&Paste", L"cd", L"CE", L"Yes&"})
        AppendMenuW(menu, MF_STRING, 600, text);
    Rename(menu, kOwn, L"&Zoom");
    Open(menu);
    UINT highlighted = kOpen;
    // The item as a letter, a the first one; behind ! when it is the only one; - for none.
    const auto press = [&](WORD key, auto send) -> std::string {
        const LRESULT answer = send(window_.get(), WM_MENUCHAR, MAKEWPARAM(key, MF_POPUP), (LPARAM)menu);
        const std::string item(1, static_cast<char>('a' + LOWORD(answer)));
        if (HIWORD(answer) != MNC_SELECT) return HIWORD(answer) == MNC_EXECUTE ? '!' + item : "-";
        Change(menu, std::exchange(highlighted, LOWORD(answer)), MIIM_STATE, &MENUITEMINFOW::fState, 0);
        Change(menu, highlighted, MIIM_STATE, &MENUITEMINFOW::fState, MFS_HILITE);
        return item;
    };
    std::string found;
    for (const char key : "ooOccccswyfz#bp"sv) found += press(static_cast<BYTE>(key), &SendMessageW);
    EXPECT_EQ("aoastus!q!r!v!g----", found);
    EXPECT_EQ("-", press(0, &SendMessageW));
    icons_->Detach();
    SetWindowLongPtrA(window_.get(), GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&DefWindowProcA));
    Attach(window_);
    Open(menu);
    EXPECT_EQ("!b", press(0x9A, &SendMessageA)) << "in the Western code page";
    while (DeleteMenu(menu, 0, MF_BYPOSITION)) continue;
    EXPECT_EQ("-", press('o', &SendMessageA)) << "no items";
}

// A real menu loop, with a step each time that it waits for input; then it is closed. A step is a letter's key; h e d
// u r l: the keys Home, End, the arrows; . Return; x Escape; or a digit: what is done.
class ShownMenu : public IconMenuTest {
  protected:
    LONG Show(std::string_view steps, const std::vector<std::function<void()>>& done = {}) {
        static const std::map<char, UINT> kKeys{{'h', VK_HOME},  {'e', VK_END},  {'d', VK_DOWN},   {'u', VK_UP},
                                                {'r', VK_RIGHT}, {'l', VK_LEFT}, {'.', VK_RETURN}, {'x', VK_ESCAPE}};
        window_.handler = [&](HWND, UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
            if (message != WM_ENTERIDLE) return std::nullopt;
            if (steps.empty()) return EndMenu(), 0;
            const char step = steps[0];
            steps.remove_prefix(1);
            if (step >= '0' && step <= '9') {
                done[step - '0']();
            } else {
                PostMessageW(window_.get(), WM_KEYDOWN, kKeys.contains(step) ? kKeys.at(step) : UINT(step), 1);
            }
            PostThreadMessageW(GetCurrentThreadId(), WM_NULL, 0, 0);  // so that it waits once more
            return 0;
        };
        ShowWindow(window_.get(), SW_SHOW);
        const auto command = TrackPopupMenu(menu, TPM_RETURNCMD, 5, 5, 0, window_.get(), nullptr);
        window_.handler = nullptr;
        return PumpMessages(), command;
    }
    bool IsAsBefore() const { return DrawnBeside(FullMenu().get(), menu).empty(); }
};

// The same keys in the system's own menu and in a drawn one: mnemonics, none, of what is disabled, in the submenu, back
// out of it, round both ends, past the separator, into the second column.
TEST_F(ShownMenu, AnswersKeysAsTheSystemsOwn) {
    std::set<LONG> chosen;
    for (const std::string_view keys : {"O", "dK", "F", "Q", "D", "MI", "M.", "Mlh.", "Mxh.", "x.", "dd.", "u.", "e.",
                                        "ed.", "eh.", "ddd.", "hr.", "X"}) {
        icons_->Detach();
        const LONG command = Show(keys);
        Attach(window_);
        const bool isLost = keys == "X" && Departs("TrackPopupMenu, letters");  // it has no mnemonic
        EXPECT_EQ(isLost ? CommandAt(kLong) : command, *chosen.insert(Show(keys)).first) << keys;
    }
    EXPECT_EQ(8u, chosen.size()) << "each of them leads somewhere";
    EXPECT_TRUE(IsAsBefore());
}

TEST_F(ShownMenu, MayLoseItsIconsOrItsWindow) {
    Show("MI");
    EXPECT_EQ(Departs("TrackPopupMenu"), (GetMenuState(menu, kMore, MF_BYPOSITION) & MF_HILITE) != 0);
    Show("0d", {[&] { icons_->Detach(); }});
    EXPECT_TRUE(IsAsBefore());
    bool drawn = false;
    Show("0M1", {[&] { Attach(window_); }, [&] { drawn = IsDrawn(more); }});
    EXPECT_TRUE(drawn && !IsDrawn(more)) << "attached in the middle of a loop";
    Show("01", {[&] { icons_->ClearIcons(); }, [&] { window_.Destroy(), EndMenu(); }});
    EXPECT_TRUE(IsAsBefore());
    EXPECT_EQ(0, AttachedTo());
}

}  // namespace
}  // namespace velk::test
