#include "drawing/arc_geometry.h"

#include <gtest/gtest.h>

#include "fuzz/model.h"

namespace velk::test {
namespace {

TEST(ArcGeometry, PutsTheEndsOnTheEllipseOrOverflows) {
    const auto expect = [](Box box, double start, double sweep, Point first, Point last) {
        const ArcEnds ends = EndsOfSweep(box, start, sweep);
        EXPECT_EQ(first, ends.start) << box.right << ' ' << start;
        EXPECT_EQ(last, ends.end) << box.right << ' ' << start;
    };
    expect({10, 20, 210, 60}, 30, 90, {197, 30}, {60, 23});
    expect({100, 100, 0, 0}, 0, 90, {0, 50}, {50, 100});  // a box inside out
    // Halves of centre and radius go to the even neighbour, each on its own.
    expect({1, 1, 4, 6}, 0, -90, {4, 4}, {2, 6});
    expect({INT32_MIN, 0, -2, 2}, 180, 0, {INT32_MIN, 1}, {INT32_MIN, 1});  // the widest there is
    EXPECT_EQ(90, SweepBetween(30, 120));
    EXPECT_EQ(-1006, Answer([] { return static_cast<int>(SweepBetween(-1e308, 1.7e308)); }));
}

// A million turns with a pi that is short by 3.2e-15 end 6.5e-9 before the full circle; the full double would end
// there.
TEST(ArcGeometry, CountsWithAPiOfFifteenDigits) {
    const auto [first, last] = EndsOfSweep({-1'000'000'000, -1'000'000'000, 1'000'000'000, 1'000'000'000}, 0, 360e6);
    EXPECT_EQ((Point{1'000'000'000, 0}), first);
    EXPECT_EQ(1'000'000'000, last.x);
    EXPECT_NEAR(6.5, last.y, 1.5);
}

}  // namespace
}  // namespace velk::test
