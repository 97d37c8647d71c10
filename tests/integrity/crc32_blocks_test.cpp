#include "integrity/crc32_blocks.h"

#include <gtest/gtest.h>

namespace velk::crc32 {
namespace {

TEST(Crc32Blocks, AreWholeUntilTheEndAndLeaveOutALastByteThatWouldStartOne) {
    struct Case {
        std::uint64_t position, length, blocks, stretch;
    };
    const Case cases[] = {
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
        // Past 2 GB and past 4 GB.
        {70000 * kBlock, 70000 * kBlock + 2, 1, 2},
        {200000 * kBlock, 200000 * kBlock + 1, 1, 0},
        {200000 * kBlock, 200000 * kBlock + 5, 1, 5},
        {200000 * kBlock, 300000 * kBlock, 1, kBlock},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(c.stretch, NextStretch(c.position, c.length, c.blocks)) << c.position << " of " << c.length;
    }
}

}  // namespace
}  // namespace velk::crc32
