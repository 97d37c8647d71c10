// What needs no Windows of drawn menus, texts, keys and layout, and how columns follow a width.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "fuzz/replay.h"
#include "winhelpers/column_fit_model.h"
#include "winhelpers/menu/menu_keys.h"
#include "winhelpers/menu/menu_layout.h"
#include "winhelpers/menu/menu_text.h"

namespace velk::test {
namespace {

TEST(ColumnFit, ScalesAllButTheLastAndLeavesItTheRest) { Replay(&ColumnFitModel, corpus::column_fit, 5000, 60); }

TEST(MenuText, IsALabelWithAMnemonicAndAnAccelerator) {
    const struct {
        std::u16string_view text, label, accelerator;
        char16_t mnemonic;
    } cases[] = {
        {u"&Open...\tCtrl+O", u"&Open...", u"Ctrl+O", u'O'},
        {u"Black && White", u"Black && White", u"", 0},
        {u"&&&x", u"&&&x", u"", u'x'},
        {u"&First &Second", u"&First &Second", u"", u'S'},  // the platform underlines the last one
        {std::u16string_view(u"odd&x", 4), u"odd&", u"", 0},
        {u"Two\ttabs\there", u"Two", u"tabs\there", 0},
        {u"Right\baligned", u"Right", u"aligned", 0},
        {u"\tonly", u"", u"only", 0},
        {u"", u"", u"", 0},
    };
    for (const auto& c : cases) {
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
    } cases[] = {{u'A', kNone, 0, false}, {u'A', 0, 3, false},  {u'A', 3, 0, false},        {u'A', 4, 0, false},
                 {u'B', kNone, 2, true},  {u'B', 2, 2, true},   {u'C', 99, 4, true},        {u'D', 0, 5, true},
                 {u'X', 0, kNone, false}, {0, 0, kNone, false}, {u'x', kNone, kNone, false}};
    for (const auto& c : cases) {
        const KeyMatch match = FindItemByKey(keys, c.key, c.current);
        EXPECT_EQ(std::pair(c.position, c.onlyOne), std::pair(match.position, match.onlyOne)) << &c - cases;
    }
    EXPECT_EQ(kNone, FindItemByKey({}, u'A', 0).position);
}

std::string Describe(const MenuLayout& layout, Size icon) {
    const Size size = layout.ItemSize(100, 40), separator = layout.SeparatorSize();
    const Box item{5, 7, 5 + size.width, 7 + size.height};
    std::ostringstream text;
    text << size.width << 'x' << size.height << " separator " << separator.width << 'x' << separator.height;
    for (const Box& box : {layout.IconCell(item), layout.Icon(item, icon), layout.Text(item), layout.Arrow(item),
                           layout.SeparatorLine(item)}) {
        text << " | " << box.left << ' ' << box.top << ' ' << box.right << ' ' << box.bottom;
    }
    return text.str();
}

// Icon cell, icon, text, arrow and separator line of an item at 5, 7 with a label of 100 pixels and accelerators of 40.
// All but icon and texts grow with the density, and with a high text.
TEST(MenuLayout, PlacesThePartsOfAnItem) {
    EXPECT_EQ("206x24 separator 22x7 | 6 8 28 30 | 9 11 25 27 | 34 7 194 31 | 200 15 204 22 | 34 19 210 20",
              Describe({96, {16, 16}, 16}, {16, 16}));
    EXPECT_EQ("271x58 separator 56x9 | 6 8 62 64 | 10 26 58 46 | 70 7 235 65 | 250 26 260 45 | 70 36 275 37",
              Describe({120, {48, 20}, 40}, {48, 20}));
    EXPECT_EQ("288x56 separator 52x13 | 7 9 59 61 | 25 27 41 43 | 71 7 251 63 | 266 25 276 44 | 71 35 291 36",
              Describe({192, {16, 20}, 40}, {16, 16}));
    EXPECT_EQ(
        60, MenuLayout(96, {16, 16}, 16).ItemSize(100, 40).width - MenuLayout(96, {16, 16}, 16).ItemSize(100, 0).width);
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

}  // namespace
}  // namespace velk::test
