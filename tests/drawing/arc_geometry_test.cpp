#include "drawing/arc_geometry.h"

#include <gtest/gtest.h>

#include <limits>

#include "platform/run_time_error.h"

namespace velk {
namespace {

constexpr std::int32_t kLeast = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();

TEST(ArcGeometry, PutsTheEndsOnTheEllipse) {
    struct Case {
        Box box;
        double start, sweep;
        Point first, last;
    };
    const Case cases[] = {
        {{0, 0, 100, 100}, 0, 90, {100, 50}, {50, 0}},
        {{0, 0, 100, 100}, 90, 180, {50, 0}, {50, 100}},
        {{0, 0, 100, 100}, -90, 90, {50, 100}, {100, 50}},
        {{0, 0, 100, 100}, 45, 360, {85, 15}, {85, 15}},
        {{10, 20, 210, 60}, 30, 90, {197, 30}, {60, 23}},
        {{100, 100, 0, 0}, 0, 90, {0, 50}, {50, 100}},  // a box inside out
        // Halves of centre and radius go to the even neighbour, each on its own.
        {{0, 0, 5, 7}, 0, 90, {4, 4}, {2, 0}},
        {{1, 1, 4, 6}, 0, -90, {4, 4}, {2, 6}},
        {{-5, -7, 0, 0}, 180, 90, {-4, -4}, {-2, 0}},
        {{0, 0, 0, 0}, 12, 34, {0, 0}, {0, 0}},
        {{kLeast, 0, -2, 2}, 180, 0, {kLeast, 1}, {kLeast, 1}},  // the widest there is
    };
    for (const Case& c : cases) {
        const auto [first, last] = EndsOfSweep(c.box, c.start, c.sweep);
        EXPECT_EQ(c.first, first) << c.box.right << ' ' << c.start;
        EXPECT_EQ(c.last, last) << c.box.right << ' ' << c.start;
    }
}

// A million turns with a pi that is short by 3.2e-15 end 6.5e-9 before the full circle; the full double would end
// there.
TEST(ArcGeometry, CountsWithAPiOfFifteenDigits) {
    const auto [first, last] = EndsOfSweep({-1'000'000'000, -1'000'000'000, 1'000'000'000, 1'000'000'000}, 0, 360e6);
    EXPECT_EQ((Point{1'000'000'000, 0}), first);
    EXPECT_EQ(1'000'000'000, last.x);
    EXPECT_NEAR(6.5, last.y, 1.5);
}

TEST(ArcGeometry, OverflowIsAnError) {
    const auto error = [](auto&& compute) {
        try {
            compute();
        } catch (const RuntimeError& thrown) {
            return thrown.number();
        }
        return 0;
    };
    constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();
    struct Case {
        Box box;
        double start, sweep;
    };
    const Case cases[] = {
        {{kLeast, 0, 0, 10}, 0, 90},    {{-1, 0, kMost, 10}, 90, 0},
        {{0, kMost, 10, -2}, 0, 90},    {{0, 0, kMost, 10}, 0, 90},  // the radius rounds up, beyond the range
        {{0, 0, 10, 10}, 1e308, 0},     {{0, 0, 10, 10}, 1e308, 1e308},
        {{0, 0, 10, 10}, kNoNumber, 0}, {{0, 0, 10, 10}, 0, -std::numeric_limits<double>::infinity()},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(6, error([&] { EndsOfSweep(c.box, c.start, c.sweep); })) << c.box.right << ' ' << c.start;
    }
    EXPECT_EQ(6, error([] { SweepBetween(-1e308, 1.7e308); }));
    EXPECT_EQ(90, SweepBetween(30, 120));
}

}  // namespace
}  // namespace velk
