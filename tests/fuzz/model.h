// What the models of the plain units share. A model makes operations of bytes, does them with the unit and with
// something slow and obvious, and requires the same answers: the unit's test replays fixed bytes, and the fuzzer makes
// up more.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

#include "platform/run_time_error.h"

namespace velk::test {

class Bytes {
  public:
    explicit Bytes(std::span<const std::uint8_t> left) : left_(left) {}

    bool empty() const noexcept { return left_.empty(); }
    int Next() noexcept {
        if (empty()) return 0;
        const int first = left_.front();
        left_ = left_.subspan(1);
        return first;
    }
    // A whole number: mostly small ones, a byte long, and those of four bytes.
    std::int32_t Number() noexcept {
        const int first = Next();
        return first < 192 ? first - 64 : static_cast<std::int32_t>(Bits(4));
    }
    double Double() noexcept { return Next() % 2 == 0 ? Number() / 8.0 : std::bit_cast<double>(Bits(8)); }
    std::uint64_t Bits(int bytes) noexcept {
        std::uint64_t bits = 0;
        for (; bytes > 0; --bytes) bits = bits << 8 | static_cast<std::uint64_t>(Next());
        return bits;
    }
    // The rest, each byte one of these characters.
    template <class Character>
    std::basic_string<Character> Rest(std::basic_string_view<Character> alphabet) {
        std::basic_string<Character> text;
        while (!empty()) text += alphabet[static_cast<std::size_t>(Next()) % alphabet.size()];
        return text;
    }

  private:
    std::span<const std::uint8_t> left_;
};

// Ends a model whose unit answers otherwise.
struct Difference {
    const char* file;
    int line;
};
inline void Require(bool holds, const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
    if (!holds) throw Difference{file, line};
}

// What a call answers: its result, or -1000 - n for run-time error n.
int Answer(auto&& call) try {
    if constexpr (std::is_void_v<decltype(call())>) {
        return call(), 0;
    } else {
        return call();
    }
} catch (const RuntimeError& error) {
    return -1000 - error.number();
}

}  // namespace velk::test
