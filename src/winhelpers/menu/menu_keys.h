// Which item of an open menu a pressed key leads to. Needs no Windows.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

namespace velk {

// The character behind the last single ampersand, the one that the platform underlines; 0 when there is none.
char16_t MnemonicOf(std::u16string_view label) noexcept;

// What finds an item: its mnemonic or, when it has none, the first letter of its label.
struct ItemKey {
    char16_t character = 0;  // 0: no key leads to the item
    bool isMnemonic = false;

    bool operator==(const ItemKey&) const noexcept = default;
};

ItemKey ItemKeyOf(std::u16string_view label) noexcept;

struct KeyMatch {
    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);
    std::size_t position = kNone;
    bool onlyOne = false;
};

// The next item behind `current` that the character finds, beginning again at the top; mnemonics are searched before
// first letters. `items` has one key for each position; `current` may be kNone.
KeyMatch FindItemByKey(std::span<const ItemKey> items, char16_t character, std::size_t current) noexcept;

}  // namespace velk
