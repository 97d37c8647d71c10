// CRC-32 (reflected polynomial 0xEDB88320) at the speed of the processor it runs on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace velk::crc32 {

inline constexpr std::uint32_t kSeed = 0xFFFFFFFF;

// Continues the raw register over `size` bytes. Start from kSeed; invert the last register to get the checksum.
std::uint32_t Update(std::uint32_t running, const void* data, std::size_t size) noexcept;

using UpdateFunction = std::uint32_t (*)(std::uint32_t running, const void* data, std::size_t size) noexcept;

struct Variant {
    std::string_view name;
    UpdateFunction function;
    bool supported;  // by the processor and the operating system
};

// Every variant that was built, best first. The last one runs everywhere.
std::span<const Variant> Variants() noexcept;

// The variant of that name, or the best supported one if the name is unknown or its variant unsupported.
const Variant& Select(std::string_view name) noexcept;

// The variant that Update runs. It is chosen once, at the first use, and the environment variable VELKSPRT_CRC32 can
// name it.
std::string_view VariantName() noexcept;

}  // namespace velk::crc32
