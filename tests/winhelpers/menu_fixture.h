// A window with an attached cIconMenu, and menus to show in it.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "support/import_patch.h"
#include "support/late_bound.h"
#include "support/test_hook.h"
#include "support/test_window.h"
#include "winhelpers/test_bitmaps.h"

#include <commctrl.h>

namespace velk::test {

constexpr HRESULT RunTime(int number) { return static_cast<HRESULT>(0x800A0000) + number; }

struct MenuTraits {
    using Handle = HMENU;
    static Handle Invalid() noexcept { return nullptr; }
    static void Close(Handle handle) noexcept { DestroyMenu(handle); }
};
using Menu = UniqueHandle<MenuTraits>;

// All that a client can see of an item.
struct ItemOfMenu {
    UINT type, state, id;
    HMENU submenu;
    ULONG_PTR data;
    std::wstring text;

    bool operator==(const ItemOfMenu&) const = default;
};

inline MENUITEMINFOW InfoOf(UINT mask, LPCWSTR text = nullptr) {
    MENUITEMINFOW info{};
    info.cbSize = sizeof info;
    info.fMask = mask;
    info.dwTypeData = const_cast<LPWSTR>(text);
    return info;
}

inline std::vector<ItemOfMenu> ItemsOf(HMENU menu) {
    std::vector<ItemOfMenu> items;
    for (int i = 0; i < GetMenuItemCount(menu); ++i) {
        wchar_t text[300] = {};
        MENUITEMINFOW info = InfoOf(MIIM_FTYPE | MIIM_STATE | MIIM_ID | MIIM_SUBMENU | MIIM_DATA | MIIM_STRING, text);
        info.cch = ARRAYSIZE(text);
        EXPECT_TRUE(GetMenuItemInfoW(menu, static_cast<UINT>(i), TRUE, &info));
        items.push_back({info.fType, info.fState, info.wID, info.hSubMenu, info.dwItemData, text});
    }
    return items;
}

inline void Change(HMENU menu, UINT position, MENUITEMINFOW info) {
    EXPECT_TRUE(SetMenuItemInfoW(menu, position, TRUE, &info));
}
inline void Rename(HMENU menu, UINT position, std::wstring_view text) {
    Change(menu, position, InfoOf(MIIM_STRING, std::wstring(text).c_str()));
}
inline void SetData(HMENU menu, UINT position, ULONG_PTR data) {
    MENUITEMINFOW info = InfoOf(MIIM_DATA);
    info.dwItemData = data;
    Change(menu, position, info);
}

// Positions of what FullMenu makes: one item of every kind.
enum Position : UINT {
    kOpen,
    kSave,
    kLine,
    kChecked,
    kRadio,
    kDisabled,
    kDefault,
    kMore,
    kOwn,
    kBitmap,
    kLong,
    kPositions
};
constexpr UINT CommandAt(UINT position) { return 100 + position; }

inline Menu FullMenu(HBITMAP bitmap = nullptr) {
    const HMENU menu = CreatePopupMenu(), more = CreatePopupMenu();
    AppendMenuW(more, MF_STRING, 300, L"&Inner");
    AppendMenuW(menu, MF_STRING, CommandAt(kOpen), L"&Open...\tCtrl+O");
    AppendMenuW(menu, MF_STRING, CommandAt(kSave), L"\u0160ave \u6F22");
    AppendMenuW(menu, MF_SEPARATOR, 0, nullptr);
    AppendMenuW(menu, MF_STRING | MF_CHECKED, CommandAt(kChecked), L"Chec&ked");
    AppendMenuW(menu, MF_STRING, CommandAt(kRadio), L"R&adio");
    AppendMenuW(menu, MF_STRING | MF_GRAYED, CommandAt(kDisabled), L"&Disabled");
    AppendMenuW(menu, MF_STRING | MF_MENUBARBREAK, CommandAt(kDefault), L"De&fault");
    AppendMenuW(menu, MF_POPUP, reinterpret_cast<UINT_PTR>(more), L"&More");
    AppendMenuW(menu, MF_OWNERDRAW, CommandAt(kOwn), reinterpret_cast<LPCWSTR>(4711));
    AppendMenuW(menu, bitmap ? MF_BITMAP : MF_OWNERDRAW, CommandAt(kBitmap), reinterpret_cast<LPCWSTR>(bitmap));
    AppendMenuW(menu, MF_STRING, CommandAt(kLong), std::wstring(200, L'x').c_str());
    CheckMenuRadioItem(menu, kRadio, kRadio, kRadio, MF_BYPOSITION);
    SetMenuDefaultItem(menu, kDefault, TRUE);
    SetData(menu, kOpen, 12345);
    return Menu(menu);
}

inline LONG HandleOf(HMENU menu) { return HandleToLong(menu); }

class IconMenuTest : public testing::Test {
  protected:
    HRESULT Attach(HWND window) {
        inLoop_ = false;
        return icons_->Attach(HandleToLong(window));
    }

    LONG AttachedTo() const { return Get(icons_.get(), L"hWnd").value.lVal; }

    // What the system sends when a popup menu opens, the first one of a menu loop or another, and when the last one
    // closes.
    void Open(HMENU menu) { OpenIn(window_.get(), menu, !std::exchange(inLoop_, true)); }
    void Close() {
        inLoop_ = false;
        SendMessageW(window_.get(), WM_EXITMENULOOP, TRUE, 0);
    }
    static void OpenIn(HWND window, HMENU menu, bool first = true) {
        if (first) SendMessageW(window, WM_ENTERMENULOOP, TRUE, 0);
        SendMessageW(window, WM_INITMENUPOPUP, reinterpret_cast<WPARAM>(menu), 0);
    }

    void Replace(Menu by) { menu_ = std::move(by), menu = menu_.get(); }

    // A letter an item: d when it is drawn by the library.
    static std::string Drawn(HMENU menu) {
        std::string drawn;
        for (const ItemOfMenu& item : ItemsOf(menu)) {
            const bool own = item.id == CommandAt(kOwn) || item.id == CommandAt(kBitmap);
            drawn += item.type & MFT_OWNERDRAW && !own ? 'd' : '.';
        }
        return drawn;
    }

    HookLibrary library_;
    TestWindow window_;
    ComPtr<_cIconMenu> icons_ = CreateObject<_cIconMenu>(__uuidof(::cIconMenu));
    Menu menu_ = FullMenu();
    HMENU menu = menu_.get();

  private:
    bool inLoop_ = false;
};

}  // namespace velk::test
