// CGDIArc: an elliptical arc, given by its box and two points or angles.
#pragma once

#include "drawing/gdi_arc.idl.h"
#include "drawing/shape.h"

namespace velk {

struct ArcTypes {
    using Interface = _CGDIArc;
    using PenStyle = EnumArcPenStyles;
    using MixMode = EnumArcRasterOps;
};

class CGDIArc final : public BoxedShape<ArcTypes> {
  public:
    static const ClassInfo kInfo;

    CGDIArc() noexcept : BoxedShape(kInfo) {}

    STDMETHODIMP DrawArc(LONG* lnghDC, LONG lngXStartArc, LONG lngYStartArc, LONG lngXEndArc,
                         LONG lngYEndArc) noexcept override;
    STDMETHODIMP DrawArcByAngle(LONG* lnghDC, DOUBLE dblAngleStart, DOUBLE dblAngleEnd) noexcept override;
    STDMETHODIMP DrawArcByAngleSweep(LONG* lnghDC, DOUBLE dblAngleStart, DOUBLE dblAngleSweep) noexcept override;
};

}  // namespace velk
