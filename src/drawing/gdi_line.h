// CGDILine: a straight line. The device context's current position stays at its end, deliberately.
#pragma once

#include "drawing/gdi_line.idl.h"
#include "drawing/shape.h"

namespace velk {

struct LineTypes {
    using Interface = _CGDILine;
    using PenStyle = EnumLinePenStyles;
    using MixMode = EnumLineRasterOps;
};

class CGDILine final : public OutlinedShape<LineTypes> {
  public:
    static const ClassInfo kInfo;

    CGDILine() noexcept : OutlinedShape(kInfo) {}

    STDMETHODIMP get_X1(LONG* result) noexcept override { return Get(result, x1_); }
    STDMETHODIMP put_X1(LONG* Value) noexcept override { return Let(Value, x1_); }
    STDMETHODIMP get_Y1(LONG* result) noexcept override { return Get(result, y1_); }
    STDMETHODIMP put_Y1(LONG* Value) noexcept override { return Let(Value, y1_); }
    STDMETHODIMP get_X2(LONG* result) noexcept override { return Get(result, x2_); }
    STDMETHODIMP put_X2(LONG* Value) noexcept override { return Let(Value, x2_); }
    STDMETHODIMP get_Y2(LONG* result) noexcept override { return Get(result, y2_); }
    STDMETHODIMP put_Y2(LONG* Value) noexcept override { return Let(Value, y2_); }
    STDMETHODIMP DrawLine(LONG* lnghDC) noexcept override;
    STDMETHODIMP Draw3DLine(LONG* lnghDC, OLE_COLOR lngShadowColor, OLE_COLOR lngHighlightColor) noexcept override;

  private:
    void DrawFlat(HDC context) const noexcept;
    void DrawTwice(HDC context, OLE_COLOR shadow, OLE_COLOR highlight);
    void Move(LONG distance);

    LONG x1_ = 0;
    LONG y1_ = 0;
    LONG x2_ = 0;
    LONG y2_ = 0;
};

}  // namespace velk
