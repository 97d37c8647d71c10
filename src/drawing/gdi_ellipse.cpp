#include "drawing/gdi_ellipse.h"

namespace velk {

constinit const ClassInfo CGDIEllipse::kInfo{
    .name = L"CGDIEllipse",
    .clsid = __uuidof(::CGDIEllipse),
    .iid = __uuidof(_CGDIEllipse),
    .policy = FailurePolicy::Report,
};

STDMETHODIMP CGDIEllipse::DrawEllipse(LONG* lnghDC) noexcept {
    return Guard([&] { DrawFlat(ContextOf(lnghDC), ::Ellipse); });
}

STDMETHODIMP CGDIEllipse::Draw3DEllipse(LONG* lnghDC, OLE_COLOR lngShadowColor, OLE_COLOR lngHighlightColor) noexcept {
    return Guard([&] { DrawTwice(ContextOf(lnghDC), ::Ellipse, lngShadowColor, lngHighlightColor); });
}

}  // namespace velk
