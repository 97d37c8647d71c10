// CGDIEllipse: an ellipse with a filling.
#pragma once

#include "drawing/gdi_ellipse.idl.h"
#include "drawing/shape.h"

namespace velk {

struct EllipseTypes {
    using Interface = _CGDIEllipse;
    using PenStyle = EnumEllipsePenStyles;
    using MixMode = EnumEllipseRasterOps;
    using BrushStyle = EnumEllipseBrushStyles;
    using HatchStyle = EnumEllipseHatchStyles;
};

class CGDIEllipse final : public FilledShape<EllipseTypes> {
  public:
    static const ClassInfo kInfo;

    CGDIEllipse() noexcept : FilledShape(kInfo) {}

    STDMETHODIMP DrawEllipse(LONG* lnghDC) noexcept override;
    STDMETHODIMP Draw3DEllipse(LONG* lnghDC, OLE_COLOR lngShadowColor, OLE_COLOR lngHighlightColor) noexcept override;
};

}  // namespace velk
