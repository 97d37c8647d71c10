#include "drawing/gdi_arc.h"

namespace velk {

constinit const ClassInfo CGDIArc::kInfo{
    .name = L"CGDIArc",
    .clsid = __uuidof(::CGDIArc),
    .iid = __uuidof(_CGDIArc),
    .policy = FailurePolicy::Report,
};

STDMETHODIMP CGDIArc::DrawArc(LONG* lnghDC, LONG lngXStartArc, LONG lngYStartArc, LONG lngXEndArc,
                              LONG lngYEndArc) noexcept {
    return Guard([&] {
        const HDC context = ContextOf(lnghDC);
        DrawOutlined(context, outline_, [&] {
            Arc(context, box_.left, box_.top, box_.right, box_.bottom, lngXStartArc, lngYStartArc, lngXEndArc,
                lngYEndArc);
        });
    });
}

STDMETHODIMP CGDIArc::DrawArcByAngle(LONG* lnghDC, DOUBLE dblAngleStart, DOUBLE dblAngleEnd) noexcept {
    return Guard([&] { DrawArcByAngleSweep(&Given(lnghDC), dblAngleStart, SweepBetween(dblAngleStart, dblAngleEnd)); });
}

STDMETHODIMP CGDIArc::DrawArcByAngleSweep(LONG* lnghDC, DOUBLE dblAngleStart, DOUBLE dblAngleSweep) noexcept {
    return Guard([&] {
        LONG& context = Given(lnghDC);
        const auto [start, end] = EndsOfSweep(box_, dblAngleStart, dblAngleSweep);
        DrawArc(&context, start.x, start.y, end.x, end.y);
    });
}

}  // namespace velk
