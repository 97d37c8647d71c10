#pragma once

#include <cmath>
#include <cstdint>
#include <utility>

#include "drawing/arc_geometry.h"
#include "fuzz/model.h"

namespace velk::test {

// In arithmetic of twice the width, and with the angles' sines and cosines in more digits.
class LiteralAxis {
  public:
    LiteralAxis(std::int64_t low, std::int64_t high) : centre_(Half(low + high)), radius_(Half(high - low)) {
        fits = Fits(high - low) && Fits(centre_) && Fits(radius_);
    }
    bool fits;

    // Within half a unit of where the exact ellipse has it. Angles in double are exact only to their last bit.
    bool IsNear(std::int64_t given, long double share, double degrees) const {
        const long double slack = 1e-5L + 1e-15L * std::fabs(static_cast<long double>(degrees) * radius_);
        return std::fabs(static_cast<long double>(given) - (centre_ + share * radius_)) <= 0.5L + slack;
    }
    bool MayOverflow(double degrees) const {
        const std::int64_t reach = std::abs(radius_);
        return !Fits(centre_ + reach + 1) || !Fits(centre_ - reach - 1) || !(std::fabs(degrees) < 1e300);
    }

  private:
    static bool Fits(std::int64_t value) { return value == static_cast<std::int32_t>(value); }
    // Of a whole number, the halves to the even neighbour.
    static std::int64_t Half(std::int64_t twice) { return (twice >> 1) + (twice & twice >> 1 & 1); }

    std::int64_t centre_, radius_;
};

inline void ArcGeometryModel(Bytes& bytes) {
    constexpr long double kDegree = 3.14159265358979L / 180;
    const Box box{bytes.Number(), bytes.Number(), bytes.Number(), bytes.Number()};
    const double start = bytes.Double(), sweep = bytes.Double();
    const LiteralAxis x(box.left, box.right), y(box.top, box.bottom);
    ArcEnds ends;
    if (const int error = Answer([&] { ends = EndsOfSweep(box, start, sweep); })) {
        const bool overflows = x.MayOverflow(start) || y.MayOverflow(start + sweep) || !std::isfinite(sweep);
        return Require(error == -1006 && (!x.fits || !y.fits || overflows));
    }
    Require(x.fits && y.fits && std::isfinite(start) && std::isfinite(start + sweep));
    for (const auto& [point, angle] : {std::pair(ends.start, start), std::pair(ends.end, start + sweep)}) {
        if (std::fabs(angle) > 1e9) continue;  // a turn is less than what the last bit of the angle stands for
        Require(x.IsNear(point.x, std::cos(angle * kDegree), angle));
        Require(y.IsNear(point.y, -std::sin(angle * kDegree), angle));
    }
}

}  // namespace velk::test
