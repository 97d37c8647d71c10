// One function for each instruction set, each in a source file with its own compiler flags.
#pragma once

#include <cstddef>
#include <cstdint>

namespace velk::crc32 {

std::uint32_t UpdatePortable(std::uint32_t running, const void* data, std::size_t size) noexcept;
std::uint32_t UpdatePclmul(std::uint32_t running, const void* data, std::size_t size) noexcept;
std::uint32_t UpdateVpclmul256(std::uint32_t running, const void* data, std::size_t size) noexcept;
std::uint32_t UpdateVpclmul512(std::uint32_t running, const void* data, std::size_t size) noexcept;

inline constexpr std::uint32_t kPolynomial = 0xEDB88320;  // bit 31 - i is the coefficient of x^i; x^32 is implied

// One bit more through the register; also the product of a reflected polynomial and x, modulo the polynomial.
consteval std::uint32_t TimesX(std::uint32_t value) { return (value >> 1) ^ ((value & 1) != 0 ? kPolynomial : 0); }

}  // namespace velk::crc32
