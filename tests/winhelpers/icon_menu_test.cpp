// cIconMenu as its clients see it: what happens to their menus and windows, and what it refuses.
#include <optional>
#include <set>

#include "support/departures.h"
#include "support/gdi_objects.h"
#include "support/report_recorder.h"
#include "winhelpers/menu_fixture.h"

namespace velk::test {
namespace {

class IconMenu : public IconMenuTest {
  protected:
    IconMenu() { EXPECT_EQ(S_OK, Attach(window_.get())); }

    LONG AttachedTo() const { return Get(icons_.get(), L"hWnd").value.lVal; }

    Menu menu_ = FullMenu();
    HMENU menu = menu_.get();
};

TEST_F(IconMenu, DrawsItemsOnlyWhileTheyAreShownAndKeepsThemAsTheyWere) {
    const GdiObject bitmap(NewBitmap(kRed, 10, 10));
    menu_ = FullMenu(static_cast<HBITMAP>(bitmap.get()));
    menu = menu_.get();
    SetMenuItemBitmaps(menu, kRadio, MF_BYPOSITION, nullptr, static_cast<HBITMAP>(bitmap.get()));
    SetMenuItemBitmaps(menu, kLong, MF_BYPOSITION, static_cast<HBITMAP>(bitmap.get()), nullptr);
    const std::set<UINT> clientsOwn{kOwn, kBitmap, kRadio, kLong};
    const auto before = ItemsOf(menu);
    const std::function<void()> ends[] = {[this] { Close(); }, [this] { icons_->Detach(); },
                                          [this] { icons_ = nullptr, window_.Destroy(); }};
    for (const auto& end : ends) {
        Open(menu);
        const auto shown = ItemsOf(menu);
        for (UINT position = 0; position < kPositions; ++position) {
            const bool clients = clientsOwn.contains(position);
            EXPECT_EQ(before[position].type | (clients ? 0 : MFT_OWNERDRAW), shown[position].type) << position;
            EXPECT_EQ(clients, before[position].data == shown[position].data) << position;
            EXPECT_EQ(before[position].text, shown[position].text) << position;
            EXPECT_EQ(before[position].state, shown[position].state) << position;
        }
        EXPECT_FALSE(IsOwnerDrawn(before[kMore].submenu, 0)) << "it was not opened";
        Open(before[kMore].submenu);
        Open(menu);  // again in the same loop
        EXPECT_TRUE(IsOwnerDrawn(before[kMore].submenu, 0));
        EXPECT_FALSE(CanUnload());
        end();
        EXPECT_EQ(before, ItemsOf(menu));
        EXPECT_FALSE(IsOwnerDrawn(before[kMore].submenu, 0));
        if (icons_) Attach(window_.get());
    }
    EXPECT_TRUE(CanUnload()) << "it lives as long as it is attached";
}

TEST_F(IconMenu, LeavesOtherMenusToTheSystem) {
    const auto before = ItemsOf(menu);
    Open(nullptr);
    SendMessageW(window_.get(), WM_INITMENUPOPUP, reinterpret_cast<WPARAM>(menu), MAKELPARAM(0, TRUE));
    EXPECT_EQ(before, ItemsOf(menu)) << "a system menu";
    Open(reinterpret_cast<HMENU>(0x12345));
    ModifyMenuW(menu, kSave, MF_BYPOSITION | MFT_RIGHTORDER, CommandAt(kSave), L"right to left");
    const auto rightToLeft = ItemsOf(menu);
    Open(menu);
    EXPECT_EQ(rightToLeft, ItemsOf(menu));
    Close();
    const Menu other = FullMenu();
    SetWindowLongPtrW(window_.get(), GWL_EXSTYLE, WS_EX_LAYOUTRTL);
    Open(other.get());
    EXPECT_FALSE(IsOwnerDrawn(other.get(), kOpen));
}

TEST_F(IconMenu, GivesBackTheMenusOfALoopInsideAnother) {
    const Menu inner = FullMenu();
    for (const HMENU opened : {menu, inner.get()}) OpenIn(window_.get(), opened);
    for (const bool isOpen : {true, false}) {
        EXPECT_EQ(isOpen, IsOwnerDrawn(inner.get(), kOpen));
        EXPECT_TRUE(IsOwnerDrawn(menu, kOpen));
        Close();
    }
    EXPECT_FALSE(IsOwnerDrawn(menu, kOpen));
    OpenIn(window_.get(), menu);
    icons_->Detach();
    Attach(window_.get());
    OpenIn(window_.get(), menu, false);
    EXPECT_FALSE(IsOwnerDrawn(menu, kOpen)) << "the loop went with the window";
}

// The platform announces a menu to the window, too, when an accelerator for one of its commands is pressed: no loop
// ends.
TEST_F(IconMenu, LeavesMenusAloneThatAreAnnouncedAndNotShown) {
    const HMENU bar = CreateMenu();
    AppendMenuW(bar, MF_POPUP, reinterpret_cast<UINT_PTR>(menu), L"&File");
    SetMenu(window_.get(), bar);
    bool announced = false;
    window_.handler = [&](HWND, UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
        announced |= message == WM_INITMENUPOPUP;
        return std::nullopt;
    };
    const auto before = ItemsOf(menu);
    ACCEL key{FVIRTKEY, VK_F7, CommandAt(kOpen)};
    const HACCEL accelerators = CreateAcceleratorTableW(&key, 1);
    MSG pressed{window_.get(), WM_KEYDOWN, VK_F7, 1, 0, {}};
    EXPECT_NE(0, TranslateAcceleratorW(window_.get(), accelerators, &pressed));
    EXPECT_TRUE(announced);
    EXPECT_EQ(before, ItemsOf(menu));
    DestroyAcceleratorTable(accelerators);
    RemoveMenu(bar, 0, MF_BYPOSITION);
    window_.handler = nullptr;
}

// What a client does to an open menu has the same effect as on one that nobody draws.
TEST_F(IconMenu, KeepsWhatTheClientChangesMeanwhile) {
    const std::function<void(HMENU)> changes[] = {
        [](HMENU to) { EnableMenuItem(to, kOpen, MF_BYPOSITION | MF_GRAYED); },
        [](HMENU to) { CheckMenuItem(to, kChecked, MF_BYPOSITION | MF_UNCHECKED); },
        [](HMENU to) { InsertMenuW(to, 0, MF_BYPOSITION, 500, L"New first"); },
        [](HMENU to) { InsertMenuW(to, 2, MF_BYPOSITION | MF_OWNERDRAW, 501, nullptr); },
        [](HMENU to) { DeleteMenu(to, kSave, MF_BYPOSITION); },
        [](HMENU to) { SetData(to, kDefault, 77); },
        [](HMENU to) {
            MENUITEMINFOW info = InfoOf(MIIM_FTYPE);
            info.fType = MFT_MENUBREAK;
            SetMenuItemInfoW(to, kOpen, TRUE, &info);
        },
        [](HMENU to) { AppendMenuW(to, MF_SEPARATOR, 0, nullptr); },
        [](HMENU to) { DeleteMenu(to, kLine, MF_BYPOSITION); },  // another separator is the client's own to draw
        [](HMENU to) {
            while (DeleteMenu(to, 0, MF_BYPOSITION))
                ;
        },
        [](HMENU to) {
            MENUITEMINFOW info = InfoOf(MIIM_STRING | MIIM_ID, const_cast<LPWSTR>(L"Renamed"));
            info.wID = 900;
            SetMenuItemInfoW(to, kSave, TRUE, &info);
        },
    };
    for (const auto& change : changes) {
        const Menu drawn = FullMenu(), left = FullMenu();
        for (const HMENU each : {drawn.get(), left.get()}) {
            AppendMenuW(each, MF_SEPARATOR | MF_OWNERDRAW, 0, reinterpret_cast<LPCWSTR>(4712));
        }
        const HMENU more = ItemsOf(drawn.get())[kMore].submenu, leftMore = ItemsOf(left.get())[kMore].submenu;
        Open(drawn.get());
        change(drawn.get());
        Close();
        change(left.get());
        auto expected = ItemsOf(left.get());
        for (ItemOfMenu& item : expected) {
            if (item.submenu == leftMore) item.submenu = more;
            if (item.id == static_cast<UINT>(HandleOf(leftMore))) item.id = static_cast<UINT>(HandleOf(more));
        }
        EXPECT_EQ(expected, ItemsOf(drawn.get())) << &change - changes;
    }
}

TEST_F(IconMenu, LetsTheWindowSeeItsMessages) {
    int seen = 0;
    bool drawnBefore = true;
    window_.handler = [&](HWND, UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
        ++seen;
        if (message == WM_INITMENUPOPUP) drawnBefore = IsOwnerDrawn(menu, kOpen);
        return 4711;
    };
    const auto expect = [&](LRESULT answer, UINT message, WPARAM wParam, const void* lParam) {
        seen = 0;
        EXPECT_EQ(answer, SendMessageW(window_.get(), message, wParam, reinterpret_cast<LPARAM>(lParam))) << message;
        EXPECT_EQ(answer == 4711, seen == 1) << message;
    };
    expect(4711, WM_ENTERMENULOOP, 0, nullptr);
    expect(4711, WM_INITMENUPOPUP, reinterpret_cast<WPARAM>(menu), nullptr);
    EXPECT_FALSE(drawnBefore) << "the window goes first, so that its changes are drawn too";
    expect(4711, WM_SETTINGCHANGE, 0, nullptr);
    MEASUREITEMSTRUCT measured{ODT_MENU, 0, CommandAt(kOpen), 1, 2, ItemsOf(menu)[kOpen].data};
    expect(TRUE, WM_MEASUREITEM, 0, &measured);
    EXPECT_GT(measured.itemWidth, 1u);
    for (const auto& [type, data] : {std::pair<UINT, ULONG_PTR>{ODT_MENU, 4711}, {ODT_BUTTON, measured.itemData}}) {
        MEASUREITEMSTRUCT foreign{type, 0, 1, 1, 2, data};
        expect(4711, WM_MEASUREITEM, 0, &foreign);
        EXPECT_EQ(1u, foreign.itemWidth);
        const DRAWITEMSTRUCT drawn{type, 0, 0, 0, 0, nullptr, nullptr, {}, data};
        expect(4711, WM_DRAWITEM, 0, &drawn);
    }
    expect(4711, WM_MEASUREITEM, 0, nullptr);
    expect(4711, WM_DRAWITEM, 0, nullptr);
    expect(4711, WM_MENUCHAR, MAKEWPARAM(L'#', MF_POPUP), menu);
    const DRAWITEMSTRUCT gone{ODT_MENU, 0, 0, 0, 0, nullptr, nullptr, {}, ItemsOf(menu)[kSave].data};
    DeleteMenu(menu, kSave, MF_BYPOSITION);
    expect(TRUE, WM_DRAWITEM, 0, &gone);  // its data mean nothing to the window
    expect(4711, WM_EXITMENULOOP, 0, nullptr);
    expect(4711, WM_MEASUREITEM, 0, &measured);
    expect(4711, WM_MENUCHAR, MAKEWPARAM(L'o', MF_POPUP), menu);
    expect(4711, WM_DESTROY, 0, nullptr);
    EXPECT_EQ(0, AttachedTo());
    window_.handler = nullptr;
}

TEST_F(IconMenu, FindsItemsByTheirKeys) {
    Open(menu);
    const auto key = [&](wchar_t pressed) {
        return SendMessageW(window_.get(), WM_MENUCHAR, MAKEWPARAM(pressed, MF_POPUP), reinterpret_cast<LPARAM>(menu));
    };
    for (const auto& [pressed, position] : {std::pair{L'o', kOpen},
                                            {L'O', kOpen},
                                            {L'k', kChecked},
                                            {L'm', kMore},
                                            {L'X', kLong},
                                            {L'\u0161', kSave}}) {  // two by their first letter
        EXPECT_EQ(MAKELRESULT(position, MNC_EXECUTE), key(pressed)) << int{pressed};
    }
    MENUITEMINFOW own = InfoOf(MIIM_STRING, const_cast<LPWSTR>(L"&Zoom"));
    SetMenuItemInfoW(menu, kOwn, TRUE, &own);
    for (const wchar_t none : {L'z', L'#'}) EXPECT_EQ(0, HIWORD(key(none))) << "the client's own item is the client's";
    Close();
    AppendMenuW(menu, MF_STRING, 600, L"&Other");
    Open(menu);
    EXPECT_EQ(MAKELRESULT(kOpen, MNC_SELECT), key(L'o'));
    EXPECT_EQ(0, HIWORD(key(L'c'))) << "the first letter of an item that has another mnemonic";
    MENUITEMINFOW lit = InfoOf(MIIM_STATE);
    lit.fState = MFS_HILITE;
    SetMenuItemInfoW(menu, kOpen, TRUE, &lit);
    EXPECT_EQ(MAKELRESULT(GetMenuItemCount(menu) - 1, MNC_SELECT), key(L'o')) << "the next one";
    icons_->Detach();
    SetWindowLongPtrA(window_.get(), GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&DefWindowProcA));
    Attach(window_.get());
    Open(menu);
    const WPARAM narrow = MAKEWPARAM(0x9A, MF_POPUP);  // in the Western code page
    EXPECT_EQ(MAKELRESULT(kSave, MNC_EXECUTE),
              SendMessageA(window_.get(), WM_MENUCHAR, narrow, reinterpret_cast<LPARAM>(menu)));
}

TEST_F(IconMenu, MovesFromWindowToWindowOfThisThread) {
    for (const LONG handle : {0L, 1L, -1L, window_.handle() & 0xFFFF, HandleToLong(GetDesktopWindow())}) {
        const Outcome refused = Call(icons_.get(), L"Attach", {Arg(handle)});
        EXPECT_EQ(RunTime(5), refused.code) << handle;
        EXPECT_EQ(L"Invalid procedure call or argument", refused.description);
        EXPECT_EQ(window_.handle(), AttachedTo());
    }
    TestWindow other;
    EXPECT_EQ(S_OK, Attach(window_.get()));
    Open(menu);
    EXPECT_EQ(S_OK, Attach(other.get()));
    EXPECT_EQ(other.handle(), AttachedTo());
    Open(menu);
    EXPECT_FALSE(IsOwnerDrawn(menu, kOpen)) << "the first window's menus are the system's again";
    OpenIn(other.get(), menu);
    EXPECT_TRUE(IsOwnerDrawn(menu, kOpen));
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(S_OK, icons_->Detach());
        EXPECT_FALSE(IsOwnerDrawn(menu, kOpen));
        EXPECT_EQ(0, AttachedTo());
    }
}

