#include "shell/font_height.h"

#include <gtest/gtest.h>

#include <functional>

#include "platform/run_time_error.h"

namespace velk::font_height {
namespace {

int ErrorOf(const std::function<void()>& conversion) {
    try {
        conversion();
    } catch (const RuntimeError& error) {
        return error.number();
    }
    return 0;
}

TEST(FontHeight, PixelsPerInchGoByWholeTwips) {
    const std::pair<int, int> cases[] = {{72, 72},   {96, 96},   {120, 120},  {144, 144},
                                         {192, 180}, {168, 160}, {1440, 1440}};
    for (const auto& [dots, pixels] : cases) EXPECT_EQ(pixels, PixelsPerInch(dots)) << dots;
    EXPECT_EQ(11, ErrorOf([] { PixelsPerInch(0); }));
    EXPECT_EQ(11, ErrorOf([] { PixelsPerInch(5000); }));
}

TEST(FontHeight, RoundsHalvesToEven) {
    const std::pair<std::int16_t, int> heights[] = {{8, -11}, {0, 0}, {9, -12}, {10, -13}, {-8, 11}, {72, -96}};
    for (const auto& [points, height] : heights) EXPECT_EQ(height, FromPoints(points, 96)) << points;
    EXPECT_EQ(-2, FromPoints(1, 180));  // 2.5
    EXPECT_EQ(-4, FromPoints(1, 252));  // 3.5
    const std::pair<int, int> points[] = {{-11, 8}, {11, 8}, {0, 0}, {-13, 10}, {-14, 10}, {-2, 2}, {-6, 4}};
    for (const auto& [height, size] : points) EXPECT_EQ(size, ToPoints(height, 96)) << height;
}

TEST(FontHeight, ProductsThatDoNotFitAreOverflows) {
    EXPECT_EQ(-455, FromPoints(341, 96));
    EXPECT_EQ(6, ErrorOf([] { FromPoints(342, 96); }));
    EXPECT_EQ(6, ErrorOf([] { FromPoints(-342, 96); }));
    EXPECT_EQ(6, ErrorOf([] { FromPoints(-256, 128); }));  // -32768 has no counterpart
    for (const int height : {455, -455}) EXPECT_EQ(341, ToPoints(height, 96));
    for (const int height : {456, -456, 40000, -2147483647 - 1}) EXPECT_EQ(6, ErrorOf([=] { ToPoints(height, 96); }));
}

}  // namespace
}  // namespace velk::font_height
