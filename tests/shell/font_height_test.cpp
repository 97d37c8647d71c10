#include <gtest/gtest.h>

#include <climits>
#include <cmath>

#include "fuzz/model.h"
#include "shell/font_height.h"

namespace velk {
namespace {

using namespace font_height;

// The same in floating point, which holds every product of the runtime's 16-bit arithmetic.
TEST(FontHeight, IsExactOrOverflowsAndHalvesGoToTheEvenNeighbour) {
    const auto expect = [](bool fits, double exact, auto calculation) {
        EXPECT_EQ(fits ? static_cast<int>(std::nearbyint(exact)) : -1006, test::Answer(calculation)) << exact;
    };
    const std::pair<int, std::int16_t> screens[] = {{72, 72},   {96, 96},   {120, 120}, {144, 144},
                                                    {168, 160}, {192, 180}, {256, 240}, {1440, 1440}};
    for (const auto& [dots, perInch] : screens) {
        const int pixels = perInch;
        EXPECT_EQ(pixels, PixelsPerInch(dots));  // by whole twips
        for (std::int16_t size = -500; size <= 500; ++size) {
            expect(std::abs(size * pixels) < 32768, -size * pixels / 72.0, [=] { return FromPoints(size, pixels); });
            expect(std::abs(size * 72) < 32768, std::abs(size) * 72.0 / pixels, [=] { return ToPoints(size, pixels); });
        }
    }
    expect(false, -32768, [] { return FromPoints(-256, 128); });  // has no counterpart
    for (const int height : {40000, INT_MIN}) expect(false, height, [=] { return ToPoints(height, 96); });
    for (const int dots : {0, 5000}) EXPECT_EQ(-1011, test::Answer([=] { return PixelsPerInch(dots); })) << dots;
}

}  // namespace
}  // namespace velk
