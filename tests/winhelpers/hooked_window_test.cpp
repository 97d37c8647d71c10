// All classes that hook windows on one window: a list view that has a border to drag, and menus.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "winhelpers/hooked_fixture.h"
#include "winhelpers/test_bitmaps.h"

namespace velk::test {
namespace {

using Object = ComPtr<IDispatch>;

class HookedWindow : public testing::Test {
  protected:
    HookedWindow() { AppendMenuW(menu, MF_STRING, 1, L"&Item"); }
    ~HookedWindow() override { DestroyWindow(window), DestroyMenu(menu); }

    // n: no narrower than 250, x: no wider than 400, c: the columns fill the width, i: menus with icons.
    Object Attached(char what) const {
        const CLSID& clsid = what == 'c'   ? __uuidof(CListViewExtended)
                             : what == 'i' ? __uuidof(::cIconMenu)
                                           : __uuidof(CFormSizeConstraint);
        auto made = CreateObject<IDispatch>(clsid);
        const auto red = PictureOf(NewBitmap(kRed, 16, 16));
        const Outcome set = what == 'n'   ? Let(made.get(), L"MinWidth", {Arg(250L)})
                            : what == 'x' ? Let(made.get(), L"MaxWidth", {Arg(400L)})
                            : what == 'c' ? Let(made.get(), L"ResizeColumnsToFitWidth", {Arg(true)})
                                          : Let(made.get(), L"CommandPicture", {Arg(1L), Arg(red.get())});
        EXPECT_EQ(S_OK, set.result);
        const wchar_t* const attach = what == 'i' ? L"Attach" : L"Init";
        EXPECT_EQ(S_OK, Call(made.get(), attach, {Arg(HandleToLong(window))}).result) << what;
        return made;
    }
    std::map<char, Object> AllAttached() const {
        std::map<char, Object> all;
        for (const char what : {'c', 'i', 'n', 'x'}) all[what] = Attached(what);
        return all;
    }

    int Width(int asked) const {
        SetWindowPos(window, nullptr, 0, 0, asked, 200, SWP_NOZORDER | SWP_NOMOVE);
        RECT is{};
        GetWindowRect(window, &is);
        return is.right - is.left;
    }
    int ColumnsWidth() const {
        LRESULT all = 0;
        for (int i = 0; i < columns; ++i) all += SendMessageW(window, LVM_GETCOLUMNWIDTH, static_cast<WPARAM>(i), 0);
        return static_cast<int>(all);
    }
    bool IsOwnerDrawn() const {
        MENUITEMINFOW info{};
        info.cbSize = sizeof info;
        info.fMask = MIIM_FTYPE;
        return GetMenuItemInfoW(menu, 0, TRUE, &info) && info.fType & MFT_OWNERDRAW;
    }
    // In the order of their letters.
    std::string InEffect() const {
        std::string all;
        RECT client{};
        for (int i = 0; i < columns; ++i) SendMessageW(window, LVM_SETCOLUMNWIDTH, static_cast<WPARAM>(i), 4);
        Width(300), Width(320), GetClientRect(window, &client);
        if (ColumnsWidth() == client.right) all += 'c';
        SendMessageW(window, WM_ENTERMENULOOP, TRUE, 0);
        SendMessageW(window, WM_INITMENUPOPUP, reinterpret_cast<WPARAM>(menu), 0);
        if (IsOwnerDrawn()) all += 'i';
        SendMessageW(window, WM_EXITMENULOOP, TRUE, 0);
        if (IsOwnerDrawn()) all += '?';
        if (Width(150) == 250) all += 'n';
        if (Width(600) == 400) all += 'x';
        return all;
    }
    WNDPROC Procedure() const { return reinterpret_cast<WNDPROC>(GetWindowLongPtrW(window, GWLP_WNDPROC)); }

    HookLibrary library;
    int columns = 3;
    HWND window = NewListView(WS_OVERLAPPEDWINDOW, nullptr);
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
    std::vector<int> reversed;
    auto objects = AllAttached();
    LVCOLUMNW column{};
    const auto append = [&] {
        return SendMessageW(window, LVM_INSERTCOLUMNW, static_cast<WPARAM>(columns), reinterpret_cast<LPARAM>(&column));
    };
    const std::pair<const char*, std::function<void()>> changes[] = {
        {"cinx", [&] { EnableWindow(window, FALSE); }},
        {"cinx", [&] { restyle((style & ~WS_POPUP) | WS_CHILD), SetParent(window, parent.get()); }},
        {"cinx", [&] { SetParent(window, nullptr), restyle(style), EnableWindow(window, TRUE); }},
        {"inx", [&] { restyle((style & ~LVS_TYPEMASK) | LVS_ICON); }},
        {"cinx", [&] { restyle(style); }},
        {"cinx",
         [&] {
             for (; columns < 50; ++columns) reversed.insert(reversed.begin(), static_cast<int>(append()));
         }},
        {"cinx",  // as the user drags them
         [&] {
             reversed.insert(reversed.end(), {2, 1, 0});
             SendMessageW(window, LVM_SETCOLUMNORDERARRAY, 50, reinterpret_cast<LPARAM>(reversed.data()));
         }},
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
    const LONG handle = HandleToLong(window);
    for (const auto& [what, message] : {std::pair{'n', WM_GETMINMAXINFO},
                                        {'c', WM_WINDOWPOSCHANGED},
                                        {'c', WM_NOTIFY},
                                        {'i', WM_INITMENUPOPUP},
                                        {'i', WM_EXITMENULOOP},
                                        {'i', WM_SETTINGCHANGE},
                                        {'i', WM_ENTERMENULOOP},
                                        {'i', WM_DRAWITEM}}) {
        Object object;
        const auto below = TestHook::Make(eMsgResponse_HookAlone, true);
        below->handle = [&](const TestHook::Message&, LONG_PTR*) { return object = nullptr, S_OK; };
        ISubclass* hook = below.get();
        const auto manager = library.Manager();
        EXPECT_EQ(S_OK, manager->AddHook(&hook, handle, message));
        object = Attached(what);
        const std::array<char, 256> record{};  // what all of them may read
        const bool opens = message == WM_INITMENUPOPUP;
        SendMessageW(window, static_cast<UINT>(message), opens ? reinterpret_cast<WPARAM>(menu) : 0,
                     opens ? 0 : reinterpret_cast<LPARAM>(record.data()));
        EXPECT_TRUE(!object && !IsOwnerDrawn() && CanUnload()) << message;
        EXPECT_EQ(S_OK, manager->RemoveHook(&hook, handle, message));
        EXPECT_EQ(own, Procedure()) << message;
    }
}

// In 64-bit programs the system's records lie below or above what a Long holds. A real menu, drawn and looked at; then
// its icons are let go of while it is open.
TEST_F(HookedWindow, UsesRecordsWhereverTheyLie) {
    for (const std::uint64_t address :
         {0x30000000ull, 0x7FF00000ull, 0x80000000ull, 0xFFF00000ull, 0x100000000ull, RelocatedRecords::kFarthest}) {
        if (address > RelocatedRecords::kFarthest) continue;
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
    }
}

}  // namespace
}  // namespace velk::test
