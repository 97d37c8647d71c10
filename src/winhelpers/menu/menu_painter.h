// Measures and draws menu items in the system's colours and menu font. Everything that drawing needs is kept from one
// item to the next.
#pragma once

#include <memory>
#include <string_view>

#include "platform/drawing_handles.h"
#include "winhelpers/menu/fading_canvas.h"
#include "winhelpers/menu/menu_icons.h"
#include "winhelpers/menu/menu_layout.h"
#include "winhelpers/support/dotted_brush.h"
#include "winhelpers/support/mem_dc.h"
#include "winhelpers/support/nc_metrics.h"

namespace velk {

struct TextWidths {
    int label = 0;
    int accelerator = 0;
};

struct DrawnItem {
    std::wstring_view text;
    UINT state = 0;  // ODS_ flags
    bool separator = false;
    bool radio = false;
    bool submenu = false;
    const MenuIcon* icon = nullptr;
};

class MenuPainter {
  public:
    MenuPainter() noexcept { dots_.Create(); }
    MenuPainter(const MenuPainter&) = delete;
    MenuPainter& operator=(const MenuPainter&) = delete;

    // Fonts and sizes are read again at the next Prepare: what is open keeps those that it was measured with.
    void ForgetSettings() noexcept { density_ = 0; }

    // Before menus are measured; not while some are open. `density` is that of the window whose menus they are, in dots
    // per inch.
    void Prepare(const MenuIcons& icons, int density);

    TextWidths Measure(std::wstring_view text, bool bold) const noexcept;
    Size ItemSize(int labelWidth, int widestAccelerator) const noexcept;
    Size SeparatorSize() const noexcept { return layout_.SeparatorSize(); }

    // Draws to `place`, and keeps the system from drawing there afterwards.
    void Draw(const DrawnItem& item, const MenuIcons& icons, HDC target, const RECT& place) noexcept;

  private:
    struct Colours {
        COLORREF back, text, accent;
        bool framed;
    };

    void ReadSettings(int density);
    HGDIOBJ FontFor(bool bold) const noexcept { return (bold ? boldFont_ : font_).get(); }
    Colours ColoursFor(UINT state) const noexcept;
    void DrawSeparator(HDC canvas, const Box& box, const Colours& colours) noexcept;
    void DrawMark(HDC canvas, const Box& box, const DrawnItem& item, const MenuIcons& icons, Colours colours) noexcept;
    void DrawIcon(HDC canvas, const Box& place, const DrawnItem& item, const MenuIcons& icons, COLORREF back,
                  COLORREF text) noexcept;
    void DrawTexts(HDC canvas, const Box& box, const DrawnItem& item, COLORREF colour) const noexcept;

    int density_ = 0;  // that the settings were read for; 0 when they have to be read
    GdiObject font_;
    GdiObject boldFont_;
    int textHeight_ = 0;
    int systemMargin_ = 0;
    bool flat_ = false;
    bool highContrast_ = false;  // nothing may have a colour that the scheme does not have
    MenuLayout layout_;
    cDottedBrush dots_;
    cMemDC buffer_;
    cMemDC ruler_;
    FadingCanvas fading_;
};

}  // namespace velk
