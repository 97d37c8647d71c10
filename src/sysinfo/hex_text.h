#pragma once

#include <charconv>
#include <cstdint>
#include <string>

namespace velk {

// Upper-case digits without leading zeros; 0 gives "0".
inline std::string HexText(std::uint32_t value) {
    char digits[8];
    const char* const end = std::to_chars(digits, digits + sizeof digits, value, 16).ptr;
    std::string text(static_cast<const char*>(digits), end);
    for (char& digit : text) {
        if (digit >= 'a') digit = static_cast<char>(digit - 'a' + 'A');
    }
    return text;
}

}  // namespace velk
