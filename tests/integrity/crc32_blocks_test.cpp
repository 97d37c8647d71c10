#include "integrity/crc32_blocks.h"

#include <gtest/gtest.h>

#include <vector>

namespace velk::crc32 {
namespace {

std::vector<std::uint64_t> BlocksOf(std::uint64_t length) {
    std::vector<std::uint64_t> blocks;
    std::uint64_t position = 0;
    while (const std::uint64_t count = NextStretch(position, length)) {
        blocks.push_back(count);
        position += count;
    }
    return blocks;
}

TEST(Crc32Blocks, LeaveOutTheLastByteOnlyWhereItWouldStartABlock) {
    struct Case {
        std::uint64_t length;
        std::vector<std::uint64_t> blocks;
    };
    const Case cases[] = {
        {0, {}},
        {1, {}},
        {2, {2}},
        {32766, {32766}},
        {32767, {32767}},
        {32768, {32767}},
        {32769, {32767, 2}},
        {65534, {32767, 32767}},
        {65535, {32767, 32767}},
        {65536, {32767, 32767, 2}},
    };
    for (const Case& c : cases) EXPECT_EQ(c.blocks, BlocksOf(c.length)) << c.length;
}

TEST(Crc32Blocks, StretchesHoldWholeBlocksUntilTheEnd) {
    EXPECT_EQ(16 * kBlock, NextStretch(kBlock, 40 * kBlock, 16));
    EXPECT_EQ(3 * kBlock + 2, NextStretch(kBlock, 4 * kBlock + 2, 16));
    EXPECT_EQ(3 * kBlock, NextStretch(kBlock, 4 * kBlock + 1, 16));
    EXPECT_EQ(0u, NextStretch(4 * kBlock, 4 * kBlock + 1, 16));
}

// Lengths that no test writes to a disk: past 2 GB, past 4 GB, and where the last byte is left out there.
TEST(Crc32Blocks, CountPastThirtyTwoBits) {
    for (const std::uint64_t length : {std::uint64_t{1} << 31, (std::uint64_t{1} << 32) + 5, kBlock * 200000 + 1}) {
        std::uint64_t position = length - length % kBlock - kBlock;
        EXPECT_EQ(kBlock, NextStretch(position, length));
        position += kBlock;
        const std::uint64_t rest = length - position;
        EXPECT_EQ(rest == 1 ? 0 : rest, NextStretch(position, length)) << length;
    }
}

}  // namespace
}  // namespace velk::crc32
