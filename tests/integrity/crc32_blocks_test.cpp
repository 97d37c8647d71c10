#include "integrity/crc32_blocks.h"

#include <gtest/gtest.h>

namespace velk::crc32 {
namespace {

TEST(Crc32Blocks, AreWholeUntilTheEndAndLeaveOutALastByteThatWouldStartOne) {
    const std::uint64_t cases[][4] = {
        // position, length, blocks, stretch
        {0, 0, 1, 0},
        {0, 1, 1, 0},
        {0, 2, 1, 2},
        {0, kBlock, 1, kBlock},
        {0, 32768, 1, 32767},
        {kBlock, kBlock + 1, 1, 0},
        {kBlock, kBlock + 2, 1, 2},
        {kBlock, 40 * kBlock, 16, 16 * kBlock},
        {kBlock, 4 * kBlock + 2, 16, 3 * kBlock + 2},
        {kBlock, 4 * kBlock + 1, 16, 3 * kBlock},
        // Past 4 GB.
        {200000 * kBlock, 200000 * kBlock + 1, 1, 0},
        {200000 * kBlock, 200000 * kBlock + 5, 1, 5},
    };
    for (const auto& [position, length, blocks, stretch] : cases) {
        EXPECT_EQ(stretch, NextStretch(position, length, blocks)) << position << " of " << length;
    }
}

}  // namespace
}  // namespace velk::crc32
