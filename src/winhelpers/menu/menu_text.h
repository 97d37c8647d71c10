// What a menu item's text says: "&Open...\tCtrl+O" is a label with its mnemonic, and an accelerator.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

namespace velk {

struct MenuText {
    std::u16string_view label;
    std::u16string_view accelerator;  // without the tab; empty when there is none
};

// Splits at the first tab, or at the backspace that right-aligns what follows it.
MenuText SplitMenuText(std::u16string_view text) noexcept;

// The character behind the last single ampersand, the one that the platform underlines; 0 when there is none.
char16_t MnemonicOf(std::u16string_view label) noexcept;

struct KeyMatch {
    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);
    std::size_t position = kNone;
    bool onlyOne = false;
};

// The item that a pressed key leads to: the next one behind `current` with that key, beginning again at the top.
// `keys` has one key for each position, 0 for items without one, which no key leads to; `current` may be kNone.
KeyMatch FindMenuKey(std::span<const char16_t> keys, char16_t key, std::size_t current) noexcept;

}  // namespace velk
