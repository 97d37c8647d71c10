#pragma once

#include <array>
#include <cstdio>
#include <string>

#include "fuzz/model.h"
#include "sysinfo/identifier_text.h"

namespace velk::test {

// As the C library's own formatting writes the same numbers.
inline void IdentifierTextModel(Bytes& bytes) {
    const auto first = static_cast<std::uint32_t>(bytes.Bits(4));
    const auto second = static_cast<std::uint16_t>(bytes.Bits(2)), third = static_cast<std::uint16_t>(bytes.Bits(2));
    char digits[64];
    std::snprintf(digits, sizeof digits, "{%X-%X-%X-", first, second, third);
    std::string expected = digits;
    std::array<std::uint8_t, 8> last{};
    for (std::uint8_t& byte : last) {
        byte = static_cast<std::uint8_t>(bytes.Next());
        std::snprintf(digits, sizeof digits, "%X", byte);
        expected += digits;
    }
    Require(IdentifierText(first, second, third, last) == expected + "}");
}

}  // namespace velk::test
