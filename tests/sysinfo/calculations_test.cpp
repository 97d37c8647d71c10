// The small calculations behind the system's answers: elapsed time, up time, identifiers.
#include <gtest/gtest.h>

#include <optional>

#include "sysinfo/identifier_text.h"
#include "sysinfo/stopwatch.h"
#include "sysinfo/up_time.h"

namespace velk {
namespace {

TEST(Stopwatch, TakesRunsAcrossTheClocksWraps) {
    constexpr std::int32_t kMin = INT32_MIN, kMax = INT32_MAX;
    struct Case {
        std::int32_t start, now;
        std::optional<std::int32_t> run;  // nothing: overflow
    };
    for (const Case& c :
         {Case{-5, 3, 8}, {-1, kMax - 1, kMax}, {-1, kMax, {}}, {kMax, kMin, {}}, {kMin, -1, kMax}, {kMin, 0, {}}}) {
        Stopwatch watch;
        watch.Start(c.start);
        try {
            EXPECT_EQ(c.run, watch.RunUntil(c.now)) << c.start << " to " << c.now;
        } catch (const RuntimeError& error) {
            EXPECT_TRUE(error.number() == 6 && !c.run) << c.start << " to " << c.now;
        }
    }
}

TEST(UpTime, IsRoundedToMinutes) {
    const std::pair<std::uint32_t, std::int32_t> cases[] = {
        {30'000, 0},  {30'001, 1},          {90'000, 2},           {150'000, 2},
        {150'001, 3}, {0x7FFF'FFFF, 35791}, {0x8000'0000, -35791}, {0xFFFF'FFFF, 0}};
    for (const auto& [milliseconds, minutes] : cases) EXPECT_EQ(minutes, MinutesFromTicks(milliseconds));
}

TEST(IdentifierText, HasNoPaddingAndAnUndividedLastField) {
    const std::uint8_t zeros[8] = {};
    const std::uint8_t bytes[8] = {0xAB, 0x0C, 0, 1, 0x10, 0xFF, 9, 0xA};
    EXPECT_EQ("{0-0-0-00000000}", IdentifierText(0, 0, 0, zeros));
    EXPECT_EQ("{A1B2C3-F-8000-ABC0110FF9A}", IdentifierText(0x00A1B2C3, 0x000F, 0x8000, bytes));
}

}  // namespace
}  // namespace velk
