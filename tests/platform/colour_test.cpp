#include "platform/colour.h"

#include <gtest/gtest.h>

namespace velk {
namespace {

constexpr LONG System(DWORD index) { return static_cast<LONG>(0x80000000 | index); }

TEST(Colour, ANegativeOneIsASystemColour) {
    for (const int index : {COLOR_WINDOW, COLOR_BTNFACE, COLOR_HIGHLIGHT, COLOR_WINDOWTEXT}) {
        EXPECT_EQ(static_cast<LONG>(GetSysColor(index)), TranslateVBColor(System(static_cast<DWORD>(index))));
        EXPECT_EQ(static_cast<LONG>(GetSysColor(index)), TranslateColor(System(static_cast<DWORD>(index))));
    }
    EXPECT_NE(GetSysColor(COLOR_WINDOW), GetSysColor(COLOR_WINDOWTEXT));
    for (const LONG plain : {0L, 0xFFL, 0xFFFFFFL, 0x01000000L, 0x02ABCDEFL, 0x7FFFFFFFL}) {
        EXPECT_EQ(plain, TranslateVBColor(plain));
    }
}

TEST(Colour, TranslateColorFollowsThePlatform) {
    struct {
        LOGPALETTE palette{0x300, 2, {{1, 2, 3, 0}}};
        PALETTEENTRY second{10, 20, 30, 0};
    } description;
    const HPALETTE palette = CreatePalette(&description.palette);
    ASSERT_TRUE(palette);
    EXPECT_EQ(0x02123456, TranslateColor(0x00123456, palette));  // now means the nearest entry of the palette
    EXPECT_EQ(-1, TranslateColor(0x01000002, palette));          // beyond its last entry
    DeleteObject(palette);
}

}  // namespace
}  // namespace velk
