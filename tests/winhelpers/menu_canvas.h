// Icons of every kind, a system in whose colours and sizes menus are drawn, and a sheet that their items are drawn on.
#pragma once

#include <algorithm>

#include "support/facts.h"
#include "support/procedure_patch.h"
#include "support/sheet.h"
#include "winhelpers/menu_fixture.h"

namespace velk::test {

struct ImageListTraits {
    using Handle = HIMAGELIST;
    static Handle Invalid() noexcept { return nullptr; }
    static void Close(Handle handle) noexcept { ImageList_Destroy(handle); }
};
using Images = UniqueHandle<ImageListTraits>;

// Image 0 is red, image 1 blue; the lower quarter of both is transparent.
inline Images TwoImages(int side) {
    Images images(ImageList_Create(side, side, ILC_COLOR24 | ILC_MASK, 2, 2));
    for (const COLORREF colour : {kRed, kBlue}) {
        const GdiObject bitmap(NewBitmap(colour, side, side, kMagenta, side * 3 / 4));
        ImageList_AddMasked(images.get(), static_cast<HBITMAP>(bitmap.get()), kMagenta);
    }
    return images;
}

// Colours that all differ, densities, and texts as bars that show their font by its height alone: in the usual one
// three pixels wide and seven high a character, in its bold one four and nine.
class StagedSystem {
  public:
    StagedSystem() { density = 96, fontHeight = -9, flat = TRUE, contrast = false, asked = 0; }

    static inline int density;  // of the window's screen; the system says 96 to programs like this one
    static inline LONG fontHeight;
    static inline BOOL flat;
    static inline bool contrast;  // a scheme of high contrast, white on black
    static inline int asked;      // how often for the non-client metrics

  private:
    static DWORD WINAPI Colour(int index) {
        constexpr struct {
            int index;
            COLORREF usual, contrast;
        } kColours[] = {{COLOR_MENU, RGB(212, 208, 200), RGB(0, 0, 0)},
                        {COLOR_MENUTEXT, RGB(0, 0, 0), RGB(255, 255, 255)},
                        {COLOR_GRAYTEXT, RGB(128, 128, 128), RGB(0, 240, 0)},
                        {COLOR_MENUHILIGHT, RGB(70, 130, 220), kMagenta},
                        {COLOR_HIGHLIGHT, RGB(0, 90, 60), RGB(26, 235, 255)},
                        {COLOR_HIGHLIGHTTEXT, RGB(255, 255, 255), RGB(55, 0, 110)}};
        for (const auto& colour : kColours) {
            if (colour.index == index) return contrast ? colour.contrast : colour.usual;
        }
        return kMagenta;
    }
    static LOGFONTW FontOf(HDC context) {
        LOGFONTW font{};
        GetObjectW(GetCurrentObject(context, OBJ_FONT), sizeof font, &font);
        return font;
    }
    static LONG WidthIn(const LOGFONTW& font) { return -font.lfHeight / 3 + (font.lfWeight >= FW_BOLD ? 1 : 0); }
    static BOOL WINAPI Metrics(HDC context, TEXTMETRICW* metrics) {
        metrics->tmAveCharWidth = WidthIn(FontOf(context));
        metrics->tmHeight = 2 * metrics->tmAveCharWidth + 1;
        return TRUE;
    }
    static int WINAPI DrawBars(HDC context, LPCWSTR text, int length, RECT* place, UINT flags) {
        const LONG step = WidthIn(FontOf(context)), height = 2 * step + 1;
        LONG width = 0, underlined = -step;
        for (int i = 0; i < length; ++i, width += step) {
            if (text[i] == L'&' && !(flags & DT_NOPREFIX) && text[++i] != L'&') underlined = width;
        }
        if (flags & DT_CALCRECT) return place->right = place->left + width, height;
        const LONG left = flags & DT_RIGHT ? place->right - width : place->left;
        const bool centred = flags & DT_VCENTER && flags & DT_SINGLELINE;
        const LONG top = place->top + (centred ? (place->bottom - place->top - height) / 2 : 0), bottom = top + height;
        if (GetBkMode(context) == OPAQUE) Paint(context, kMagenta, {left, top, left + width, bottom});
        for (LONG x = 0; x < width; x += step) {
            const bool line = x == underlined && !(flags & DT_HIDEPREFIX);
            Paint(context, GetTextColor(context), {left + x, top, left + x + step - 1, bottom + (line ? 2 : 0)});
        }
        return height;
    }
    static UINT WINAPI DensityOf(HWND) { return static_cast<UINT>(density); }
    static BOOL WINAPI Parameter(UINT action, UINT number, void* value, UINT flags) {
        const BOOL read = SystemParametersInfoA(action, number, value, flags);
        if (action == SPI_GETFLATMENU) *static_cast<BOOL*>(value) = flat;
        if (action == SPI_GETHIGHCONTRAST)
            static_cast<HIGHCONTRASTA*>(value)->dwFlags = contrast ? HCF_HIGHCONTRASTON : 0;
        if (action != SPI_GETNONCLIENTMETRICS) return read;
        ++asked;
        LOGFONTA& font = static_cast<NONCLIENTMETRICSA*>(value)->lfMenuFont;
        return font.lfHeight = fontHeight, font.lfWeight = FW_NORMAL, read;
    }