TEST_F(IconMenu, SharesAMenuWithAnother) {
    const auto second = CreateObject<_cIconMenu>(__uuidof(::cIconMenu));
    TestWindow other;
    const auto before = ItemsOf(menu);
    for (const HWND window : {other.get(), window_.get()}) {  // in another window, and both in the same one
        ASSERT_EQ(S_OK, second->Attach(HandleToLong(window)));
        Open(menu);
        OpenIn(window, menu);
        EXPECT_TRUE(IsOwnerDrawn(menu, kOpen));
        SendMessageW(window, WM_EXITMENULOOP, 0, 0);
        Close();
        EXPECT_EQ(before, ItemsOf(menu));
    }
}

TEST_F(IconMenu, SurvivesAMenuThatGoesWhileItIsOpen) {
    Open(menu);
    menu_ = Menu();
    const Menu next = FullMenu();  // perhaps with the same handle
    const auto before = ItemsOf(next.get());
    Close();
    EXPECT_EQ(before, ItemsOf(next.get()));
}

// A handle may come back with another menu.
TEST_F(IconMenu, ForgetsTheIconsOfMenusThatAreGone) {
    const auto picture = PictureOf(NewBitmap(kRed, 4, 4));
    const auto references = [&] { return picture->AddRef(), picture->Release(); };
    const ULONG before = references();
    const std::function<void()> ends[] = {[this] { Close(); }, [this] { icons_->Detach(); }};
    for (const auto& end : ends) {
        const HMENU submenu = CreatePopupMenu();
        EXPECT_EQ(S_OK, icons_->putref_SubmenuPicture(HandleOf(submenu), picture.get()));
        EXPECT_LT(before, references());
        DestroyMenu(submenu);
        end();
        EXPECT_EQ(before, references());
    }
}

