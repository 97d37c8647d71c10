// A window with a cIconMenu, and menus to show in it.
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>

#include "support/late_bound.h"
#include "support/sheet.h"
#include "support/test_hook.h"
#include "support/test_window.h"

namespace velk::test {

using Menu = std::shared_ptr<std::remove_pointer_t<HMENU>>;

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

// What FullMenu makes, one item of every kind. From kOwn on they have bitmaps or are the client's to draw.
enum : UINT { kOpen, kSave, kLine, kChecked, kRadio, kDisabled, kDefault, kMore, kLong, kOwn, kBitmap, kOn, kOff };
constexpr LONG CommandAt(UINT position) { return static_cast<LONG>(100 + position); }

inline Menu FullMenu() {
    static const GdiObject made(CreateBitmap(10, 10, 1, 1, nullptr));
    const HMENU menu = CreatePopupMenu(), more = CreatePopupMenu();
    AppendMenuW(more, MF_STRING, 300, L"&Inner");
    std::wistringstream texts(L"&Open...\tCtrl+O|\u0160ave \u6F22||Chec&ked|R&adio|&Disabled|De&fault|&More|" +
                              std::wstring(200, L'x') + L"|||1|2");
    const std::map<UINT, UINT> flags{{kLine, MF_SEPARATOR},       {kChecked, MF_CHECKED}, {kDisabled, MF_GRAYED},
                                     {kDefault, MF_MENUBARBREAK}, {kMore, MF_POPUP},      {kOwn, MF_OWNERDRAW}};
    std::wstring text;
    for (UINT i = 0; std::getline(texts, text, L'|'); ++i)
        AppendMenuW(menu, flags.contains(i) ? flags.at(i) : 0, i == kMore ? reinterpret_cast<UINT_PTR>(more) : 100 + i,
                    text.c_str());
    ModifyMenuW(menu, kBitmap, MF_BYPOSITION | MF_BITMAP, 100 + kBitmap, static_cast<LPCWSTR>(made.get()));
    AppendMenuW(menu, MF_SEPARATOR | MF_OWNERDRAW, UINT{CommandAt(kLine)}, reinterpret_cast<LPCWSTR>(4712));
    const auto bitmap = static_cast<HBITMAP>(made.get());
    SetMenuItemBitmaps(menu, kOn, MF_BYPOSITION, nullptr, bitmap);
    SetMenuItemBitmaps(menu, kOff, MF_BYPOSITION, bitmap, nullptr);
    CheckMenuRadioItem(menu, kRadio, kRadio, kRadio, MF_BYPOSITION);
    SetMenuDefaultItem(menu, kDefault, TRUE);
    for (const UINT position : {kOpen, kOwn, kBitmap})
        Change(menu, position, MIIM_DATA, &MENUITEMINFOW::dwItemData, 12345);
    return {menu, &DestroyMenu};
}

inline bool IsDrawn(HMENU menu) { return GetMenuState(menu, 0, MF_BYPOSITION) & MF_OWNERDRAW; }

class IconMenuTest : public testing::Test {
  protected:
    IconMenuTest() { EXPECT_EQ(S_OK, Attach(window_)); }

    HRESULT Attach(const TestWindow& window) { return icons_->Attach(window.handle()); }
    static ULONG References(IUnknown* object) { return object ? object->AddRef(), object->Release() : 0; }
    LONG AttachedTo() const { return Get(icons_.get(), L"hWnd").value.lVal; }

    // What the system sends when a menu loop begins and a popup menu opens, and when the last one closes.
    void Open(HMENU opened) { window_.Send(WM_ENTERMENULOOP), window_.Send(WM_INITMENUPOPUP, opened); }
    void Close() { window_.Send(WM_EXITMENULOOP); }
    LRESULT DrawItem(ULONG_PTR data) const {
        const DRAWITEMSTRUCT drawn{ODT_MENU, 0, 0, 0, 0, nullptr, nullptr, {}, data};
        return window_.Send(WM_DRAWITEM, nullptr, &drawn);
    }

    const std::shared_ptr<void> library_ = HookLibrary();
    TestWindow window_;
    ComPtr<_cIconMenu> icons_ = CreateObject<_cIconMenu>(__uuidof(::cIconMenu));
    Menu menu_ = FullMenu();
    HMENU menu = menu_.get(), more = GetSubMenu(menu, kMore);
};

}  // namespace velk::test
