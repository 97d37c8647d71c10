#include "drawing/drawing_tools.h"

#include "platform/colour.h"
#include "platform/long_handles.h"
#include "platform/memory.h"

namespace velk {
namespace {

COLORREF Rgb(OLE_COLOR colour) noexcept { return static_cast<COLORREF>(TranslateVBColor(static_cast<LONG>(colour))); }

}  // namespace

GdiObject MakePen(const Outline& outline) noexcept {
    return GdiObject(CreatePen(outline.style, outline.width, Rgb(outline.colour)));
}

GdiObject MakeBrush(const Fill& fill) noexcept {
    LOGBRUSH brush{static_cast<UINT>(fill.style), Rgb(fill.colour), static_cast<ULONG_PTR>(fill.hatch)};
    if (fill.style == BS_DIBPATTERNPT) {  // the hatch is the address of a packed bitmap
        const auto* const bitmap = AddressFrom<const BITMAPCOREHEADER*>(fill.hatch);
        if (!IsReadable(bitmap, sizeof *bitmap)) return GdiObject();
        brush.lbHatch = reinterpret_cast<ULONG_PTR>(bitmap);
    }
    return GdiObject(CreateBrushIndirect(&brush));
}

}  // namespace velk
