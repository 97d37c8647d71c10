#include <array>
#include <cstring>

#include "integrity/crc32_variants.h"

// Table lookup for sixteen bytes at a time: kTables[n][b] is what byte b does to the register n zero bytes later, so
// the sixteen lookups do not wait for each other.
namespace velk::crc32 {
namespace {

constexpr std::size_t kSlices = 16;

using Tables = std::array<std::array<std::uint32_t, 256>, kSlices>;

consteval Tables MakeTables() {
    Tables tables{};
    for (std::uint32_t byte = 0; byte < 256; ++byte) {
        std::uint32_t value = byte;
        for (auto& table : tables) {
            for (int bit = 0; bit < 8; ++bit) value = TimesX(value);
            table[byte] = value;
        }
    }
    return tables;
}

constexpr Tables kTables = MakeTables();

// The four bytes of `word`, the last of which has `after` bytes behind it.
std::uint32_t LookUp(std::uint32_t word, std::size_t after) noexcept {
    return kTables[after + 3][word & 0xFF] ^ kTables[after + 2][word >> 8 & 0xFF] ^
           kTables[after + 1][word >> 16 & 0xFF] ^ kTables[after][word >> 24];
}

std::uint32_t LoadWord(const unsigned char* data) noexcept {
    std::uint32_t word;
    std::memcpy(&word, data, sizeof word);
    return word;
}

}  // namespace

std::uint32_t UpdatePortable(std::uint32_t running, const void* data, std::size_t size) noexcept {
    const auto* bytes = static_cast<const unsigned char*>(data);
    for (; size >= kSlices; size -= kSlices, bytes += kSlices) {
        running = LookUp(running ^ LoadWord(bytes), 12) ^ LookUp(LoadWord(bytes + 4), 8) ^
                  LookUp(LoadWord(bytes + 8), 4) ^ LookUp(LoadWord(bytes + 12), 0);
    }
    for (; size > 0; --size) running = (running >> 8) ^ kTables[0][(running ^ *bytes++) & 0xFF];
    return running;
}

}  // namespace velk::crc32
