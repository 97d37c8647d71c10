// What a menu item's text says: "&Open...\tCtrl+O" is a label with its mnemonic, and an accelerator.
#pragma once

#include <string_view>

namespace velk {

struct MenuText {
    std::u16string_view label;
    std::u16string_view accelerator;  // without the tab; empty when there is none
};

// Splits at the first tab, or at the backspace that right-aligns what follows it.
inline MenuText SplitMenuText(std::u16string_view text) noexcept {
    const std::size_t split = text.find_first_of(u"\t\b");
    if (split == std::u16string_view::npos) return {text, {}};
    return {text.substr(0, split), text.substr(split + 1)};
}

}  // namespace velk
