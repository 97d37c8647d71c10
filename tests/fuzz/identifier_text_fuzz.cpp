#include <array>
#include <cstdio>

#include "fuzz/fuzz.h"
#include "sysinfo/identifier_text.h"

using namespace velk;

// As the C library's own formatting writes the same numbers.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    test::Bytes bytes(data, size);
    std::uint32_t field[3] = {};
    for (std::uint32_t& value : field) {
        for (int i = 0; i < 4; ++i) value = value << 8 | static_cast<std::uint32_t>(bytes.Next());
    }
    const auto second = static_cast<std::uint16_t>(field[1]), third = static_cast<std::uint16_t>(field[2]);
    std::array<std::uint8_t, 8> last{};
    char expected[64];
    int length = std::snprintf(expected, sizeof expected, "{%X-%X-%X-", field[0], second, third);
    for (std::uint8_t& byte : last) {
        byte = static_cast<std::uint8_t>(bytes.Next());
        length += std::snprintf(expected + length, sizeof expected - static_cast<std::size_t>(length), "%X", byte);
    }
    test::Require(IdentifierText(field[0], second, third, last) == std::string(expected) + "}");
    return 0;
}
