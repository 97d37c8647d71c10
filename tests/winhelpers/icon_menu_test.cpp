// cIconMenu as its clients see it: what happens to their menus and windows, and what it refuses.
#include <memory>
#include <optional>
#include <thread>

#include "support/gdi_objects.h"
#include "support/import_patch.h"
#include "support/report_recorder.h"
#include "winhelpers/menu_fixture.h"

namespace velk::test {
namespace {

constexpr HRESULT RunTime(int number) { return static_cast<HRESULT>(0x800A0000) + number; }

class IconMenu : public IconMenuTest {
  protected:
    IconMenu() { EXPECT_EQ(S_OK, Attach(window_.get())); }

    LONG AttachedTo() const {
        LONG window = -1;
        EXPECT_EQ(S_OK, icons_->get_hWnd(&window));
        return window;
    }
    LRESULT Key(HMENU menu, wchar_t key) const {
        return SendMessageW(window_.get(), WM_MENUCHAR, MAKEWPARAM(key, MF_POPUP), reinterpret_cast<LPARAM>(menu));
    }
};

TEST_F(IconMenu, DrawsItemsOnlyWhileTheyAreShownAndKeepsThemAsTheyWere) {
    const ScreenContext screen(GetDC(nullptr));
    const GdiObject bitmap(CreateCompatibleBitmap(screen.get(), 10, 10));
    const Menu menu = FullMenu(static_cast<HBITMAP>(bitmap.get()));
    const auto before = ItemsOf(menu.get());
    const std::function<void()> ends[] = {[this] { Close(); }, [this] { icons_->Detach(); },
                                          [this] { icons_ = nullptr, window_.Destroy(); }};
    for (const auto& end : ends) {
        Open(menu.get());
        const auto shown = ItemsOf(menu.get());
        for (UINT position = 0; position < kPositions; ++position) {
            const bool clients = position == kOwn || position == kBitmap;
            EXPECT_EQ(before[position].type | (clients ? 0 : MFT_OWNERDRAW), shown[position].type) << position;
            EXPECT_EQ(clients, before[position].data == shown[position].data) << position;
            EXPECT_EQ(before[position].text, shown[position].text) << position;
            EXPECT_EQ(before[position].state, shown[position].state) << position;
        }
        EXPECT_FALSE(IsOwnerDrawn(before[kMore].submenu, 0)) << "it was not opened";
        Open(before[kMore].submenu);
        Open(menu.get());  // again in the same loop
        EXPECT_TRUE(IsOwnerDrawn(before[kMore].submenu, 0));
        end();
        EXPECT_EQ(before, ItemsOf(menu.get()));
        EXPECT_FALSE(IsOwnerDrawn(before[kMore].submenu, 0));
        if (icons_) Attach(window_.get());
    }
}

TEST_F(IconMenu, LeavesOtherMenusToTheSystem) {
    const Menu menu = FullMenu();
    const auto before = ItemsOf(menu.get());
    SendMessageW(window_.get(), WM_INITMENUPOPUP, reinterpret_cast<WPARAM>(menu.get()), MAKELPARAM(0, TRUE));
    EXPECT_EQ(before, ItemsOf(menu.get())) << "a system menu";
    Open(nullptr);
    Open(reinterpret_cast<HMENU>(0x12345));
    ModifyMenuW(menu.get(), kSave, MF_BYPOSITION | MFT_RIGHTORDER, CommandAt(kSave), L"right to left");
    const auto rightToLeft = ItemsOf(menu.get());
    Open(menu.get());
    EXPECT_EQ(rightToLeft, ItemsOf(menu.get()));
    Close();
    const Menu other = FullMenu();
    SetWindowLongPtrW(window_.get(), GWL_EXSTYLE, WS_EX_LAYOUTRTL);
    Open(other.get());
    EXPECT_FALSE(IsOwnerDrawn(other.get(), kOpen));
}

// What a client does to an open menu has the same effect as on one that nobody draws.
TEST_F(IconMenu, KeepsWhatTheClientChangesMeanwhile) {
    const std::function<void(HMENU)> changes[] = {
        [](HMENU menu) { EnableMenuItem(menu, kOpen, MF_BYPOSITION | MF_GRAYED); },
        [](HMENU menu) { CheckMenuItem(menu, kChecked, MF_BYPOSITION | MF_UNCHECKED); },
        [](HMENU menu) { InsertMenuW(menu, 0, MF_BYPOSITION, 500, L"New first"); },
        [](HMENU menu) { InsertMenuW(menu, 2, MF_BYPOSITION | MF_OWNERDRAW, 501, nullptr); },
        [](HMENU menu) { DeleteMenu(menu, kSave, MF_BYPOSITION); },
        [](HMENU menu) { SetData(menu, kDefault, 77); },
        [](HMENU menu) { AppendMenuW(menu, MF_SEPARATOR, 0, nullptr); },
        [](HMENU menu) {
            while (DeleteMenu(menu, 0, MF_BYPOSITION)) {
            }
        },
        [](HMENU menu) {
            MENUITEMINFOW info{};
            info.cbSize = sizeof info;
            info.fMask = MIIM_STRING | MIIM_ID;
            info.wID = 900;
            info.dwTypeData = const_cast<LPWSTR>(L"Renamed");
            SetMenuItemInfoW(menu, kSave, TRUE, &info);
        },
    };
    for (const auto& change : changes) {
        const Menu drawn = FullMenu(), left = FullMenu();
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
    std::vector<UINT> seen;
    bool drawnBefore = true;
    const Menu menu = FullMenu();
    window_.handler = [&](HWND, UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
        seen.push_back(message);
        if (message == WM_INITMENUPOPUP) drawnBefore = IsOwnerDrawn(menu.get(), kOpen);
        return message == WM_DRAWITEM || message == WM_MEASUREITEM || message == WM_MENUCHAR ? 4711 : 12;
    };
    const auto send = [&](UINT message, WPARAM wParam, LPARAM lParam) {
        seen.clear();
        const LRESULT result = SendMessageW(window_.get(), message, wParam, lParam);
        return std::pair{result, seen.size()};
    };
    using Answer = std::pair<LRESULT, std::size_t>;
    EXPECT_EQ((Answer{12, 1}), send(WM_INITMENUPOPUP, reinterpret_cast<WPARAM>(menu.get()), 0));
    EXPECT_FALSE(drawnBefore) << "the window goes first, so that its changes are drawn too";
    EXPECT_EQ((Answer{12, 1}), send(WM_SETTINGCHANGE, 0, 0));

    MEASUREITEMSTRUCT measured{ODT_MENU, 0, CommandAt(kOpen), 1, 2, ItemsOf(menu.get())[kOpen].data};
    EXPECT_EQ((Answer{TRUE, 0}), send(WM_MEASUREITEM, 0, reinterpret_cast<LPARAM>(&measured)));
    EXPECT_GT(measured.itemWidth, 1u);
    for (const auto& [type, data] : {std::pair<UINT, ULONG_PTR>{ODT_MENU, 4711}, {ODT_BUTTON, measured.itemData}}) {
        MEASUREITEMSTRUCT foreign{type, 0, 1, 1, 2, data};
        EXPECT_EQ((Answer{4711, 1}), send(WM_MEASUREITEM, 0, reinterpret_cast<LPARAM>(&foreign)));
        EXPECT_EQ(1u, foreign.itemWidth);
        DRAWITEMSTRUCT drawn{};
        drawn.CtlType = type;
        drawn.itemData = data;
        EXPECT_EQ((Answer{4711, 1}), send(WM_DRAWITEM, 0, reinterpret_cast<LPARAM>(&drawn)));
    }
    EXPECT_EQ((Answer{4711, 1}), send(WM_MEASUREITEM, 0, 0));
    EXPECT_EQ((Answer{4711, 1}), send(WM_DRAWITEM, 0, 0));
    EXPECT_EQ((Answer{4711, 1}), send(WM_MENUCHAR, MAKEWPARAM(L'#', MF_POPUP), reinterpret_cast<LPARAM>(menu.get())));
    EXPECT_EQ((Answer{12, 1}), send(WM_EXITMENULOOP, 0, 0));
    EXPECT_EQ((Answer{4711, 1}), send(WM_MEASUREITEM, 0, reinterpret_cast<LPARAM>(&measured))) << "closed";
    window_.handler = nullptr;
}

TEST_F(IconMenu, FindsItemsByTheirKeys) {
    const Menu menu = FullMenu();
    EXPECT_EQ(0, HIWORD(Key(menu.get(), L'o'))) << "closed";
    Open(menu.get());
    const auto execute = [](UINT position) { return MAKELRESULT(position, MNC_EXECUTE); };
    EXPECT_EQ(execute(kOpen), Key(menu.get(), L'o'));
    EXPECT_EQ(execute(kOpen), Key(menu.get(), L'O'));
    EXPECT_EQ(execute(kChecked), Key(menu.get(), L'k'));
    EXPECT_EQ(execute(kMore), Key(menu.get(), L'm'));
    EXPECT_EQ(execute(kLong), Key(menu.get(), L'X')) << "by its first letter";
    EXPECT_EQ(execute(kSave), Key(menu.get(), L'\u0161'));
    AppendMenuW(menu.get(), MF_STRING, 600, L"&Other");
    EXPECT_EQ(MAKELRESULT(kOpen, MNC_SELECT), Key(menu.get(), L'o'));
    EXPECT_EQ(0, HIWORD(Key(menu.get(), L'z')));
}

TEST_F(IconMenu, RefusesWhatIsNoWindowOfThisThread) {
    const LONG attached = window_.handle();
    const HANDLE made = CreateEventW(nullptr, TRUE, FALSE, nullptr), done = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    HWND foreign = nullptr;
    std::thread thread([&] {
        TestWindow other;
        foreign = other.get();
        SetEvent(made);
        WaitForSingleObject(done, INFINITE);
    });
    WaitForSingleObject(made, INFINITE);
    for (const LONG handle : {0L, 1L, -1L, HandleToLong(foreign), HandleToLong(GetDesktopWindow())}) {
        EXPECT_EQ(RunTime(5), icons_->Attach(handle)) << handle;
        EXPECT_EQ(attached, AttachedTo());
    }
    SetEvent(done);
    thread.join();
    CloseHandle(made);
    CloseHandle(done);
    const Outcome late = Call(icons_.As<IDispatch>().get(), L"Attach", {Arg(LONG{1})});
    EXPECT_EQ(RunTime(5), late.code);
    EXPECT_EQ(L"Invalid procedure call or argument", late.description);
}

TEST_F(IconMenu, MovesFromWindowToWindow) {
    const Menu menu = FullMenu();
    TestWindow other;
    EXPECT_EQ(S_OK, Attach(window_.get()));
    Open(menu.get());
    EXPECT_EQ(S_OK, Attach(other.get()));
    EXPECT_EQ(other.handle(), AttachedTo());
    EXPECT_FALSE(IsOwnerDrawn(menu.get(), kOpen));
    Open(menu.get());
    EXPECT_FALSE(IsOwnerDrawn(menu.get(), kOpen)) << "the first window's menus are the system's again";
    SendMessageW(other.get(), WM_INITMENUPOPUP, reinterpret_cast<WPARAM>(menu.get()), 0);
    EXPECT_TRUE(IsOwnerDrawn(menu.get(), kOpen));
    EXPECT_EQ(S_OK, icons_->Detach());
    EXPECT_FALSE(IsOwnerDrawn(menu.get(), kOpen));
    EXPECT_EQ(0, AttachedTo());
    EXPECT_EQ(S_OK, icons_->Detach());
}

TEST_F(IconMenu, SharesAMenuWithAnother) {
    const auto second = CreateObject<_cIconMenu>(__uuidof(::cIconMenu));
    TestWindow other;
    const Menu menu = FullMenu();
    const auto before = ItemsOf(menu.get());
    for (const HWND window : {other.get(), window_.get()}) {  // in another window, and both in the same one
        ASSERT_EQ(S_OK, second->Attach(HandleToLong(window)));
        Open(menu.get());
        const auto shown = ItemsOf(menu.get());
        SendMessageW(window, WM_INITMENUPOPUP, reinterpret_cast<WPARAM>(menu.get()), 0);
        EXPECT_TRUE(IsOwnerDrawn(menu.get(), kOpen));
        SendMessageW(window, WM_EXITMENULOOP, 0, 0);
        Close();
        EXPECT_EQ(before, ItemsOf(menu.get()));
    }
}

TEST_F(IconMenu, EndsWithItsWindow) {
    const Menu menu = FullMenu();
    const auto before = ItemsOf(menu.get());
    Open(menu.get());
    window_.Destroy();
    EXPECT_EQ(0, AttachedTo());
    EXPECT_EQ(before, ItemsOf(menu.get()));
    EXPECT_EQ(S_OK, icons_->Detach());
}

TEST_F(IconMenu, SurvivesAMenuThatGoesWhileItIsOpen) {
    Menu menu = FullMenu();
    Open(menu.get());
    menu = Menu();
    const Menu next = FullMenu();  // perhaps with the same handle
    const auto before = ItemsOf(next.get());
    Close();
    EXPECT_EQ(before, ItemsOf(next.get()));
}

TEST_F(IconMenu, LivesAsLongAsItIsAttached) {
    const Menu menu = FullMenu();
    EXPECT_FALSE(CanUnload());
    icons_ = nullptr;
    Open(menu.get());
    EXPECT_TRUE(IsOwnerDrawn(menu.get(), kOpen));
    window_.Destroy();
    EXPECT_FALSE(IsOwnerDrawn(menu.get(), kOpen));
    EXPECT_TRUE(CanUnload());
}

TEST_F(IconMenu, IsASubclassForTheHookLibrary) {
    const auto subclass = icons_.As<ISubclass>();
    ASSERT_TRUE(subclass);
    LONG response = -1;
    EXPECT_EQ(S_OK, subclass->get_MsgResponse(&response));
    EXPECT_EQ(0, response) << "no message is being dispatched";
    EXPECT_EQ(S_OK, subclass->put_MsgResponse(2));
    EXPECT_EQ(E_POINTER, subclass->get_MsgResponse(nullptr));
    EXPECT_EQ(icons_.As<IUnknown>().get(), subclass.As<IUnknown>().get());
}

TEST(IconMenuAlone, NeedsTheHookLibrary) {
    HookLibrary::Unregister();
    TestWindow window;
    const auto icons = CreateObject<_cIconMenu>(__uuidof(::cIconMenu));
    EXPECT_EQ(RunTime(429), icons->Attach(window.handle()));
    LONG attached = -1;
    EXPECT_EQ(S_OK, icons->get_hWnd(&attached));
    EXPECT_EQ(0, attached);
    EXPECT_EQ(S_OK, icons->Detach());
}

// Memory that runs out once.
bool refused;
void*(__cdecl* allocate)(std::size_t);
void* __cdecl RefuseOnce(std::size_t size) { return std::exchange(refused, true) ? allocate(size) : nullptr; }

TEST_F(IconMenu, ShowsWhatGoesWrongWhileAMenuOpens) {
    const Menu menu = FullMenu();
    const ReportRecorder recorder(Library());
    {
        const ImportPatch patch(Library(), "malloc", reinterpret_cast<void*>(&RefuseOnce));
        allocate = patch.Original<decltype(allocate)>();
        Open(menu.get());
    }
    EXPECT_TRUE(refused);
    ASSERT_EQ(1u, recorder.reports().size());
    EXPECT_EQ(0u, recorder.reports()[0].text.find(
                      L"An error has occured in VelkSupport.cIconMenu.WindowProc \r\n\r\nError:7\r\n"));
    EXPECT_FALSE(IsOwnerDrawn(menu.get(), kOpen));
    Open(menu.get());
    EXPECT_TRUE(IsOwnerDrawn(menu.get(), kOpen));
}

// ---- Real menu loops ----

// Shows a popup menu and does one step each time that it waits for input; then closes it.
class ShownMenu : public IconMenu {
  protected:
    using Steps = std::vector<std::function<void()>>;

    UINT Show(HMENU menu, Steps steps) {
        std::size_t next = 0;
        window_.handler = [&](HWND, UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
            if (message != WM_ENTERIDLE) return std::nullopt;
            if (next < steps.size()) {
                steps[next++]();
                PostThreadMessageW(GetCurrentThreadId(), WM_NULL, 0, 0);  // so that it waits once more
            } else {
                EndMenu();
            }
            return 0;
        };
        ShowWindow(window_.get(), SW_SHOW);
        const UINT flags = TPM_RETURNCMD | TPM_LEFTALIGN;
        const auto command = static_cast<UINT>(TrackPopupMenu(menu, flags, 5, 5, 0, window_.get(), nullptr));
        window_.handler = nullptr;
        PumpMessages();
        return command;
    }
    // Wine leaves the last highlight in a closed menu, whoever draws it.
    static std::vector<ItemOfMenu> Unlit(HMENU menu) {
        auto items = ItemsOf(menu);
        for (ItemOfMenu& item : items) item.state &= ~UINT{MFS_HILITE};
        return items;
    }
    void Press(UINT key) const { PostMessageW(window_.get(), WM_KEYDOWN, key, 1); }
};

TEST_F(ShownMenu, WorksFromTheKeyboard) {
    const Menu menu = FullMenu();
    const auto before = Unlit(menu.get());
    EXPECT_EQ(CommandAt(kOpen), Show(menu.get(), {[&] { Press('O'); }}));
    EXPECT_EQ(300u, Show(menu.get(), {[&] { Press('M'); }, [&] { Press('I'); }}));
    EXPECT_EQ(CommandAt(kSave),
              Show(menu.get(), {[&] { Press(VK_DOWN); }, [&] { Press(VK_DOWN); }, [&] { Press(VK_RETURN); }}));
    EXPECT_EQ(before, Unlit(menu.get()));
}

TEST_F(ShownMenu, MayLoseItsWindowOrItsIcons) {
    const Menu menu = FullMenu();
    const auto before = Unlit(menu.get());
    Show(menu.get(), {[&] { icons_->Detach(); }, [&] { Press(VK_DOWN); }});
    EXPECT_EQ(before, Unlit(menu.get()));
    Attach(window_.get());
    Show(menu.get(), {[&] { icons_->ClearIcons(); }, [&] { window_.Destroy(), EndMenu(); }});
    EXPECT_EQ(before, Unlit(menu.get()));
    EXPECT_EQ(0, AttachedTo());
}

TEST_F(ShownMenu, LeavesNoDrawingObjectsAfterAThousandOpenings) {
    const Menu menu = FullMenu();
    const auto openOnce = [&] { Show(menu.get(), {[&] { Press(VK_DOWN); }}); };
    for (int i = 0; i < 3; ++i) openOnce();
    const int before = GdiObjects();
    for (int i = 0; i < 1000; ++i) openOnce();
    EXPECT_EQ(before, GdiObjects());
    icons_->Detach();
    icons_ = nullptr;
    EXPECT_LT(GdiObjects(), before);
}

}  // namespace
}  // namespace velk::test
