#include "drawing/arc_geometry.h"

#include <cmath>

#include "platform/whole_numbers.h"

namespace velk {
namespace {

// Deliberately these 15 digits and not the full double: the rounded points depend on it.
constexpr double kPi = 3.14159265358979;

// Floating-point overflow is an error here, not an infinity.
double Finite(double value) {
    if (!std::isfinite(value)) throw RuntimeError(Error::Overflow);
    return value;
}

struct Axis {
    std::int32_t centre;
    std::int32_t radius;
};

Axis AxisBetween(std::int32_t low, std::int32_t high) {
    const double half = SubtractLong(high, low) / 2.0;
    return {RoundToLong(half + low), RoundToLong(half)};
}

Point PointAt(const Axis& x, const Axis& y, double degrees) {
    const double radians = Finite(degrees * kPi) / 180;
    return {RoundToLong(x.radius * std::cos(radians) + x.centre),
            RoundToLong(-std::sin(radians) * y.radius + y.centre)};
}

}  // namespace

ArcEnds EndsOfSweep(const Box& box, double startDegrees, double sweepDegrees) {
    const Axis x = AxisBetween(box.left, box.right);
    const Axis y = AxisBetween(box.top, box.bottom);
    const Point start = PointAt(x, y, startDegrees);
    return {start, PointAt(x, y, Finite(startDegrees + sweepDegrees))};
}

double SweepBetween(double startDegrees, double endDegrees) { return Finite(endDegrees - startDegrees); }

}  // namespace velk
