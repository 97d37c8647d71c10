#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "sysinfo/hex_text.h"

namespace velk {

// Deliberately not the usual form of an identifier: numbers without leading zeros, and no hyphen within the last field.
inline std::string IdentifierText(std::uint32_t first, std::uint16_t second, std::uint16_t third,
                                  std::span<const std::uint8_t, 8> last) {
    std::string text = "{" + HexText(first) + "-" + HexText(second) + "-" + HexText(third) + "-";
    for (const std::uint8_t byte : last) text += HexText(byte);
    return text + "}";
}

}  // namespace velk
