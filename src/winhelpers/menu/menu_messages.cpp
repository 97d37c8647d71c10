#include "winhelpers/menu/menu_messages.h"

#include <algorithm>
#include <vector>

#include "platform/long_handles.h"
#include "platform/text.h"
#include "winhelpers/menu/density.h"
#include "winhelpers/menu/menu_keys.h"
#include "winhelpers/menu/menu_text.h"

namespace velk {
namespace {

HMENU MenuFrom(LPARAM value) noexcept { return HandleFrom<HMENU>(static_cast<LONG>(value)); }

char16_t UpperCase(char16_t character) noexcept {
    auto folded = static_cast<wchar_t>(character);
    CharUpperBuffW(&folded, 1);
    return static_cast<char16_t>(folded);
}

// A window that takes no wide characters gets them in its code page.
char16_t TypedCharacter(HWND window, WORD character) noexcept {
    if (IsWindowUnicode(window)) return UpperCase(character);
    const char narrow[] = {static_cast<char>(character)};
    wchar_t wide = 0;
    return MultiByteToWideChar(CP_ACP, 0, narrow, 1, &wide, 1) == 1 ? UpperCase(static_cast<char16_t>(wide)) : 0;
}

// Also in a menu loop that began before the window was attached.
bool InMenuMode() noexcept {
    GUITHREADINFO info{};
    info.cbSize = sizeof info;
    return GetGUIThreadInfo(GetCurrentThreadId(), &info) && info.flags & (GUI_INMENUMODE | GUI_POPUPMENUMODE);
}

}  // namespace

bool MenuMessages::IsHandledAfterwards(LONG message) noexcept {
    const auto* const end = kHooked + 4;
    return std::find(kHooked, end, message) != end;
}

std::optional<LRESULT> MenuMessages::Handle(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_ENTERMENULOOP:
            menus_.EnterLoop();
            return std::nullopt;
        case WM_INITMENUPOPUP:
            if (!HIWORD(lParam))
                InitPopup(window, MenuFrom(static_cast<LPARAM>(wParam)));  // the window menu is the system's
            return 0;
        case WM_MEASUREITEM:
            return MeasureItem(reinterpret_cast<MEASUREITEMSTRUCT*>(lParam));
        case WM_DRAWITEM:
            return DrawItem(reinterpret_cast<const DRAWITEMSTRUCT*>(lParam));
        case WM_MENUCHAR:
            return FindByKey(window, MenuFrom(lParam), LOWORD(wParam));
        case WM_EXITMENULOOP:
            menus_.LeaveLoop();
            ForgetDestroyedMenus();
            return 0;
        case WM_SETTINGCHANGE:
            painter_.ForgetSettings();
            return 0;
        default:
            return std::nullopt;
    }
}

// An accelerator's menu is announced like one that opens, but is not shown, and no loop ends.
void MenuMessages::InitPopup(HWND window, HMENU menu) {
    if (!menus_.InLoop() && !InMenuMode()) return;
    if (GetWindowLongPtrW(window, GWL_EXSTYLE) & WS_EX_LAYOUTRTL) return;
    if (!menus_.AnyOpen()) painter_.Prepare(icons_, DensityOf(window));
    menus_.Open(menu, [this](OpenItem& item, UINT state) {
        if (item.IsSeparator()) return 0;
        const TextWidths widths = painter_.Measure(menus_.text(), state & MFS_DEFAULT);
        item.labelWidth = widths.label;
        return widths.accelerator;
    });
}

template <class Record>
OpenItem* MenuMessages::OurItem(const Record* record) const noexcept {
    return record && record->CtlType == ODT_MENU ? menus_.FindItem(record->itemData) : nullptr;
}

std::optional<LRESULT> MenuMessages::MeasureItem(MEASUREITEMSTRUCT* measured) {
    const OpenItem* const item = OurItem(measured);
    if (!item) return std::nullopt;
    const Size size = item->IsSeparator() ? painter_.SeparatorSize()
                                          : painter_.ItemSize(item->labelWidth, item->owner->widestAccelerator);
    measured->itemWidth = static_cast<UINT>(size.width);
    measured->itemHeight = static_cast<UINT>(size.height);
    return TRUE;
}

std::optional<LRESULT> MenuMessages::DrawItem(const DRAWITEMSTRUCT* drawn) {
    OpenItem* const item = OurItem(drawn);
    if (!item) return std::nullopt;
    const auto now = menus_.Read(*item);
    if (!now) return TRUE;  // the client deleted it meanwhile, and its data mean nothing to the client
    item->owner->Speak(*item, menus_.text());
    DrawnItem shown{menus_.text(),
                    drawn->itemState,
                    item->IsSeparator(),
                    (now->fType & MFT_RADIOCHECK) != 0,
                    now->hSubMenu != nullptr,
                    icons_.Find(item->id, item->submenu)};
    if (now->fState & MFS_DEFAULT) shown.state |= ODS_DEFAULT;  // Wine does not say so
    painter_.Draw(shown, icons_, drawn->hDC, drawn->rcItem);
    return TRUE;
}

// Items that are not ours are found by the system, or by the client that draws them.
std::optional<LRESULT> MenuMessages::FindByKey(HWND window, HMENU menu, WORD character) {
    const OpenMenu* const opened = menus_.FindMenu(menu);
    if (!opened) return std::nullopt;
    std::vector<ItemKey> keys(static_cast<std::size_t>(std::max(0, GetMenuItemCount(menu))));
    std::size_t highlighted = KeyMatch::kNone;
    for (std::size_t i = 0; i < keys.size(); ++i) {
        const auto item = menus_.Read(menu, static_cast<UINT>(i));
        if (item && item->fState & MFS_HILITE) highlighted = i;
        if (!item || !opened->Holds(item->dwItemData)) continue;
        keys[i] = ItemKeyOf(SplitMenuText(Utf16(menus_.text())).label);
        keys[i].character = UpperCase(keys[i].character);
    }
    const KeyMatch match = FindItemByKey(keys, TypedCharacter(window, character), highlighted);
    if (match.position == KeyMatch::kNone) return std::nullopt;
    return MAKELONG(match.position, match.onlyOne ? MNC_EXECUTE : MNC_SELECT);
}

// Another menu may get the handle of a destroyed one.
void MenuMessages::ForgetDestroyedMenus() noexcept {
    icons_.submenus.RemoveIf([](HMENU menu) { return !IsMenu(menu); });
}

void MenuMessages::RestoreMenus() noexcept {
    menus_.RestoreAll();
    ForgetDestroyedMenus();
}

}  // namespace velk
