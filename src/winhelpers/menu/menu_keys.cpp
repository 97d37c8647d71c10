#include "winhelpers/menu/menu_keys.h"

#include <algorithm>

namespace velk {

char16_t MnemonicOf(std::u16string_view label) noexcept {
    char16_t mnemonic = 0;
    for (std::size_t i = 0; i + 1 < label.size(); ++i) {
        if (label[i] != u'&') continue;
        ++i;  // past the next character, which a double ampersand uses up
        if (label[i] != u'&') mnemonic = label[i];
    }
    return mnemonic;
}

ItemKey ItemKeyOf(std::u16string_view label) noexcept {
    if (const char16_t mnemonic = MnemonicOf(label)) return {mnemonic, true};
    return {label.empty() ? char16_t{0} : label.front(), false};
}

KeyMatch FindItemByKey(std::span<const ItemKey> items, char16_t character, std::size_t current) noexcept {
    if (character == 0) return {};
    const std::size_t next = current < items.size() ? current + 1 : 0;
    for (const ItemKey wanted : {ItemKey{character, true}, ItemKey{character, false}}) {
        for (std::size_t step = 0; step < items.size(); ++step) {
            const std::size_t position = (next + step) % items.size();
            if (items[position] == wanted) return {position, std::ranges::count(items, wanted) == 1};
        }
    }
    return {};
}

}  // namespace velk
