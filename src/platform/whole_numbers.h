// Whole-number arithmetic as the automation runtime does it: a result that does not fit is error 6 (overflow), and
// halves go to the even neighbour. And whole numbers as texts.
#pragma once

#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

#include "platform/run_time_error.h"

namespace velk {

template <class Whole>
constexpr Whole Narrow(std::int64_t value) {
    if (value < std::numeric_limits<Whole>::min() || value > std::numeric_limits<Whole>::max())
        throw RuntimeError(Error::Overflow);
    return static_cast<Whole>(value);
}
constexpr std::int16_t ToInteger(std::int64_t value) { return Narrow<std::int16_t>(value); }
constexpr std::int32_t ToLong(std::int64_t value) { return Narrow<std::int32_t>(value); }

constexpr std::int32_t AddLong(std::int32_t a, std::int32_t b) { return ToLong(std::int64_t{a} + b); }
constexpr std::int32_t SubtractLong(std::int32_t a, std::int32_t b) { return ToLong(std::int64_t{a} - b); }
constexpr std::int16_t MultiplyInteger(std::int16_t a, std::int16_t b) { return ToInteger(std::int64_t{a} * b); }

// Whatever rounding mode the host has set.
inline double RoundHalfToEven(double value) {
    const double below = std::floor(value);
    const double rest = value - below;
    if (rest == 0.5) return std::fmod(below, 2.0) == 0.0 ? below : below + 1;
    return rest < 0.5 ? below : below + 1;
}

inline std::int32_t RoundToLong(double value) {
    const double whole = RoundHalfToEven(value);
    if (!(whole >= -2147483648.0 && whole <= 2147483647.0))
        throw RuntimeError(Error::Overflow);  // no number at all fails too
    return static_cast<std::int32_t>(whole);
}

inline std::int16_t RoundToInteger(double value) { return ToInteger(RoundToLong(value)); }

// Decimal digits. std::to_wstring goes through the runtime's formatting, which is larger than any class of the library.
inline std::wstring DecimalText(std::int64_t value) {
    char digits[20];
    return {digits, std::to_chars(digits, digits + sizeof digits, value).ptr};
}

// Eight digits, as result codes are written.
inline std::wstring ResultCodeText(std::uint32_t value) {
    std::wstring digits(8, L'0');
    for (auto digit = digits.rbegin(); value != 0; value /= 16) *digit++ = L"0123456789ABCDEF"[value % 16];
    return digits;
}

}  // namespace velk
