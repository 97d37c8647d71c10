// CGDIRectangle: a rectangle with a filling.
#pragma once

#include "drawing/gdi_rectangle.idl.h"
#include "drawing/shape.h"

namespace velk {

struct RectangleTypes {
    using Interface = _CGDIRectangle;
    using PenStyle = EnumRectanglePenStyles;
    using MixMode = EnumRectangleRasterOps;
    using BrushStyle = EnumRectangleBrushStyles;
    using HatchStyle = EnumRectangleHatchStyles;
};

class CGDIRectangle final : public FilledShape<RectangleTypes> {
  public:
    static const ClassInfo kInfo;

    CGDIRectangle() noexcept : FilledShape(kInfo) {}

    STDMETHODIMP DrawRectangle(LONG* lnghDC) noexcept override;
    STDMETHODIMP Draw3DRectangle(LONG* lnghDC, OLE_COLOR lngShadowColor, OLE_COLOR lngHighlightColor) noexcept override;
};

}  // namespace velk
