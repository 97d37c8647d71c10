#include "drawing/drawing_tools.h"

#include "platform/colour.h"

namespace velk {
namespace {

COLORREF Rgb(LONG colour) noexcept { return static_cast<COLORREF>(TranslateVBColor(colour)); }

// The platform reads a packed bitmap from the address that the hatch is for this style, and would bring the host down
// where there is no memory.
bool IsReadable(ULONG_PTR address) noexcept {
    MEMORY_BASIC_INFORMATION region;
    if (!VirtualQuery(reinterpret_cast<const void*>(address), &region, sizeof region)) return false;
    return region.State == MEM_COMMIT && !(region.Protect & (PAGE_NOACCESS | PAGE_GUARD));
}

}  // namespace

GdiObject MakePen(const Outline& outline) noexcept {
    return GdiObject(CreatePen(outline.style, outline.width, Rgb(outline.colour)));
}

GdiObject MakeBrush(const Fill& fill) noexcept {
    const LOGBRUSH brush{static_cast<UINT>(fill.style), Rgb(fill.colour), static_cast<ULONG_PTR>(fill.hatch)};
    if (fill.style == BS_DIBPATTERNPT && !IsReadable(brush.lbHatch)) return GdiObject();
    return GdiObject(CreateBrushIndirect(&brush));
}

}  // namespace velk
