// What the messages do that a window gets about its menus: they make the items owner-drawn while they are shown,
// measure and draw them, and find them by their keys.
#pragma once

#include <optional>

#include "platform/platform.h"
#include "winhelpers/menu/menu_icons.h"
#include "winhelpers/menu/menu_painter.h"
#include "winhelpers/menu/open_menus.h"

namespace velk {

class MenuMessages {
  public:
    // The first four are handled after the window's own procedure, whose result counts; the rest in its place, as far
    // as they concern an item of ours.
    static constexpr LONG kHooked[] = {WM_INITMENUPOPUP, WM_EXITMENULOOP, WM_SETTINGCHANGE, WM_DESTROY,
                                       WM_ENTERMENULOOP, WM_MEASUREITEM,  WM_DRAWITEM,      WM_MENUCHAR};
    static bool IsHandledAfterwards(LONG message) noexcept;

    explicit MenuMessages(MenuIcons& icons) noexcept : icons_(icons) {}

    // The message's result; nothing when it is left to the window's own procedure.
    std::optional<LRESULT> Handle(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

    // Puts all menus back as the client made them; some may have been destroyed with their window.
    void RestoreMenus() noexcept;

  private:
    void InitPopup(HWND window, HMENU menu);
    std::optional<LRESULT> MeasureItem(MEASUREITEMSTRUCT* measured);
    std::optional<LRESULT> DrawItem(const DRAWITEMSTRUCT* drawn);
    std::optional<LRESULT> FindByKey(HWND window, HMENU menu, WORD character);
    void ForgetDestroyedMenus() noexcept;

    template <class Record>
    OpenItem* OurItem(const Record* record) const noexcept;

    MenuIcons& icons_;
    MenuPainter painter_;
    OpenMenus menus_;
};

}  // namespace velk
