#include "winhelpers/support/dotted_brush.h"

#include "platform/colour.h"
#include "platform/whole_numbers.h"
#include "winhelpers/support/support_guard.h"

namespace velk {
namespace {

constexpr const wchar_t* kClass = L"cDottedBrush";

}  // namespace

// The context's colours, changed where a colour is given and put back unless told to stay.
class cDottedBrush::Colours {
  public:
    Colours(HDC context, LONG back, LONG fore) noexcept : context_(context) {
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
    HDC context_;
    COLORREF back_ = CLR_INVALID;
    COLORREF fore_ = CLR_INVALID;
};

bool cDottedBrush::Create() noexcept {
    Guard(kClass, L"Create", [&] {
        Destroy();
        const BITMAP description{0, 16, 8, 2, 1, 1, pattern_.data()};
        const GdiObject bitmap(CreateBitmapIndirect(&description));
        brush_ = GdiObject(CreatePatternBrush(static_cast<HBITMAP>(bitmap.get())));
    });
    return false;
}

void cDottedBrush::Destroy() noexcept { brush_ = {}; }

void cDottedBrush::DrawLine(HDC context, LONG x, LONG y, LONG width, LONG height, DWORD rop, LONG back,
                            LONG fore) noexcept {
    Guard(kClass, L"DrawLine", [&] {
        const SelectedObject brush(context, brush_.get());
        const Colours colours(context, back, fore);
        PatBlt(context, x, y, width, height, rop);
    });
}

void cDottedBrush::Rectangle(HDC context, LONG x, LONG y, LONG width, LONG height, LONG lineSize, DWORD rop, bool fill,
                             LONG back, LONG fore) noexcept {
    Guard(kClass, L"Rectangle", [&] {
        if (fill) {
            Colours(context, back, fore).Stay();
            const RECT filled{x, y, AddLong(x, width), AddLong(y, height)};
            FillRect(context, &filled, static_cast<HBRUSH>(brush_.get()));
            return;
        }
        const SelectedObject brush(context, brush_.get());
        const Colours colours(context, back, fore);
        PatBlt(context, x, y, width, lineSize, rop);
        PatBlt(context, AddLong(x, width), y, lineSize, height, rop);
        PatBlt(context, x, AddLong(y, height), width, lineSize, rop);
        PatBlt(context, x, y, lineSize, height, rop);
    });
}

void cDottedBrush::SetBrushOrigin(HDC context, LONG x, LONG y) noexcept {
    Guard(kClass, L"SetBrushOrigin",
          [&] { SetBrushOrgEx(context, SubtractLong(0, x) & 7, SubtractLong(0, y) & 7, nullptr); });
}

}  // namespace velk
