// Icons of every kind, a system in whose colours and sizes menus are drawn, and a sheet that their items are drawn on.
#pragma once

#include <algorithm>

#include "support/facts.h"
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

// Colours that all differ, one density, and texts as bars on which no font has a say: three pixels wide and seven high
// a character, bold ones four and nine.
class StagedSystem {
  public:
    StagedSystem() { dotsPerInch = 96, flat = TRUE, asked = 0; }

    static inline int dotsPerInch;
    static inline BOOL flat;
    static inline int asked;  // how often for the non-client metrics

  private:
    static DWORD WINAPI Colour(int index) {
        constexpr std::pair<int, COLORREF> kColours[] = {
            {COLOR_MENU, RGB(212, 208, 200)},     {COLOR_MENUTEXT, RGB(0, 0, 0)},
            {COLOR_GRAYTEXT, RGB(128, 128, 128)}, {COLOR_MENUHILIGHT, RGB(70, 130, 220)},
            {COLOR_HIGHLIGHT, RGB(0, 90, 60)},    {COLOR_HIGHLIGHTTEXT, RGB(255, 255, 255)}};
        const auto* const found = std::ranges::find(kColours, index, &std::pair<int, COLORREF>::first);
        return found == std::end(kColours) ? kMagenta : found->second;
    }
    static bool IsBold(HDC context) {
        LOGFONTW font{};
        GetObjectW(GetCurrentObject(context, OBJ_FONT), sizeof font, &font);
        return font.lfWeight >= FW_BOLD;
    }
    static BOOL WINAPI Metrics(HDC context, TEXTMETRICW* metrics) {
        metrics->tmHeight = IsBold(context) ? 9 : 7;
        metrics->tmAveCharWidth = 3;
        return TRUE;
    }
    static int WINAPI DrawBars(HDC context, LPCWSTR text, int length, RECT* place, UINT flags) {
        const int step = IsBold(context) ? 4 : 3, height = 2 * step + 1;
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
    static int WINAPI Capabilities(HDC context, int index) {
        return index == LOGPIXELSY ? dotsPerInch : GetDeviceCaps(context, index);
    }
    static BOOL WINAPI Parameter(UINT action, UINT number, void* value, UINT flags) {
        asked += action == SPI_GETNONCLIENTMETRICS;
        if (action == SPI_GETFLATMENU) return *static_cast<BOOL*>(value) = flat, TRUE;
        return SystemParametersInfoA(action, number, value, flags);
    }

    const ImportPatch patches_[5]{{Library(), "GetSysColor", Address(&Colour)},
                                  {Library(), "GetTextMetricsW", Address(&Metrics)},
                                  {Library(), "DrawTextW", Address(&DrawBars)},
                                  {Library(), "GetDeviceCaps", Address(&Capabilities)},
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
        return {static_cast<LONG>(measured.itemWidth) + 6,
                static_cast<LONG>(measured.itemHeight)};  // the system's part
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
