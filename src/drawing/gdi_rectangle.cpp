#include "drawing/gdi_rectangle.h"

namespace velk {

constinit const ClassInfo CGDIRectangle::kInfo{
    .name = L"CGDIRectangle",
    .clsid = __uuidof(::CGDIRectangle),
    .iid = __uuidof(_CGDIRectangle),
    .events = nullptr,
    .policy = FailurePolicy::Report,
    .componentFailure = S_OK,
    .creationFailed = nullptr,
};

STDMETHODIMP CGDIRectangle::DrawRectangle(LONG* lnghDC) noexcept {
    return Guard(L"DrawRectangle", [&] { DrawFlat(ContextOf(lnghDC), ::Rectangle); });
}

STDMETHODIMP CGDIRectangle::Draw3DRectangle(LONG* lnghDC, LONG lngShadowColor, LONG lngHighlightColor) noexcept {
    return Guard(L"Draw3DRectangle",
                 [&] { DrawTwice(ContextOf(lnghDC), ::Rectangle, lngShadowColor, lngHighlightColor); });
}

}  // namespace velk
