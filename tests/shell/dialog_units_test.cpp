#include <gtest/gtest.h>

#include <functional>

#include "fuzz/replay.h"
#include "platform/run_time_error.h"
#include "shell/file_dialog_text.h"
#include "shell/file_dialog_text_model.h"
#include "shell/font_height.h"

namespace velk {
namespace {

using namespace std::string_literals;
using namespace file_dialog;
using namespace font_height;

TEST(FileDialogText, TrimmingEndsAtTheFirstPairOfNuls) {
    test::Replay(&test::FileDialogTextModel, test::corpus::file_dialog_text, 20000, 16);
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

int ErrorOf(const std::function<void()>& conversion) try { return conversion(), 0; } catch (const RuntimeError& error) {
    return error.number();
}

TEST(FontHeight, PixelsPerInchGoByWholeTwips) {
    const std::pair<int, int> cases[] = {{72, 72},   {96, 96},   {120, 120},  {144, 144},
                                         {192, 180}, {168, 160}, {1440, 1440}};
    for (const auto& [dots, pixels] : cases) EXPECT_EQ(pixels, PixelsPerInch(dots)) << dots;
    for (const int dots : {0, 5000}) EXPECT_EQ(11, ErrorOf([=] { PixelsPerInch(dots); })) << dots;
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
}  // namespace velk
