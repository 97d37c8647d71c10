// In which blocks a file's checksum reads and reports.
#pragma once

#include <algorithm>
#include <cstdint>

namespace velk::crc32 {

inline constexpr std::uint64_t kBlock = 32767;

// How many bytes the block after the first `position` bytes of a file holds; 0 ends the file. Positions count from 1,
// and a block that would start at the last byte is not read. So the last byte of a file whose length is one more than a
// multiple of 32767 is left out of its checksum: deliberately, since checksums stored long ago depend on it.
constexpr std::uint64_t NextBlock(std::uint64_t position, std::uint64_t length) noexcept {
    const std::uint64_t start = position + 1;
    return start >= length ? 0 : std::min(kBlock, length - position);
}

}  // namespace velk::crc32
