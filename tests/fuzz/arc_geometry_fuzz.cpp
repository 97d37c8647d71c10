#include <cmath>
#include <limits>

#include "drawing/arc_geometry.h"
#include "fuzz/fuzz.h"
#include "platform/run_time_error.h"

using namespace velk;
using namespace velk::test;

namespace {

constexpr std::int64_t kLeast = std::numeric_limits<std::int32_t>::min();
constexpr std::int64_t kMost = std::numeric_limits<std::int32_t>::max();
constexpr long double kDegree = 3.14159265358979L / 180;

struct Axis {
    std::int64_t centre, radius;
    bool fits;
};

// Half of a whole number, the halves to the even neighbour.
std::int64_t Half(std::int64_t twice) {
    const std::int64_t below = twice >> 1;
    return twice & 1 ? below + (below & 1) : below;
}

Axis AxisBetween(std::int64_t low, std::int64_t high) {
    const Axis axis{Half(low + high), Half(high - low), true};
    const auto fits = [](std::int64_t value) { return value >= kLeast && value <= kMost; };
    return {axis.centre, axis.radius, fits(high - low) && fits(axis.centre) && fits(axis.radius)};
}

// Within half a unit of where the exact ellipse has it. Angles in double are exact only to their last bit.
bool IsNear(std::int64_t given, const Axis& axis, long double share, double degrees) {
    const long double slack = 1e-5L + 1e-15L * std::fabs(static_cast<long double>(degrees) * axis.radius);
    return std::fabs(static_cast<long double>(given) - (axis.centre + share * axis.radius)) <= 0.5L + slack;
}

bool MayOverflow(const Axis& axis, double degrees) {
    const std::int64_t reach = std::abs(axis.radius);
    return axis.centre + reach > kMost - 1 || axis.centre - reach < kLeast + 1 || !(std::fabs(degrees) < 1e300);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Bytes bytes(data, size);
    const Box box{bytes.Number(), bytes.Number(), bytes.Number(), bytes.Number()};
    const double start = bytes.Double(), sweep = bytes.Double();
    const Axis x = AxisBetween(box.left, box.right), y = AxisBetween(box.top, box.bottom);
    try {
        const ArcEnds ends = EndsOfSweep(box, start, sweep);
        Require(x.fits && y.fits && std::isfinite(start) && std::isfinite(start + sweep));
        for (const auto& [point, angle] : {std::pair(ends.start, start), std::pair(ends.end, start + sweep)}) {
            if (std::fabs(angle) > 1e9) continue;  // a turn is less than what the last bit of the angle stands for
            Require(IsNear(point.x, x, std::cos(angle * kDegree), angle));
            Require(IsNear(point.y, y, -std::sin(angle * kDegree), angle));
        }
    } catch (const RuntimeError& error) {
        const bool overflows = MayOverflow(x, start) || MayOverflow(y, start + sweep) || !std::isfinite(sweep);
        Require(error.number() == 6 && (!x.fits || !y.fits || overflows));
    }
    return 0;
}
