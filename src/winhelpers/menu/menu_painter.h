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
    void ForgetSettings() noexcept { stale_ = true; }

    // Before menus are measured; not while some are open.
    void Prepare(Size icon);

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

    void ReadSettings();
    HGDIOBJ FontFor(bool bold) const noexcept { return bold ? boldFont_.get() : font_; }
    Colours ColoursFor(UINT state) const noexcept;
    void DrawSeparator(HDC canvas, const Box& box, const Colours& colours) noexcept;
    void DrawMark(HDC canvas, const Box& box, const DrawnItem& item, const MenuIcons& icons, Colours colours) noexcept;
    void DrawIcon(HDC canvas, const Box& place, const DrawnItem& item, const MenuIcons& icons, COLORREF back) noexcept;
    void DrawTexts(HDC canvas, const Box& box, const DrawnItem& item, COLORREF colour) const noexcept;

    bool stale_ = true;
    std::unique_ptr<cNCMetrics> metrics_;  // a new one each time: it is to be read once, before its fonts are used
    HGDIOBJ font_ = nullptr;               // of metrics_
    GdiObject boldFont_;
    int dotsPerInch_ = 96;
    int textHeight_ = 0;
    int systemMargin_ = 0;
    bool flat_ = false;
    MenuLayout layout_;
    cDottedBrush dots_;
    cMemDC buffer_;
    cMemDC ruler_;
    FadingCanvas fading_;
};

}  // namespace velk
