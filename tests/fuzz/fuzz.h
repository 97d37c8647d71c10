// What the fuzz targets share: reading values from the bytes that the fuzzer makes up.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace velk::test {

class Bytes {
  public:
    Bytes(const std::uint8_t* data, std::size_t size) : data_(data), left_(size) {}

    bool empty() const noexcept { return left_ == 0; }
    int Next() noexcept {
        if (left_ == 0) return 0;
        --left_;
        return *data_++;
    }
    // A whole number: mostly small ones, a byte long, and those of four bytes.
    std::int32_t Number() noexcept {
        const int first = Next();
        if (first < 192) return first - 64;
        std::uint32_t value = 0;
        for (int i = 0; i < 4; ++i) value = value << 8 | static_cast<std::uint32_t>(Next());
        return static_cast<std::int32_t>(value);
    }
    double Double() noexcept {
        if (Next() % 2 == 0) return Number() / 8.0;
        std::uint64_t bits = 0;
        for (int i = 0; i < 8; ++i) bits = bits << 8 | static_cast<std::uint64_t>(Next());
        return std::bit_cast<double>(bits);
    }
    // The rest, one character a byte; the last two bytes of the range stand for characters beyond 255.
    std::u16string Rest() {
        std::u16string text;
        while (!empty()) {
            const int byte = Next();
            text += static_cast<char16_t>(byte < 254 ? byte : 0xD700 + byte);
        }
        return text;
    }

  private:
    const std::uint8_t* data_;
    std::size_t left_;
};

inline void Require(bool holds) {
    if (!holds) std::abort();
}

}  // namespace velk::test