    const ProcedurePatch densityOf_{Library(), "GetDpiForWindow", Address(&DensityOf)};
    const ImportPatch patches_[4]{{Library(), "GetSysColor", Address(&Colour)},
                                  {Library(), "GetTextMetricsW", Address(&Metrics)},
                                  {Library(), "DrawTextW", Address(&DrawBars)},
                                  {Library(), "SystemParametersInfoA", Address(&Parameter)}};
};

class IconMenuDrawing : public IconMenuTest {
  protected:
    IconMenuDrawing() {
        EXPECT_EQ(S_OK, Attach(window_.get()));
        EXPECT_EQ(S_OK, icons_->put_ImageList(HandleToLong(images_.get())));
        for (const UINT position : {kOpen, kChecked, kDisabled}) {
            EXPECT_EQ(S_OK, icons_->put_CommandImage(static_cast<LONG>(CommandAt(position)), 0));
        }
        icons_->put_SubmenuImage(HandleOf(ItemsOf(menu)[kMore].submenu), 1);
        Open(menu);
    }
    void Reopen() { Close(), Open(menu); }

    SIZE Measure(UINT position) const {
        const ItemOfMenu item = ItemsOf(menu)[position];
        MEASUREITEMSTRUCT measured{ODT_MENU, 0, item.id, 0, 0, item.data};
        EXPECT_EQ(TRUE, SendMessageW(window_.get(), WM_MEASUREITEM, 0, reinterpret_cast<LPARAM>(&measured)));
        const LONG added = -2 * MulDiv(system_.fontHeight, system_.density, 96) / 3;  // by the system
        return {static_cast<LONG>(measured.itemWidth) + added, static_cast<LONG>(measured.itemHeight)};
    }
    // What could still be painted over afterwards becomes magenta.
    void Draw(const Sheet& sheet, LONG left, LONG top, UINT position, UINT state = 0) const {
        const ItemOfMenu item = ItemsOf(menu)[position];
        const SIZE size = Measure(position);
        const LONG width = item.type & MFT_SEPARATOR ? 90 : size.cx;  // separators take what the others need
        const RECT place{left, top, left + width, top + size.cy};
        const int saved = SaveDC(sheet.get());
        DRAWITEMSTRUCT drawn{ODT_MENU,    0,     item.id,  0, state, reinterpret_cast<HWND>(menu),
                             sheet.get(), place, item.data};
        EXPECT_EQ(TRUE, SendMessageW(window_.get(), WM_DRAWITEM, 0, reinterpret_cast<LPARAM>(&drawn)));
        Paint(sheet.get(), kMagenta, place);
        RestoreDC(sheet.get(), saved);
    }

    static constexpr LONG kCommand = CommandAt(kOpen);
    StagedSystem system_;
    Images images_ = TwoImages(16);
};

}  // namespace velk::test
