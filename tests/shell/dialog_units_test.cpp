#include <gtest/gtest.h>

#include <climits>
#include <cmath>

#include "fuzz/model.h"
#include "shell/file_dialog_text.h"
#include "shell/font_height.h"

namespace velk {
namespace {

using namespace std::string_literals;
using namespace file_dialog;
using namespace font_height;

TEST(FileDialogText, TrimmingEndsAtTheFirstPairOfNuls) {
    EXPECT_EQ(u"dir a b", TrimNulls(u"dir\0a\0b\0\0xyz\0\0\0"s));
    EXPECT_EQ(u"", TrimNulls(u"abc\0\0"s)) << "the pair ends the buffer";
}

TEST(FileDialogText, OnlyWhatStoodThereBeforeCountsAsRemains) {
    const auto left = [](std::string buffer, std::string before) {
        DropRemains(buffer, before);
        return buffer;
    };
    EXPECT_EQ("b\0\0\0\0\0"s, left("b\0nger"s, "longer"s));
    EXPECT_EQ("a b\0\0\0\0\0"s, left("a b\0\"b\"\0"s, "\"a\"\"\"b\"\0"s));
    EXPECT_EQ("d\0a\0b\0\0"s, left("d\0a\0b\0\0"s, "longer\0"s));  // several names
}

// The same in floating point, which holds every product of the runtime's 16-bit arithmetic.
TEST(FontHeight, IsExactOrOverflowsAndHalvesGoToTheEvenNeighbour) {
    const auto expect = [](bool fits, double exact, auto calculation) {
        EXPECT_EQ(fits ? static_cast<int>(std::nearbyint(exact)) : -1006, test::Answer(calculation)) << exact;
    };
    const std::pair<int, std::int16_t> screens[] = {{72, 72},   {96, 96},   {120, 120}, {144, 144},
                                                    {168, 160}, {192, 180}, {256, 240}, {1440, 1440}};
    for (const auto& [dots, pixels] : screens) {
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
