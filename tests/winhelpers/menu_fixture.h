// A window with a cIconMenu, and menus to show in it.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "support/late_bound.h"
#include "support/test_hook.h"
#include "support/test_window.h"
#include "winhelpers/test_bitmaps.h"

#include <commctrl.h>

namespace velk::test {

template <class Owned, auto Destroy>
struct Destroyed {
    using Handle = Owned;
    static Handle Invalid() noexcept { return nullptr; }
    static void Close(Handle handle) noexcept { Destroy(handle); }
};
using Menu = UniqueHandle<Destroyed<HMENU, &DestroyMenu>>;
using Images = UniqueHandle<Destroyed<HIMAGELIST, &ImageList_Destroy>>;

// All that a client can see of an item, but for the highlight.
struct ItemOfMenu {
    UINT type = 0, state = 0, id = 0;
    bool opens = false;  // a submenu, by whose handle it is known
    ULONG_PTR data = 0;
    std::wstring text{};

    bool operator==(const ItemOfMenu&) const = default;
};

inline std::vector<ItemOfMenu> ItemsOf(HMENU menu) {
    std::vector<ItemOfMenu> items;
    for (int i = 0; i < GetMenuItemCount(menu); ++i) {
        wchar_t text[300] = {};
        const UINT mask = MIIM_FTYPE | MIIM_STATE | MIIM_ID | MIIM_SUBMENU | MIIM_DATA | MIIM_STRING;
        MENUITEMINFOW info{sizeof info, mask, 0, 0, 0, nullptr, nullptr, nullptr, 0, text, ARRAYSIZE(text), nullptr};
        EXPECT_TRUE(GetMenuItemInfoW(menu, static_cast<UINT>(i), TRUE, &info));
        const bool opens = info.hSubMenu != nullptr;
        const UINT state = info.fState & ~UINT{MFS_HILITE}, id = opens ? 0 : info.wID;
        items.push_back({info.fType, state, id, opens, info.dwItemData, text});
    }
    return items;
}

// What the mask names becomes what the item says.
inline void Change(HMENU menu, UINT position, UINT mask, const ItemOfMenu& item) {
    const auto text = const_cast<LPWSTR>(item.text.c_str());
    const MENUITEMINFOW info{sizeof info, mask,    item.type, item.state, item.id, nullptr,
                             nullptr,     nullptr, item.data, text,       0,       nullptr};
    EXPECT_TRUE(SetMenuItemInfoW(menu, position, TRUE, &info));
}
inline void Rename(HMENU menu, UINT position, std::wstring_view text) {
    Change(menu, position, MIIM_STRING, {.text = std::wstring(text)});
}

// Positions of what FullMenu makes: one item of every kind.
enum : UINT { kOpen, kSave, kLine, kChecked, kRadio, kDisabled, kDefault, kMore, kOwn, kBitmap, kLong, kCount };
constexpr LONG CommandAt(UINT position) { return static_cast<LONG>(100 + position); }
inline LONG HandleOf(HMENU menu) { return HandleToLong(menu); }

inline Menu FullMenu(HBITMAP bitmap = nullptr) {
    const HMENU menu = CreatePopupMenu(), more = CreatePopupMenu();
    const std::wstring texts[] = {L"&Open...\tCtrl+O",    L"\u0160ave \u6F22", L"",      L"Chec&ked", L"R&adio",
                                  L"&Disabled",           L"De&fault",         L"&More", L"",         L"",
                                  std::wstring(200, L'x')};
    const UINT flags[] = {
        0, 0, MF_SEPARATOR, MF_CHECKED, 0, MF_GRAYED, MF_MENUBARBREAK, MF_POPUP, MF_OWNERDRAW, MF_OWNERDRAW, 0};
    for (UINT i = 0; i < kCount; ++i) {
        AppendMenuW(menu, flags[i], i == kMore ? reinterpret_cast<UINT_PTR>(more) : 100 + i, texts[i].c_str());
    }
    AppendMenuW(more, MF_STRING, 300, L"&Inner");
    if (bitmap) ModifyMenuW(menu, kBitmap, MF_BYPOSITION | MF_BITMAP, 100 + kBitmap, reinterpret_cast<LPCWSTR>(bitmap));
    CheckMenuRadioItem(menu, kRadio, kRadio, kRadio, MF_BYPOSITION);
    SetMenuDefaultItem(menu, kDefault, TRUE);
    for (const UINT position : {kOpen, kOwn, kBitmap}) Change(menu, position, MIIM_DATA, {.data = 12345});
    return Menu(menu);
}

inline bool IsDrawn(HMENU menu) { return GetMenuState(menu, 0, MF_BYPOSITION) & MF_OWNERDRAW; }

class IconMenuTest : public testing::Test {
  protected:
    IconMenuTest() { EXPECT_EQ(S_OK, Attach(window_.get())); }

    HRESULT Attach(HWND window) { return icons_->Attach(HandleToLong(window)); }
    static ULONG References(IUnknown* object) { return object ? object->AddRef(), object->Release() : 0; }
    LONG AttachedTo() const { return Get(icons_.get(), L"hWnd").value.lVal; }

    // What the system sends when a menu loop begins, when a popup menu opens, and when the last one closes.
    LRESULT Send(UINT message, HMENU menu = nullptr, const void* record = nullptr) {
        return SendMessageW(window_.get(), message, reinterpret_cast<WPARAM>(menu), reinterpret_cast<LPARAM>(record));
    }
    void Open(HMENU menu) { Send(WM_ENTERMENULOOP), Send(WM_INITMENUPOPUP, menu); }
    void Close() { Send(WM_EXITMENULOOP); }

    HookLibrary library_;
    TestWindow window_;
    ComPtr<_cIconMenu> icons_ = CreateObject<_cIconMenu>(__uuidof(::cIconMenu));
    Menu menu_ = FullMenu();
    HMENU menu = menu_.get(), more = GetSubMenu(menu, kMore);
};

}  // namespace velk::test
