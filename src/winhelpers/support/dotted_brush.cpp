#include "winhelpers/support/dotted_brush.h"

#include "platform/colour.h"
#include "platform/whole_numbers.h"
#include "winhelpers/support/support_report.h"

namespace velk {
namespace {

constexpr const wchar_t* kClass = L"cDottedBrush";

}  // namespace

// The context's colours, changed where a colour is given and put back unless told to stay.
class cDottedBrush::Colours {
  public:
    Colours(::HDC context, LONG back, LONG fore) noexcept : context_(context) {
        if (back != kLeaveColour) back_ = SetBkColor(context, static_cast<COLORREF>(TranslateColor(back)));
        if (fore != kLeaveColour) fore_ = SetTextColor(context, static_cast<COLORREF>(TranslateColor(fore)));
    }
    Colours(const Colours&) = delete;
    Colours& operator=(const Colours&) = delete;
    ~Colours() {
        if (back_ != CLR_INVALID) SetBkColor(context_, back_);
        if (fore_ != CLR_INVALID) SetTextColor(context_, fore_);
    }
    void Stay() noexcept { back_ = fore_ = CLR_INVALID; }

  private:
    ::HDC context_;
    COLORREF back_ = CLR_INVALID;
    COLORREF fore_ = CLR_INVALID;
};

bool cDottedBrush::Create() noexcept {
    Trap(kClass, L"Create", [&] {
        Destroy();
        const BITMAP description{0, 16, 8, 2, 1, 1, pattern_.data()};
        const GdiObject bitmap(CreateBitmapIndirect(&description));
        brush_ = GdiObject(CreatePatternBrush(static_cast<HBITMAP>(bitmap.get())));
    });
    return false;
}

void cDottedBrush::Destroy() noexcept { brush_ = {}; }

void cDottedBrush::DrawLine(::HDC hDC, LONG xPixels, LONG yPixels, LONG widthPixels, LONG heightPixels, DWORD eRop,
                            LONG oBackColor, LONG oForeColor) noexcept {
    Trap(kClass, L"DrawLine", [&] {
        const SelectedObject brush(hDC, brush_.get());
        const Colours colours(hDC, oBackColor, oForeColor);
        PatBlt(hDC, xPixels, yPixels, widthPixels, heightPixels, eRop);
    });
}

void cDottedBrush::Rectangle(::HDC hDC, LONG xPixels, LONG yPixels, LONG widthRectPixels, LONG heightRectPixels,
                             LONG lineSizePixels, DWORD eRop, bool bFill, LONG oBackColor, LONG oForeColor) noexcept {
    Trap(kClass, L"Rectangle", [&] {
        const LONG right = AddLong(xPixels, widthRectPixels), bottom = AddLong(yPixels, heightRectPixels);
        if (bFill) {
            Colours(hDC, oBackColor, oForeColor).Stay();
            const RECT filled{xPixels, yPixels, right, bottom};
            FillRect(hDC, &filled, static_cast<HBRUSH>(brush_.get()));
            return;
        }
        const SelectedObject brush(hDC, brush_.get());
        const Colours colours(hDC, oBackColor, oForeColor);
        PatBlt(hDC, xPixels, yPixels, widthRectPixels, lineSizePixels, eRop);
        PatBlt(hDC, right, yPixels, lineSizePixels, heightRectPixels, eRop);
        PatBlt(hDC, xPixels, bottom, widthRectPixels, lineSizePixels, eRop);
        PatBlt(hDC, xPixels, yPixels, lineSizePixels, heightRectPixels, eRop);
    });
}

void cDottedBrush::SetBrushOrigin(::HDC hDC, LONG xPixels, LONG yPixels) noexcept {
    Trap(kClass, L"SetBrushOrigin",
         [&] { SetBrushOrgEx(hDC, SubtractLong(0, xPixels) & 7, SubtractLong(0, yPixels) & 7, nullptr); });
}

LONG cDottedBrush::TranslateColor(LONG oColor, HPALETTE palette) noexcept {
    return velk::TranslateColor(oColor, palette);
}

}  // namespace velk
