// Compiled with -mpclmul -msse4.1.
#include "integrity/crc32_folding.h"

namespace velk::crc32 {

std::uint32_t UpdatePclmul(std::uint32_t running, const void* data, std::size_t size) noexcept {
    return Update128(running, static_cast<const Byte*>(data), size);
}

}  // namespace velk::crc32
