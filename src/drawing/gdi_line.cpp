#include "drawing/gdi_line.h"

namespace velk {

constinit const ClassInfo CGDILine::kInfo{
    .name = L"CGDILine",
    .clsid = __uuidof(::CGDILine),
    .iid = __uuidof(_CGDILine),
    .policy = FailurePolicy::Report,
};

STDMETHODIMP CGDILine::DrawLine(LONG* lnghDC) noexcept {
    return Guard([&] { DrawFlat(ContextOf(lnghDC)); });
}

STDMETHODIMP CGDILine::Draw3DLine(LONG* lnghDC, OLE_COLOR lngShadowColor, OLE_COLOR lngHighlightColor) noexcept {
    return Guard([&] { DrawTwice(ContextOf(lnghDC), lngShadowColor, lngHighlightColor); });
}

void CGDILine::DrawFlat(HDC context) const noexcept {
    DrawOutlined(context, outline_, [&] {
        POINT earlier;
        if (MoveToEx(context, x1_, y1_, &earlier)) LineTo(context, x2_, y2_);
    });
}

// The second line lies one unit off whatever the width is, unlike the filled shapes' second outline. An overflow leaves
// the properties as they are at that point.
void CGDILine::DrawTwice(HDC context, OLE_COLOR shadow, OLE_COLOR highlight) {
    const OLE_COLOR borderColour = outline_.colour;
    outline_.colour = shadow;
    DrawFlat(context);
    outline_.colour = highlight;
    Move(1);
    DrawFlat(context);
    outline_.colour = borderColour;
    Move(-1);
}

void CGDILine::Move(LONG distance) {
    for (LONG* coordinate : {&x1_, &y1_, &x2_, &y2_}) *coordinate = AddLong(*coordinate, distance);
}

}  // namespace velk
