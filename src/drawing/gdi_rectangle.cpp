#include "drawing/gdi_rectangle.h"

namespace velk {

constinit const ClassInfo CGDIRectangle::kInfo{
    .name = L"CGDIRectangle",
    .clsid = __uuidof(::CGDIRectangle),
    .iid = __uuidof(_CGDIRectangle),
    .policy = FailurePolicy::Report,
};

STDMETHODIMP CGDIRectangle::DrawRectangle(LONG* lnghDC) noexcept {
    return Guard([&] { DrawFlat(ContextOf(lnghDC), ::Rectangle); });
}

STDMETHODIMP CGDIRectangle::Draw3DRectangle(LONG* lnghDC, OLE_COLOR lngShadowColor,
                                            OLE_COLOR lngHighlightColor) noexcept {
    return Guard([&] { DrawTwice(ContextOf(lnghDC), ::Rectangle, lngShadowColor, lngHighlightColor); });
}

}  // namespace velk