TEST(IconMenuAlone, NeedsTheHookLibrary) {
    const NoHookLibrary none;
    TestWindow window;
    const auto icons = CreateObject<IDispatch>(__uuidof(::cIconMenu));
    EXPECT_EQ(RunTime(429), Call(icons.get(), L"Attach", {Arg(window.handle())}).code);
    EXPECT_EQ(0, Get(icons.get(), L"hWnd").value.lVal);
    EXPECT_EQ(S_OK, Call(icons.get(), L"Detach").result);
}

// Memory that runs out once.
bool refused;
void*(__cdecl* allocate)(std::size_t);
void* __cdecl RefuseOnce(std::size_t size) { return std::exchange(refused, true) ? allocate(size) : nullptr; }

TEST_F(IconMenu, LeavesAMenuToTheSystemWhenMemoryRunsOut) {
    const ReportRecorder recorder(Library());
    Open(nullptr);
    {
        const ImportPatch patch(Library(), "malloc", reinterpret_cast<void*>(&RefuseOnce));
        allocate = patch.Original<decltype(allocate)>();
        Open(menu);
    }
    EXPECT_TRUE(refused);
    EXPECT_FALSE(IsOwnerDrawn(menu, kOpen));
    EXPECT_TRUE(recorder.reports().empty()) << "no box in the middle of a message";
    Open(menu);
    EXPECT_TRUE(IsOwnerDrawn(menu, kOpen));
}

