// A window with a cIconMenu, and menus to show in it.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>

#include "support/late_bound.h"
#include "support/test_hook.h"
#include "support/test_window.h"
#include "winhelpers/test_bitmaps.h"

#include <commctrl.h>

namespace velk::test {

template <auto Destroy>
struct By {
    void operator()(auto* handle) const { Destroy(handle); }
};
using Menu = std::unique_ptr<std::remove_pointer_t<HMENU>, By<&DestroyMenu>>;
using Images = std::unique_ptr<std::remove_pointer_t<HIMAGELIST>, By<&ImageList_Destroy>>;

// An item as it is.
struct MenuItem : MENUITEMINFOW {
    MenuItem(HMENU menu, UINT position) : MENUITEMINFOW{} {
        cbSize = sizeof(MENUITEMINFOW), dwTypeData = text, cch = ARRAYSIZE(text);
        fMask = MIIM_FTYPE | MIIM_STATE | MIIM_ID | MIIM_SUBMENU | MIIM_DATA | MIIM_STRING;
        EXPECT_TRUE(GetMenuItemInfoW(menu, position, TRUE, this));
    }
    // All that a client can see, but for the highlight and a submenu's handle.
    std::wstring Described() const {
        std::wstring all = text;
        for (const ULONG_PTR part :
             {ULONG_PTR{fType}, ULONG_PTR{fState & ~UINT{MFS_HILITE}}, ULONG_PTR{hSubMenu ? 0 : wID}, dwItemData})
            all += L" " + std::to_wstring(part);
        return all;
    }

    wchar_t text[300] = {};
};

template <class Value>
void Change(HMENU menu, UINT position, UINT mask, Value MENUITEMINFOW::*field, std::type_identity_t<Value> value) {
    MENUITEMINFOW item{};
    item.cbSize = sizeof item, item.fMask = mask, item.*field = value;
    EXPECT_TRUE(SetMenuItemInfoW(menu, position, TRUE, &item));
}
inline void Rename(HMENU menu, UINT position, const wchar_t* text) {
    Change(menu, position, MIIM_STRING, &MENUITEMINFOW::dwTypeData, const_cast<LPWSTR>(text));
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
    for (const UINT position : {kOpen, kOwn, kBitmap})
        Change(menu, position, MIIM_DATA, &MENUITEMINFOW::dwItemData, 12345);
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
