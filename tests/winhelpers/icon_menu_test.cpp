// cIconMenu as its clients see it: what happens to their menus and windows, keys and screen readers.
#include <functional>
#include <map>
#include <optional>

#include "support/departures.h"
#include "support/fake.h"
#include "support/heap.h"
#include "support/process_counts.h"
#include "support/report_recorder.h"
#include "winhelpers/menu_fixture.h"

#include <oleacc.h>

namespace velk::test {
namespace {

using namespace std::string_view_literals;
using IconMenu = IconMenuTest;
using Steps = std::vector<std::function<void()>>;

constexpr HRESULT RunTime(int number) { return static_cast<HRESULT>(0x800A0000) + number; }

// e x  a menu loop begins, ends          m n s  a menu, another one, the submenu of the first is announced; E X M in
// o    the first as the window's own            another window; i, and the library gets no memory
// a A  attached to the window, to the other one; b B a second object; d detached; r the last reference is released
// z    menus that do not exist           k  the first is destroyed, and another gets its handle
// > <  an item, the window reads from right to left
// .    notes which of the menus are drawn; the menus are otherwise as they were
TEST_F(IconMenu, DrawsMenusWhileTheyAreShownAndKeepsThemAsTheyWere) {
    const std::pair<const char*, const char*> plays[] = {
        {"m.", ";"},  // as an accelerator brings about, and no loop ends
        {"eo.z.m.s.m.x.", ";;m;ms;ms;;"},
        {"emen.x.x.", "mn;m;;"},  // a loop inside another one
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
    const GdiObject bitmap(CreateBitmap(10, 10, 1, 1, nullptr));
    const auto handle = static_cast<HBITMAP>(bitmap.get());
    const auto made = [&] {
        Menu full = FullMenu(handle);
        SetMenuItemBitmaps(full.get(), kRadio, MF_BYPOSITION, nullptr, handle);
        SetMenuItemBitmaps(full.get(), kLong, MF_BYPOSITION, handle, nullptr);
        return full;
    };
    const ReportRecorder recorder(Library());
    for (const auto& [steps, expected] : plays) {
        const char* const play = steps;  // Clang has no way to use the other name in a lambda
        TestWindow other;
        Menu second = made();
        menu_ = made(), menu = menu_.get();
        icons_ = CreateObject<_cIconMenu>(__uuidof(::cIconMenu));
        auto another = CreateObject<_cIconMenu>(__uuidof(::cIconMenu));
        const auto inOther = [&](UINT message, HMENU opened = nullptr) {
            SendMessageW(other.get(), message, reinterpret_cast<WPARAM>(opened), 0);
        };
        std::string noted;
        auto before = ItemsOf(menu);
        const auto secondBefore = ItemsOf(second.get());
        const auto note = [&](char name, HMENU one, const char* all, const std::vector<ItemOfMenu>& kept) {
            if (Drawn(one) == all) noted += name;
            auto shown = ItemsOf(one);
            for (std::size_t i = 0; i < shown.size() && Drawn(one) == all; ++i) {
                if (all[i] == '.') continue;
                EXPECT_NE(kept[i].data, std::exchange(shown[i].data, kept[i].data));
                shown[i].type &= ~UINT{MFT_OWNERDRAW};
            }
            EXPECT_EQ(kept, shown) << play;
        };
        const std::map<char, std::function<void()>> actions{
            {'e', [&] { Send(WM_ENTERMENULOOP); }},
            {'x', [&] { Close(); }},
            {'m', [&] { Send(WM_INITMENUPOPUP, menu); }},
            {'n', [&] { Send(WM_INITMENUPOPUP, second.get()); }},
            {'s', [&] { Send(WM_INITMENUPOPUP, ItemsOf(menu)[kMore].submenu); }},
            {'o', [&] { Send(WM_INITMENUPOPUP, menu, LongToPtr(MAKELPARAM(0, TRUE))); }},
            {'i', [&] { Heap(Library(), [](std::size_t) { return true; }), Send(WM_INITMENUPOPUP, menu); }},
            {'E', [&] { inOther(WM_ENTERMENULOOP); }},
            {'X', [&] { inOther(WM_EXITMENULOOP); }},
            {'M', [&] { inOther(WM_INITMENUPOPUP, menu); }},
            {'a', [&] { Attach(window_.get()); }},
            {'A', [&] { Attach(other.get()); }},
            {'b', [&] { another->Attach(window_.handle()); }},
            {'B', [&] { another->Attach(other.handle()); }},
            {'d', [&] { EXPECT_EQ(S_OK, icons_->Detach()); }},
            {'r', [&] { icons_ = another = nullptr; }},
            {'z', [&] { Send(WM_INITMENUPOPUP), Send(WM_INITMENUPOPUP, reinterpret_cast<HMENU>(0x12345)); }},
            {'k', [&] { menu_ = Menu(), menu_ = made(), menu = menu_.get(), before = ItemsOf(menu); }},
            {'>', [&] { Change(menu, kSave, MIIM_FTYPE, {.type = MFT_RIGHTORDER}), before = ItemsOf(menu); }},
            {'<', [&] { SetWindowLongPtrW(window_.get(), GWL_EXSTYLE, WS_EX_LAYOUTRTL); }},
            {'.', [&] {
                 note('m', menu, "dddd.ddd...", before);  // what has a bitmap, or is the client's to draw, stays so
                 note('n', second.get(), "dddd.ddd...", secondBefore);
                 const HMENU more = ItemsOf(menu)[kMore].submenu;
                 note('s', more, "d", {{.id = 300, .text = L"&Inner"}}), noted += ';';
             }}};
        Attach(window_.get());
        for (const char* event = play; *event; ++event) actions.at (*event)();
        EXPECT_EQ(expected, noted) << play;
        SetWindowLongPtrW(window_.get(), GWL_EXSTYLE, 0);
    }
    EXPECT_TRUE(CanUnload()) << "it lives as long as it is attached";
    EXPECT_TRUE(recorder.reports().empty()) << "no box in the middle of a message";
}

TEST_F(IconMenu, RefusesWindowsOfOthersAndForgetsMenusThatAreGone) {
    for (const LONG handle : {window_.handle() & 0xFFFF, HandleToLong(GetDesktopWindow())}) {
        EXPECT_EQ(RunTime(5), Call(icons_.get(), L"Attach", {Arg(handle)}).code) << handle;
        EXPECT_EQ(window_.handle(), AttachedTo());
    }
    const auto picture = PictureOf(L"red.bmp");
    const ULONG before = References(picture.get());
    for (const auto& end : Steps{[&] { Close(); }, [&] { icons_->Detach(); }}) {
        const HMENU submenu = CreatePopupMenu();
        EXPECT_EQ(S_OK, icons_->putref_SubmenuPicture(HandleOf(submenu), picture.get()));
        EXPECT_LT(before, References(picture.get()));
        DestroyMenu(submenu);
        end();
        EXPECT_EQ(before, References(picture.get())) << "its icons are gone with it";
    }
    EXPECT_EQ(0, AttachedTo());
    const auto alone = CreateObject<IDispatch>(__uuidof(::cIconMenu));
    const Fake none("CoCreateInstance", &CoCreateInstance, [](auto&&...) { return REGDB_E_CLASSNOTREG; });
    EXPECT_EQ(RunTime(429), Call(alone.get(), L"Attach", {Arg(window_.handle())}).code) << "without the hook library";
    EXPECT_EQ(0, Get(alone.get(), L"hWnd").value.lVal);
}

// What a client does to an open menu has the same effect as on one that nobody draws.
TEST_F(IconMenu, KeepsWhatTheClientChangesMeanwhile) {
    const std::function<void(HMENU)> changes[] = {
        [](HMENU to) { EnableMenuItem(to, kOpen, MF_BYPOSITION | MF_GRAYED); },
        [](HMENU to) { CheckMenuItem(to, kChecked, MF_BYPOSITION | MF_UNCHECKED); },
        [](HMENU to) { InsertMenuW(to, 0, MF_BYPOSITION, 500, L"New first"); },
        [](HMENU to) { InsertMenuW(to, 2, MF_BYPOSITION | MF_OWNERDRAW, 501, nullptr); },
        [](HMENU to) { DeleteMenu(to, kSave, MF_BYPOSITION); },
        [](HMENU to) { Change(to, kDefault, MIIM_DATA, {.data = 77}); },
        [](HMENU to) { Change(to, kOpen, MIIM_FTYPE, {}); },
        [](HMENU to) { AppendMenuW(to, MF_SEPARATOR, 0, nullptr); },
        [](HMENU to) { DeleteMenu(to, kLine, MF_BYPOSITION); },  // another separator is the client's own to draw
        [](HMENU to) {
            while (DeleteMenu(to, 0, MF_BYPOSITION)) continue;
        },
        [](HMENU to) { Change(to, kSave, MIIM_STRING | MIIM_ID, {.id = 900, .text = L"Renamed"}); },
    };
    for (const auto& change : changes) {
        std::vector<ItemOfMenu> items[2];
        for (const bool open : {false, true}) {
            const Menu changed = FullMenu();
            AppendMenuW(changed.get(), MF_SEPARATOR | MF_OWNERDRAW, 0, reinterpret_cast<LPCWSTR>(4712));
            if (open) Open(changed.get());
            change(changed.get());
            if (open) Close();
            items[open] = ItemsOf(changed.get());
            for (ItemOfMenu& item : items[open]) {
                if (std::exchange(item.submenu, nullptr)) item.id = 0;  // the handles differ
            }
        }
        EXPECT_EQ(items[false], items[true]) << &change - changes;
    }
}

TEST_F(IconMenu, LetsTheWindowSeeItsMessages) {
    int seen = 0;
    std::string drawnBefore;
    window_.handler = [&](HWND, UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
        ++seen;
        if (message == WM_INITMENUPOPUP) drawnBefore = Drawn(menu);
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
    EXPECT_EQ("...........", drawnBefore) << "the window goes first, so that its changes are drawn too";
    expect(4711, WM_SETTINGCHANGE);
    MEASUREITEMSTRUCT measured{ODT_MENU, 0, UINT{CommandAt(kOpen)}, 1, 2, ItemsOf(menu)[kOpen].data};
    expect(TRUE, WM_MEASUREITEM, nullptr, &measured);
    EXPECT_GT(measured.itemWidth, 1u);
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
    const DRAWITEMSTRUCT gone{ODT_MENU, 0, 0, 0, 0, nullptr, nullptr, {}, ItemsOf(menu)[kSave].data};
    DeleteMenu(menu, kSave, MF_BYPOSITION);
    expect(TRUE, WM_DRAWITEM, nullptr, &gone);  // its data mean nothing to the window
    expect(4711, WM_EXITMENULOOP);
    expect(4711, WM_MEASUREITEM, nullptr, &measured);
    expect(4711, WM_MENUCHAR, pressed(L'o'), menu);
    expect(4711, WM_DESTROY);
    EXPECT_EQ(0, AttachedTo());
    window_.handler = nullptr;
}

TEST_F(IconMenu, FindsItemsByWhatIsTheirsAlone) {
    const auto key = [&](wchar_t pressed, bool wide = true) {
        return (wide ? SendMessageW : SendMessageA)(window_.get(), WM_MENUCHAR, MAKEWPARAM(pressed, MF_POPUP),
                                                    reinterpret_cast<LPARAM>(menu));
    };
    AppendMenuW(menu, MF_STRING, 600, L"&Other");
    Open(menu);
    Rename(menu, kOwn, L"&Zoom");
    for (const wchar_t none : {L'z', L'#'}) EXPECT_EQ(0, HIWORD(key(none))) << "the client's own item is the client's";
    EXPECT_EQ(MAKELRESULT(kOpen, MNC_SELECT), key(L'o'));
    EXPECT_EQ(0, HIWORD(key(L'c'))) << "the first letter of an item that has another mnemonic";
    Change(menu, kOpen, MIIM_STATE, {.state = MFS_HILITE});
    EXPECT_EQ(MAKELRESULT(kCount, MNC_SELECT), key(L'o')) << "the next one";
    icons_->Detach();
    SetWindowLongPtrA(window_.get(), GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&DefWindowProcA));
    Attach(window_.get());
    Open(menu);
    EXPECT_EQ(MAKELRESULT(kSave, MNC_EXECUTE), key(0x9A, false)) << "in the Western code page";
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
    std::vector<ItemOfMenu> Unlit() const {
        auto items = ItemsOf(menu);
        for (ItemOfMenu& item : items) item.state &= ~UINT{MFS_HILITE};
        return items;
    }
    std::function<void()> Press(UINT key) const {
        return [=, this] { PostMessageW(window_.get(), WM_KEYDOWN, key, 1); };
    }

    const std::vector<ItemOfMenu> before = Unlit();
};

// The same keys in the system's own menu and in a drawn one. h e d u r l: the keys Home, End, the arrows; . Return; x
// Escape.
TEST_F(ShownMenu, AnswersKeysAsTheSystemsOwn) {
    const std::map<char, UINT> names{{'h', VK_HOME},  {'e', VK_END},  {'d', VK_DOWN},   {'u', VK_UP},
                                     {'r', VK_RIGHT}, {'l', VK_LEFT}, {'.', VK_RETURN}, {'x', VK_ESCAPE}};
    const std::pair<const char*, LONG> cases[] = {
        {"O", CommandAt(kOpen)},
        {"dK", CommandAt(kChecked)},
        {"F", CommandAt(kDefault)},
        {"D", 0},  // disabled
        {"Q", 0},
        {"MI", 300},
        {"M.", 300},
        {"Mlh.", CommandAt(kOpen)},
        {"Mxh.", CommandAt(kOpen)},
        {"x.", 0},
        {"dd.", CommandAt(kSave)},
        {"u.", CommandAt(kLong)},
        {"e.", CommandAt(kLong)},
        {"ed.", CommandAt(kOpen)},
        {"eh.", CommandAt(kOpen)},
        {"X", CommandAt(kLong)},
        {"ddd.", CommandAt(kChecked)},  // past the separator
        {"hr.", CommandAt(kDefault)},   // in the second column
    };
    for (const bool drawn : {false, true}) {
        drawn ? Attach(window_.get()) : icons_->Detach();
        for (const auto& [keys, command] : cases) {
            Steps steps;
            for (const char key : std::string_view(keys))
                steps.push_back(Press(names.contains(key) ? names.at(key) : key));
            const bool isLost = !drawn && keys == "X"sv && Departs("TrackPopupMenu, letters");  // it has no mnemonic
            EXPECT_EQ(isLost ? 0 : command, Show(steps)) << drawn << keys;
        }
        EXPECT_EQ(before, Unlit());
    }
}

TEST_F(ShownMenu, MayLoseItsIconsOrItsWindow) {
    Show({Press('M'), Press('I')});
    EXPECT_EQ(Departs("TrackPopupMenu"), (ItemsOf(menu)[kMore].state & MFS_HILITE) != 0);
    Show({[&] { icons_->Detach(); }, Press(VK_DOWN)});
    EXPECT_EQ(before, Unlit());
    std::string drawn;
    const HMENU more = before[kMore].submenu;
    Show({[&] { Attach(window_.get()); }, Press('M'), [&] { drawn = Drawn(more); }});
    EXPECT_EQ("d", drawn) << "attached in the middle of a loop";
    EXPECT_EQ(".", Drawn(more));
    const int objects = GdiObjects();
    for (int i = 0; i < 100; ++i) Show({Press(VK_DOWN)});
    EXPECT_EQ(objects, GdiObjects());
    Show({[&] { icons_->ClearIcons(); }, [&] { window_.Destroy(), EndMenu(); }});
    EXPECT_EQ(before, Unlit());
    EXPECT_EQ(0, AttachedTo());
    icons_ = nullptr;
    EXPECT_LT(GdiObjects(), objects);
}

// As a screen reader gets it, which runs in another process: from the popup's window through its menu to the record.
TEST_F(ShownMenu, IsReadAloud) {
    std::wstring texts;
    const auto speak = [&](UINT position) {
        const HWND popup = FindWindowW(L"#32768", nullptr);
        const auto shown = reinterpret_cast<HMENU>(SendMessageW(popup, MN_GETHMENU, 0, 0));
        MSAAMENUINFO record{};
        const auto* const data = reinterpret_cast<const void*>(ItemsOf(shown).at(position).data);
        if (!ReadProcessMemory(GetCurrentProcess(), data, &record, sizeof record, nullptr))
            return void(texts += L"unreadable|");
        EXPECT_EQ(MSAA_MENU_SIG, record.dwMSAASignature);
        std::wstring text(record.cchWText + 1, L'?');
        ReadProcessMemory(GetCurrentProcess(), record.pszWText, text.data(), 2 * text.size(), nullptr);
        texts += text;
    };
    Show({[&] {
        for (const UINT position : {kOpen, kSave, kLine, kMore, kOwn}) speak(position);
        Rename(menu, kOpen, L"&Open a file with a longer name");
        RedrawWindow(FindWindowW(L"#32768", nullptr), nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
        speak(kOpen);
    }});
    EXPECT_EQ(L"&Open...\tCtrl+O\0\u0160ave \u6F22\0\0&More\0unreadable|&Open a file with a longer name\0"sv, texts);
    EXPECT_EQ(12345u, ItemsOf(menu)[kOpen].data);
}

}  // namespace
}  // namespace velk::test
