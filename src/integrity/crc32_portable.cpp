#include <array>
#include <cstring>

#include "integrity/crc32_variants.h"

// Table lookup for five words at a time, which do not wait for each other: each goes its own way through the message in
// steps of five words, and the ways are joined at the end.
namespace velk::crc32 {
namespace {

constexpr std::size_t kWays = 5;
constexpr std::size_t kWord = 4;
constexpr std::size_t kStep = kWays * kWord;

// [n][b] is what byte b does to the register n bytes after the end of its word.
using Tables = std::array<std::array<std::uint32_t, 256>, kWord>;

// The tables for a word that has so many bytes behind it.
consteval Tables MakeTables(std::size_t after) {
    Tables tables{};
    for (std::uint32_t byte = 0; byte < 256; ++byte) {
        std::uint32_t value = byte;
        for (std::size_t bit = 0; bit < 8 * after; ++bit) value = TimesX(value);
        for (auto& table : tables) {
            for (int bit = 0; bit < 8; ++bit) value = TimesX(value);
            table[byte] = value;
        }
    }
    return tables;
}

constexpr Tables kNext = MakeTables(0), kNextStep = MakeTables(kStep - kWord);

inline std::uint32_t LookUp(const Tables& tables, std::uint32_t word) noexcept {
    return tables[3][word & 0xFF] ^ tables[2][word >> 8 & 0xFF] ^ tables[1][word >> 16 & 0xFF] ^ tables[0][word >> 24];
}

inline std::uint32_t LoadWord(const unsigned char* data) noexcept {
    std::uint32_t word;
    std::memcpy(&word, data, sizeof word);
    return word;
}

// Leaves less than two steps.
std::uint32_t UpdateSteps(std::uint32_t running, const unsigned char*& bytes, std::size_t& size) noexcept {
    std::uint32_t a = running, b = 0, c = 0, d = 0, e = 0;
    for (; size >= 2 * kStep; size -= kStep, bytes += kStep) {
        a = LookUp(kNextStep, a ^ LoadWord(bytes));
        b = LookUp(kNextStep, b ^ LoadWord(bytes + kWord));
        c = LookUp(kNextStep, c ^ LoadWord(bytes + 2 * kWord));
        d = LookUp(kNextStep, d ^ LoadWord(bytes + 3 * kWord));
        e = LookUp(kNextStep, e ^ LoadWord(bytes + 4 * kWord));
    }
    running = 0;
    for (const std::uint32_t way : {a, b, c, d, e}) {
        running = LookUp(kNext, running ^ way ^ LoadWord(bytes));
        bytes += kWord, size -= kWord;
    }
    return running;
}

}  // namespace

std::uint32_t UpdatePortable(std::uint32_t running, const void* data, std::size_t size) noexcept {
    const auto* bytes = static_cast<const unsigned char*>(data);
    if (size >= 2 * kStep) running = UpdateSteps(running, bytes, size);
    for (; size >= kWord; size -= kWord, bytes += kWord) running = LookUp(kNext, running ^ LoadWord(bytes));
    for (; size > 0; --size) running = (running >> 8) ^ kNext[0][(running ^ *bytes++) & 0xFF];
    return running;
}

}  // namespace velk::crc32
