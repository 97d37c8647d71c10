// The parts of drawn menus that need no Windows: texts, keys, layout and colours.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <numeric>
#include <string_view>
#include <utility>
#include <vector>

#include "winhelpers/menu/menu_glyphs.h"
#include "winhelpers/menu/menu_keys.h"
#include "winhelpers/menu/menu_layout.h"
#include "winhelpers/menu/menu_pixels.h"
#include "winhelpers/menu/menu_text.h"

namespace velk::test {
namespace {

TEST(MenuText, IsALabelWithAMnemonicAndAnAccelerator) {
    struct Case {
        std::u16string_view text, label, accelerator;
        char16_t mnemonic;
    };
    const Case cases[] = {
        {u"&Open...\tCtrl+O", u"&Open...", u"Ctrl+O", u'O'},
        {u"Save &As", u"Save &As", u"", u'A'},
        {u"Black && White", u"Black && White", u"", 0},
        {u"&&&x", u"&&&x", u"", u'x'},
        {u"&First &Second", u"&First &Second", u"", u'S'},  // the platform underlines the last one
        {std::u16string_view(u"odd&x", 4), u"odd&", u"", 0},
        {u"Two\ttabs\there", u"Two", u"tabs\there", 0},
        {u"Right\baligned", u"Right", u"aligned", 0},
        {u"\tonly", u"", u"only", 0},
        {u"", u"", u"", 0},
    };
    for (const Case& c : cases) {
        const MenuText split = SplitMenuText(c.text);
        EXPECT_EQ(c.label, split.label);
        EXPECT_EQ(c.accelerator, split.accelerator);
        EXPECT_EQ(c.mnemonic, MnemonicOf(split.label)) << static_cast<char>(c.mnemonic);
    }
}

TEST(MenuKeys, LeadToTheNextItemAndTellTheOnlyOne) {
    constexpr std::size_t kNone = KeyMatch::kNone;
    std::vector<ItemKey> keys;  // the first letter of an item leads nowhere while a mnemonic does
    for (const auto* label : {u"&A", u"", u"C&B", u"x&A", u"C&C", u"D", u"BA"}) keys.push_back(ItemKeyOf(label));
    const struct {
        char16_t key;
        std::size_t current, position;
        bool onlyOne;
    } cases[] = {{u'A', kNone, 0, false}, {u'A', 0, 3, false}, {u'A', 3, 0, false}, {u'A', 4, 0, false},
                 {u'B', kNone, 2, true},  {u'B', 2, 2, true},  {u'C', 99, 4, true}, {u'D', 0, 5, true}};
    for (const auto& c : cases) {
        const KeyMatch match = FindItemByKey(keys, c.key, c.current);
        EXPECT_EQ(std::pair(c.position, c.onlyOne), std::pair(match.position, match.onlyOne));
    }
    for (const char16_t key : {u'X', u'\0'}) EXPECT_EQ(kNone, FindItemByKey(keys, key, 0).position);
    EXPECT_EQ(kNone, FindItemByKey({}, u'A', 0).position);
}

TEST(MenuLayout, KeepsPartsInsideTheItemAndApart) {
    for (const int dotsPerInch : {96, 120, 144, 192}) {
        for (const Size icon : {Size{16, 16}, Size{24, 24}, Size{48, 20}, Size{1, 1}}) {
            const MenuLayout layout(dotsPerInch, icon, dotsPerInch / 6);
            const Size size = layout.ItemSize(100, 40);
            const Box item{5, 7, 5 + size.width, 7 + size.height};
            const Box cell = layout.IconCell(item), text = layout.Text(item), arrow = layout.Arrow(item);
            const Box drawn = layout.Icon(item, icon), line = layout.SeparatorLine(item);
            EXPECT_LE(item.left, cell.left);
            EXPECT_LE(item.top, cell.top);
            EXPECT_LE(cell.bottom, item.bottom);
            EXPECT_LT(cell.right, text.left);
            EXPECT_GE(text.width(), 100 + 40 + layout.Scaled(16));  // both texts and room between them
            EXPECT_GE(text.height(), dotsPerInch / 6);
            EXPECT_LE(text.right, arrow.left);
            EXPECT_LE(arrow.right, item.right);
            EXPECT_EQ(2 * arrow.width() - 1, arrow.height());
            EXPECT_GT(drawn.left - cell.left, 0);
            EXPECT_GT(drawn.top - cell.top, 0);
            EXPECT_NEAR(drawn.left - cell.left, cell.right - drawn.right, 1);
            EXPECT_NEAR(drawn.top - cell.top, cell.bottom - drawn.bottom, 1);
            EXPECT_EQ(1, line.height());
            EXPECT_EQ(text.left, line.left);
            EXPECT_EQ(layout.Scaled(3), (layout.SeparatorSize().height - 1) / 2);
        }
    }
    // A pixel round the cell of a high icon, three above and below a high text; twice as many at twice the resolution.
    EXPECT_EQ(40 + 2 * (6 + 2), MenuLayout(192, {16, 40}, 16).ItemSize(0, 0).height);
    EXPECT_EQ(40 + 2 * 3, MenuLayout(96, {16, 16}, 40).ItemSize(0, 0).height);
    EXPECT_LT(MenuLayout(96, {16, 16}, 16).ItemSize(100, 0).width, MenuLayout(96, {16, 16}, 16).ItemSize(100, 1).width);
}

TEST(MenuLayout, ShrinksPicturesToTheIconAndNeverEnlargesThem) {
    const MenuLayout layout(96, {16, 16}, 16);
    const std::pair<Size, Size> fitted[] = {
        {{16, 16}, {16, 16}}, {{8, 12}, {8, 12}}, {{32, 32}, {16, 16}}, {{64, 32}, {16, 8}},
        {{32, 64}, {8, 16}},  {{8, 32}, {4, 16}}, {{1000, 1}, {16, 1}}, {{2000000000, 2000000000}, {16, 16}}};
    for (const auto& [picture, expected] : fitted) {
        const Size is = layout.Fit(picture);
        EXPECT_EQ(std::pair(expected.width, expected.height), std::pair(is.width, is.height)) << picture.width;
    }
}

using Boxes = std::vector<Box>;

template <class Draw>
Boxes PartsOf(Draw draw) {
    Boxes parts;
    draw([&](const Box& part) { parts.push_back(part); });
    return parts;
}

// A tick is a stroke down and a longer one up, a bullet round; both in the middle of their box.
TEST(MenuGlyphs, HaveTheirShapesAtEverySize) {
    constexpr Box kWithin{10, 20, 60, 70};
    for (int side = 6; side <= 30; ++side) {
        const auto size = static_cast<std::size_t>(side);
        const Boxes tick = PartsOf([&](auto put) { CheckMark(kWithin, side, put); });
        const Boxes bullet = PartsOf([&](auto put) { Bullet(kWithin, side, put); });
        const Boxes arrow = PartsOf([&](auto put) { ArrowHead({30, 40, 30 + side, 39 + 2 * side}, put); });
        for (const Boxes* parts : {&tick, &bullet, &arrow}) ASSERT_EQ(size, parts->size());
        for (std::size_t i = 0; i < size; ++i) {
            const int step = static_cast<int>(i);
            EXPECT_EQ((std::pair{tick[0].left + step, 1}), (std::pair{tick[i].left, tick[i].width()})) << side;
            EXPECT_EQ(tick[0].height(), tick[i].height()) << side;
            if (i > 0) {
                EXPECT_EQ(1, std::abs(tick[i].top - tick[i - 1].top)) << side;
            }
            EXPECT_EQ((std::pair{bullet[0].top + step, 1}), (std::pair{bullet[i].top, bullet[i].height()})) << side;
            EXPECT_EQ(bullet[i].width(), bullet[size - 1 - i].width()) << side;
            EXPECT_NEAR(bullet[i].left - kWithin.left, kWithin.right - bullet[i].right, 1) << side;
            EXPECT_EQ((Box{30 + step, 40 + step, 31 + step, 39 + 2 * side - step}), arrow[i]) << side;
        }
        const auto [highest, lowest] = std::ranges::minmax_element(tick, {}, &Box::top);
        EXPECT_NEAR(side / 3.0, lowest - tick.begin(), 1) << side;
        EXPECT_EQ(tick.back(), *highest) << side;
        EXPECT_LE(side / 3, tick[0].height()) << side;
        EXPECT_GE(side / 2 + 1, tick[0].height()) << side;
        EXPECT_NEAR(highest->top - kWithin.top, kWithin.bottom - lowest->bottom, 1) << side;
        EXPECT_NEAR(tick.front().left - kWithin.left, kWithin.right - tick.back().right, 1) << side;
        EXPECT_NEAR(bullet.front().top - kWithin.top, kWithin.bottom - bullet.back().bottom, 1) << side;
        const int area =
            std::accumulate(bullet.begin(), bullet.end(), 0, [](int sum, const Box& row) { return sum + row.width(); });
        EXPECT_EQ(side, std::ranges::max(bullet, {}, &Box::width).width());
        EXPECT_NEAR(0.785 * side * side, area, 0.05 * side * side + side / 2.0) << side;
    }
}

TEST(MenuPixels, FadedIconsAreGreyAndPalerOnAnUntouchedBackground) {
    constexpr std::uint32_t kBack = 0xF0E0D0;
    std::vector<std::uint32_t> pixels = {kBack, 0xFF000000 | kBack, 0x000000, 0xFF0000, 0x00FF00, 0x0000FF};
    Fade(pixels, kBack);
    EXPECT_EQ(kBack, pixels[0]);
    EXPECT_EQ(kBack, pixels[1] & 0xFFFFFF);
    EXPECT_GT(Brightness(pixels[2]), 64u);
    EXPECT_LT(Brightness(pixels[2]), Brightness(kBack) - 64);
    for (std::size_t i = 3; i < pixels.size(); ++i) {  // as far from grey as the background is, halved
        const int spread = static_cast<int>(pixels[i] >> 16 & 0xFF) - static_cast<int>(pixels[i] & 0xFF);
        EXPECT_LT(std::abs(spread), 0x20) << i;
        EXPECT_LT(Brightness(pixels[i]), Brightness(kBack));
    }
    EXPECT_LT(Brightness(pixels[5]), Brightness(pixels[3]));  // blue is darker than red, red than green
    EXPECT_LT(Brightness(pixels[3]), Brightness(pixels[4]));
    for (const std::uint32_t grey : {0x000000, 0x010101, 0x808080, 0xFFFFFF}) EXPECT_EQ(grey & 0xFF, Brightness(grey));
    EXPECT_EQ(0x123456u, Mix(0x123456, 0x123456, 100));
    EXPECT_EQ(0u, Mix(0, 0xFFFFFF, 255));
}

}  // namespace
}  // namespace velk::test
