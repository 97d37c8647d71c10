#include "winhelpers/menu/menu_painter.h"

#include <algorithm>

#include "platform/long_handles.h"
#include "platform/text.h"
#include "winhelpers/menu/density.h"
#include "winhelpers/menu/menu_glyphs.h"
#include "winhelpers/menu/menu_pixels.h"
#include "winhelpers/menu/menu_text.h"

namespace velk {
namespace {

HBRUSH Brush(HDC canvas, COLORREF colour) noexcept {
    SetDCBrushColor(canvas, colour);
    return static_cast<HBRUSH>(GetStockObject(DC_BRUSH));
}

void Fill(HDC canvas, const Box& box, COLORREF colour) noexcept {
    const RECT filled = ToRect(box);
    FillRect(canvas, &filled, Brush(canvas, colour));
}

void Frame(HDC canvas, const Box& box, COLORREF colour) noexcept {
    const RECT framed = ToRect(box);
    FrameRect(canvas, &framed, Brush(canvas, colour));
}

void DrawLine(HDC canvas, std::u16string_view text, const Box& box, UINT format) noexcept {
    RECT place = ToRect(box);
    const std::wstring_view wide = Wide(text);
    DrawTextW(canvas, wide.data(), static_cast<int>(wide.size()), &place, DT_SINGLELINE | DT_VCENTER | format);
}

int WidthOf(HDC context, std::u16string_view text, UINT format) noexcept {
    if (text.empty()) return 0;
    RECT measured{};
    const std::wstring_view wide = Wide(text);
    DrawTextW(context, wide.data(), static_cast<int>(wide.size()), &measured, DT_SINGLELINE | DT_CALCRECT | format);
    return measured.right;
}

TEXTMETRICW MetricsOf(HDC context, HGDIOBJ font) noexcept {
    const SelectedObject selected(context, font);
    TEXTMETRICW metrics{};
    GetTextMetricsW(context, &metrics);
    return metrics;
}

// The system gives its fonts in the size for its own density.
GdiObject Scaled(HGDIOBJ font, int density) noexcept {
    LOGFONTW record{};
    GetObjectW(font, sizeof record, &record);
    record.lfHeight = MulDiv(record.lfHeight, density, SystemDensity());
    return GdiObject(CreateFontIndirectW(&record));
}

}  // namespace

void MenuPainter::Prepare(const MenuIcons& icons, int density) {
    if (density_ != density) ReadSettings(density);
    layout_ = MenuLayout(density, icons.CellSize(density), textHeight_);
}

void MenuPainter::ReadSettings(int density) {
    cNCMetrics metrics;
    metrics.GetMetrics();
    const GdiObject bold(HandleFrom<HGDIOBJ>(metrics.BoldenedFontHandle(kMenuFont)));
    font_ = Scaled(HandleFrom<HGDIOBJ>(metrics.FontHandle(kMenuFont)), density);
    boldFont_ = Scaled(bold.get(), density);

    ruler_.SetWidth(1);
    ruler_.SetHeight(1);
    const TEXTMETRICW normal = MetricsOf(ruler_.HDC(), font_.get());
    textHeight_ = static_cast<int>(std::max(normal.tmHeight, MetricsOf(ruler_.HDC(), boldFont_.get()).tmHeight));
    systemMargin_ = 2 * static_cast<int>(normal.tmAveCharWidth);
    BOOL flat = FALSE;
    SystemParametersInfoA(SPI_GETFLATMENU, 0, &flat, 0);
    HIGHCONTRASTA contrast{sizeof contrast, 0, nullptr};
    SystemParametersInfoA(SPI_GETHIGHCONTRAST, sizeof contrast, &contrast, 0);
    highContrast_ = contrast.dwFlags & HCF_HIGHCONTRASTON;
    flat_ = flat && !highContrast_;  // of the highlight's colours only one pair is sure to be legible
    density_ = density;
}

TextWidths MenuPainter::Measure(std::wstring_view text, bool bold) const noexcept {
    const MenuText parts = SplitMenuText(Utf16(text));
    const SelectedObject font(ruler_.HDC(), FontFor(bold));
    return {WidthOf(ruler_.HDC(), parts.label, 0), WidthOf(ruler_.HDC(), parts.accelerator, DT_NOPREFIX)};
}

// The system adds two characters to the width that an owner-drawn item asks for.
Size MenuPainter::ItemSize(int labelWidth, int widestAccelerator) const noexcept {
    const Size size = layout_.ItemSize(labelWidth, widestAccelerator);
    return {std::max(0, size.width - systemMargin_), size.height};
}

MenuPainter::Colours MenuPainter::ColoursFor(UINT state) const noexcept {
    const bool disabled = state & (ODS_DISABLED | ODS_GRAYED);
    const COLORREF back = GetSysColor(COLOR_MENU), highlight = GetSysColor(COLOR_HIGHLIGHT);
    const COLORREF text = GetSysColor(disabled ? COLOR_GRAYTEXT : COLOR_MENUTEXT);
    if (!(state & ODS_SELECTED)) return {back, text, disabled ? text : highlight, false};
    if (disabled) return {back, text, text, true};  // grey text is not legible on the highlight
    const COLORREF lit = GetSysColor(COLOR_HIGHLIGHTTEXT);
    return {flat_ ? GetSysColor(COLOR_MENUHILIGHT) : highlight, lit, flat_ ? highlight : lit, flat_};
}

void MenuPainter::Draw(const DrawnItem& item, const MenuIcons& icons, HDC target, const RECT& place) noexcept {
    const Box box{0, 0, static_cast<int>(place.right - place.left), static_cast<int>(place.bottom - place.top)};
    buffer_.SetWidth(box.right);
    buffer_.SetHeight(box.bottom);
    const HDC canvas = buffer_.HDC();
    const Colours colours = ColoursFor(item.separator ? item.state & ~UINT{ODS_SELECTED} : item.state);
    Fill(canvas, box, colours.back);
    if (colours.framed) Frame(canvas, box, colours.accent);
    if (item.separator) {
        DrawSeparator(canvas, box, colours);
    } else {
        DrawMark(canvas, box, item, icons, colours);
        DrawTexts(canvas, box, item, colours.text);
        const auto put = [&](const Box& part) { Fill(canvas, part, colours.text); };
        if (item.submenu) ArrowHead(layout_.Arrow(box), put);
    }
    BitBlt(target, place.left, place.top, box.right, box.bottom, canvas, 0, 0, SRCCOPY);
    ExcludeClipRect(target, place.left, place.top, place.right, place.bottom);  // or it adds an arrow of its own
}

void MenuPainter::DrawSeparator(HDC canvas, const Box& box, const Colours& colours) noexcept {
    const Box line = layout_.SeparatorLine(box);
    dots_.SetBrushOrigin(canvas, line.left, line.top);
    dots_.DrawLine(canvas, line.left, line.top, line.width(), line.height(), PATCOPY, static_cast<LONG>(colours.back),
                   static_cast<LONG>(GetSysColor(COLOR_GRAYTEXT)));
}

// A checked item has a tinted square behind its icon, or behind a tick or a bullet when it has no icon. High contrast
// leaves the tint out.
void MenuPainter::DrawMark(HDC canvas, const Box& box, const DrawnItem& item, const MenuIcons& icons,
                           Colours colours) noexcept {
    const unsigned tint = highContrast_ ? 0 : 40, edge = highContrast_ ? 256 : 150;  // of 256
    const Box cell = layout_.IconCell(box);
    COLORREF back = colours.back;
    if (item.state & ODS_CHECKED) {
        const COLORREF tone = highContrast_ || item.state & ODS_SELECTED ? colours.text : colours.accent;
        back = Mix(tone, colours.back, tint);
        Fill(canvas, cell, back);
        Frame(canvas, cell, Mix(tone, colours.back, edge));
    }
    const auto put = [&](const Box& part) { Fill(canvas, part, colours.text); };
    if (item.icon) {
        DrawIcon(canvas, layout_.Icon(box, icons.DrawnSize(*item.icon, layout_)), item, icons, back, colours.text);
    } else if (item.state & ODS_CHECKED) {
        item.radio ? Bullet(cell, layout_.Grown(6), put) : CheckMark(cell, layout_.Grown(7), put);
    }
}

// A disabled item's icon is drawn apart, on the same background, and made grey there; with high contrast, of the text's
// colour. So is any icon then, to see whether it stands out: one that does not is put on a plate of the text's colour.
void MenuPainter::DrawIcon(HDC canvas, const Box& place, const DrawnItem& item, const MenuIcons& icons, COLORREF back,
                           COLORREF text) noexcept {
    const bool disabled = item.state & (ODS_DISABLED | ODS_GRAYED);
    const Box all{0, 0, place.width(), place.height()};
    if (!(disabled || highContrast_) || !fading_.Require({all.right, all.bottom})) {
        return icons.Draw(*item.icon, canvas, place);
    }
    fading_.Clear(back);
    icons.Draw(*item.icon, fading_.get(), all);
    if (!disabled) {
        if (!fading_.StandsOut(back)) Fill(canvas, layout_.Plate(place), text);
        return icons.Draw(*item.icon, canvas, place);
    }
    highContrast_ ? fading_.MakePlain(back, text) : fading_.MakeGrey(back);
    BitBlt(canvas, place.left, place.top, all.right, all.bottom, fading_.get(), 0, 0, SRCCOPY);
}

void MenuPainter::DrawTexts(HDC canvas, const Box& box, const DrawnItem& item, COLORREF colour) const noexcept {
    const MenuText parts = SplitMenuText(Utf16(item.text));
    const SelectedObject font(canvas, FontFor(item.state & ODS_DEFAULT));
    const Box place = layout_.Text(box);
    SetBkMode(canvas, TRANSPARENT);
    SetTextColor(canvas, colour);
    DrawLine(canvas, parts.label, place, DT_LEFT | (item.state & ODS_NOACCEL ? DT_HIDEPREFIX : 0));
    if (!parts.accelerator.empty()) DrawLine(canvas, parts.accelerator, place, DT_RIGHT | DT_NOPREFIX);
}

}  // namespace velk
