#include "drawing/gdi_ellipse.h"

namespace velk {

constinit const ClassInfo CGDIEllipse::kInfo{
    .name = L"CGDIEllipse",
    .clsid = __uuidof(::CGDIEllipse),
    .iid = __uuidof(_CGDIEllipse),
    .events = nullptr,
    .policy = FailurePolicy::Report,
    .componentFailure = S_OK,
    .creationFailed = nullptr,
};

STDMETHODIMP CGDIEllipse::DrawEllipse(LONG* lnghDC) noexcept {
    return Guard(L"DrawEllipse", [&] { DrawFlat(ContextOf(lnghDC), ::Ellipse); });
}

STDMETHODIMP CGDIEllipse::Draw3DEllipse(LONG* lnghDC, LONG lngShadowColor, LONG lngHighlightColor) noexcept {
    return Guard(L"Draw3DEllipse", [&] { DrawTwice(ContextOf(lnghDC), ::Ellipse, lngShadowColor, lngHighlightColor); });
}

}  // namespace velk
