// cIconMenu as its clients see it: what happens to their menus and windows, and what it refuses.
#include <optional>

#include "support/fake.h"
#include "support/report_recorder.h"
#include "support/scarce_memory.h"
#include "winhelpers/menu_fixture.h"

namespace velk::test {
namespace {

class IconMenu : public IconMenuTest {
  protected:
    IconMenu() { EXPECT_EQ(S_OK, Attach(window_.get())); }
};

TEST_F(IconMenu, DrawsItemsOnlyWhileTheyAreShownAndKeepsThemAsTheyWere) {
    const GdiObject bitmap(NewBitmap(kRed, 10, 10));
    const auto handle = static_cast<HBITMAP>(bitmap.get());
    Replace(FullMenu(handle));
    SetMenuItemBitmaps(menu, kRadio, MF_BYPOSITION, nullptr, handle);
    SetMenuItemBitmaps(menu, kLong, MF_BYPOSITION, handle, nullptr);
    const auto before = ItemsOf(menu);
    const HMENU more = before[kMore].submenu;
    const std::function<void()> ends[] = {[this] { Close(); }, [this] { icons_->Detach(); },
                                          [this] { icons_ = nullptr, window_.Destroy(); }};
    for (const auto& end : ends) {
        Open(menu);
        EXPECT_EQ("dddd.ddd...", Drawn(menu)) << "what has a bitmap, or is the client's to draw, stays so";
        auto shown = ItemsOf(menu);
        for (UINT i = 0; i < kPositions; ++i) {
            if (i == kOwn || Drawn(menu)[i] == '.') continue;
            EXPECT_NE(before[i].data, std::exchange(shown[i].data, before[i].data));
            shown[i].type &= ~UINT{MFT_OWNERDRAW};
        }
        EXPECT_EQ(before, shown);
        EXPECT_EQ(".", Drawn(more)) << "it was not opened";
        Open(more);
        Open(menu);  // again in the same loop
        EXPECT_EQ("d", Drawn(more));
        EXPECT_FALSE(CanUnload());
        end();
        EXPECT_EQ(before, ItemsOf(menu));
        EXPECT_EQ(".", Drawn(more));
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
    Replace(FullMenu());
    SetWindowLongPtrW(window_.get(), GWL_EXSTYLE, WS_EX_LAYOUTRTL);
    Open(menu);
    EXPECT_EQ("...........", Drawn(menu));
}

TEST_F(IconMenu, GivesBackTheMenusOfALoopInsideAnother) {
    const Menu inner = FullMenu();
    for (const HMENU opened : {menu, inner.get()}) OpenIn(window_.get(), opened);
    Close();
    EXPECT_EQ("...........", Drawn(inner.get()));
    EXPECT_EQ("dddddddd..d", Drawn(menu));
    Close();
    EXPECT_EQ("...........", Drawn(menu));
    OpenIn(window_.get(), menu);
    icons_->Detach();
    Attach(window_.get());
    OpenIn(window_.get(), menu, false);
    EXPECT_EQ("...........", Drawn(menu)) << "the loop went with the window";
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
    ACCEL key{FVIRTKEY, VK_F7, CommandAt(kOpen)};
    const HACCEL accelerators = CreateAcceleratorTableW(&key, 1);
    MSG pressed{window_.get(), WM_KEYDOWN, VK_F7, 1, 0, {}};
    EXPECT_NE(0, TranslateAcceleratorW(window_.get(), accelerators, &pressed));
    EXPECT_TRUE(announced);
    EXPECT_EQ("...........", Drawn(menu));
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
        [](HMENU to) { Change(to, kOpen, InfoOf(MIIM_FTYPE)); },
        [](HMENU to) { AppendMenuW(to, MF_SEPARATOR, 0, nullptr); },
        [](HMENU to) { DeleteMenu(to, kLine, MF_BYPOSITION); },  // another separator is the client's own to draw
        [](HMENU to) {
            while (DeleteMenu(to, 0, MF_BYPOSITION))
                ;
        },
        [](HMENU to) {
            MENUITEMINFOW info = InfoOf(MIIM_STRING | MIIM_ID, L"Renamed");
            info.wID = 900;
            Change(to, kSave, info);
        },
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
    const auto expect = [&](LRESULT answer, UINT message, WPARAM wParam = 0, const void* lParam = nullptr) {
        seen = 0;
        EXPECT_EQ(answer, SendMessageW(window_.get(), message, wParam, reinterpret_cast<LPARAM>(lParam))) << message;
        EXPECT_EQ(answer == 4711, seen == 1) << message;
    };
    expect(4711, WM_ENTERMENULOOP);
    expect(4711, WM_INITMENUPOPUP, reinterpret_cast<WPARAM>(menu));
    EXPECT_EQ("...........", drawnBefore) << "the window goes first, so that its changes are drawn too";
    expect(4711, WM_SETTINGCHANGE);
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
    expect(4711, WM_MEASUREITEM);
    expect(4711, WM_DRAWITEM);
    expect(4711, WM_MENUCHAR, MAKEWPARAM(L'#', MF_POPUP), menu);
    const DRAWITEMSTRUCT gone{ODT_MENU, 0, 0, 0, 0, nullptr, nullptr, {}, ItemsOf(menu)[kSave].data};
    DeleteMenu(menu, kSave, MF_BYPOSITION);
    expect(TRUE, WM_DRAWITEM, 0, &gone);  // its data mean nothing to the window
    expect(4711, WM_EXITMENULOOP);
    expect(4711, WM_MEASUREITEM, 0, &measured);
    expect(4711, WM_MENUCHAR, MAKEWPARAM(L'o', MF_POPUP), menu);
    expect(4711, WM_DESTROY);
    EXPECT_EQ(0, AttachedTo());
    window_.handler = nullptr;
}

TEST_F(IconMenu, FindsItemsByWhatIsTheirsAlone) {
    Open(menu);
    const auto key = [&](wchar_t pressed) {
        return SendMessageW(window_.get(), WM_MENUCHAR, MAKEWPARAM(pressed, MF_POPUP), reinterpret_cast<LPARAM>(menu));
    };
    Rename(menu, kOwn, L"&Zoom");
    for (const wchar_t none : {L'z', L'#'}) EXPECT_EQ(0, HIWORD(key(none))) << "the client's own item is the client's";
    Close();
    AppendMenuW(menu, MF_STRING, 600, L"&Other");
    Open(menu);
    EXPECT_EQ(MAKELRESULT(kOpen, MNC_SELECT), key(L'o'));
    EXPECT_EQ(0, HIWORD(key(L'c'))) << "the first letter of an item that has another mnemonic";
    MENUITEMINFOW lit = InfoOf(MIIM_STATE);
    lit.fState = MFS_HILITE;
    Change(menu, kOpen, lit);
    EXPECT_EQ(MAKELRESULT(kPositions, MNC_SELECT), key(L'o')) << "the next one";
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
        EXPECT_EQ(window_.handle(), AttachedTo());
    }
    TestWindow other;
    EXPECT_EQ(S_OK, Attach(window_.get()));
    Open(menu);
    EXPECT_EQ(S_OK, Attach(other.get()));
    EXPECT_EQ(other.handle(), AttachedTo());
    Open(menu);
    EXPECT_EQ("...........", Drawn(menu)) << "the first window's menus are the system's again";
    OpenIn(other.get(), menu);
    EXPECT_EQ("dddddddd..d", Drawn(menu));
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(S_OK, icons_->Detach());
        EXPECT_EQ("...........", Drawn(menu));
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
        EXPECT_EQ("dddddddd..d", Drawn(menu));
        SendMessageW(window, WM_EXITMENULOOP, 0, 0);
        Close();
        EXPECT_EQ(before, ItemsOf(menu));
    }
}

// A handle may come back with another menu.
TEST_F(IconMenu, ForgetsMenusThatAreGoneAndTheirIcons) {
    Open(menu);
    Replace(Menu());
    Replace(FullMenu());
    Close();
    EXPECT_EQ("...........", Drawn(menu));
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
    const Fake none("CoCreateInstance", &CoCreateInstance, [](auto&&...) { return REGDB_E_CLASSNOTREG; });
    TestWindow window;
    const auto icons = CreateObject<IDispatch>(__uuidof(::cIconMenu));
    EXPECT_EQ(RunTime(429), Call(icons.get(), L"Attach", {Arg(window.handle())}).code);
    EXPECT_EQ(0, Get(icons.get(), L"hWnd").value.lVal);
    EXPECT_EQ(S_OK, Call(icons.get(), L"Detach").result);
}

TEST_F(IconMenu, LeavesAMenuToTheSystemWhenMemoryRunsOut) {
    const ReportRecorder recorder(Library());
    Open(nullptr);
    {
        const ScarceMemory none(0, SIZE_MAX);
        Open(menu);
    }
    EXPECT_EQ("...........", Drawn(menu));
    EXPECT_TRUE(recorder.reports().empty()) << "no box in the middle of a message";
    Open(menu);
    EXPECT_EQ("dddddddd..d", Drawn(menu));
}

}  // namespace
}  // namespace velk::test
