// What needs no Windows of drawn menus: texts and keys.
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "winhelpers/menu/menu_keys.h"
#include "winhelpers/menu/menu_text.h"

namespace velk::test {
namespace {

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
    const std::tuple<char16_t, std::size_t, std::size_t, bool> cases[] = {
        // the key and where it leads from where
        {u'A', kNone, 0, false}, {u'A', 0, 3, false},  {u'A', 3, 0, false},        {u'A', 4, 0, false},
        {u'B', kNone, 2, true},  {u'B', 2, 2, true},   {u'C', 99, 4, true},        {u'D', 0, 5, true},
        {u'X', 0, kNone, false}, {0, 0, kNone, false}, {u'x', kNone, kNone, false}};
    for (const auto& [key, current, position, onlyOne] : cases) {
        const KeyMatch match = FindItemByKey(keys, key, current);
        EXPECT_EQ(std::pair(position, onlyOne), std::pair(match.position, match.onlyOne))
            << static_cast<int>(key) << " at " << current;
    }
    EXPECT_EQ(kNone, FindItemByKey({}, u'A', 0).position);
}

}  // namespace
}  // namespace velk::test
