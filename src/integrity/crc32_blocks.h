// In which blocks a file's checksum reads and reports.
#pragma once

#include <algorithm>
#include <cstdint>

namespace velk::crc32 {

inline constexpr std::uint64_t kBlock = 32767;

// How much of a file its checksum covers. The file is read in blocks, positions count from 1, and a block that would
// start at the last byte is not read. So the last byte of a file whose length is one more than a multiple of 32767 is
// left out: deliberately, since checksums stored long ago depend on it.
constexpr std::uint64_t CoveredLength(std::uint64_t length) noexcept {
    return length % kBlock == 1 ? length - 1 : length;
}

// How many bytes the next `blocks` blocks hold after the first `position` bytes of a file; 0 ends the file.
constexpr std::uint64_t NextStretch(std::uint64_t position, std::uint64_t length, std::uint64_t blocks = 1) noexcept {
    return std::min(blocks * kBlock, CoveredLength(length) - position);
}

}  // namespace velk::crc32
