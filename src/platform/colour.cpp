#include "platform/colour.h"

#include "platform/platform.h"

namespace velk {

LONG TranslateVBColor(LONG colour) noexcept {
    return colour < 0 ? static_cast<LONG>(GetSysColor(colour & 0x7FFFFFFF)) : colour;
}

LONG TranslateColor(LONG colour, HPALETTE palette) noexcept {
    COLORREF translated = CLR_INVALID;
    const bool failed = FAILED(OleTranslateColor(static_cast<OLE_COLOR>(colour), palette, &translated));
    return static_cast<LONG>(failed ? CLR_INVALID : translated);
}

}  // namespace velk
