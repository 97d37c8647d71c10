#include "winhelpers/menu/menu_text.h"

#include <algorithm>

namespace velk {

MenuText SplitMenuText(std::u16string_view text) noexcept {
    const std::size_t split = text.find_first_of(u"\t\b");
    if (split == std::u16string_view::npos) return {text, {}};
    return {text.substr(0, split), text.substr(split + 1)};
}

char16_t MnemonicOf(std::u16string_view label) noexcept {
    char16_t mnemonic = 0;
    for (std::size_t i = 0; i + 1 < label.size(); ++i) {
        if (label[i] != u'&') continue;
        ++i;  // past the next character, which a double ampersand uses up
        if (label[i] != u'&') mnemonic = label[i];
    }
    return mnemonic;
}

KeyMatch FindMenuKey(std::span<const char16_t> keys, char16_t key, std::size_t current) noexcept {
    if (key == 0) return {};
    const std::size_t start = current < keys.size() ? current + 1 : 0;
    for (std::size_t step = 0; step < keys.size(); ++step) {
        const std::size_t position = (start + step) % keys.size();
        if (keys[position] == key) return {position, std::ranges::count(keys, key) == 1};
    }
    return {};
}

}  // namespace velk