// A real menu loop. Does one step each time that it waits for input; then closes it.
class ShownMenu : public IconMenu {
  protected:
    UINT Show(const std::vector<std::function<void()>>& steps) {
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
        PumpMessages();
        return static_cast<UINT>(command);
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

TEST_F(ShownMenu, WorksFromTheKeyboardAndMayLoseItsIconsOrItsWindow) {
    EXPECT_EQ(CommandAt(kOpen), Show({Press('O')}));
    EXPECT_EQ(300u, Show({Press('M'), Press('I')}));
    EXPECT_EQ(Departs("TrackPopupMenu"), (ItemsOf(menu)[kMore].state & MFS_HILITE) != 0);
    EXPECT_EQ(CommandAt(kSave), Show({Press(VK_DOWN), Press(VK_DOWN), Press(VK_RETURN)}));
    EXPECT_EQ(before, Unlit());
    Show({[&] { icons_->Detach(); }, Press(VK_DOWN)});
    EXPECT_EQ(before, Unlit());
    bool drawn = false;
    const HMENU more = before[kMore].submenu;
    Show({[&] { Attach(window_.get()); }, Press('M'), [&] { drawn = IsOwnerDrawn(more, 0); }});
    EXPECT_TRUE(drawn) << "attached in the middle of a loop";
    EXPECT_FALSE(IsOwnerDrawn(more, 0));
    Show({[&] { icons_->ClearIcons(); }, [&] { window_.Destroy(), EndMenu(); }});
    EXPECT_EQ(before, Unlit());
    EXPECT_EQ(0, AttachedTo());
}

TEST_F(ShownMenu, LeavesNoDrawingObjectsAfterAThousandOpenings) {
    for (int i = 0; i < 3; ++i) Show({Press(VK_DOWN)});
    const int objects = GdiObjects();
    for (int i = 0; i < 1000; ++i) Show({Press(VK_DOWN)});
    EXPECT_EQ(objects, GdiObjects());
    icons_->Detach();
    icons_ = nullptr;
    EXPECT_LT(GdiObjects(), objects);
}

}  // namespace
}  // namespace velk::test
