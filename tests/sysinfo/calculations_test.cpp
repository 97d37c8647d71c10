// The small calculations behind the system's answers: elapsed time, up time, identifiers, kinds of connection.
#include "sysinfo/stopwatch.h"

#include <gtest/gtest.h>

#include <limits>
#include <optional>
#include <string>

#include "sysinfo/connection_flags.h"
#include "sysinfo/identifier_text.h"
#include "sysinfo/up_time.h"

namespace velk {
namespace {

constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();

TEST(Stopwatch, TakesRunsAcrossTheClocksWraps) {
    struct Case {
        std::int32_t start;
        std::int32_t now;
        std::optional<std::int32_t> run;  // nothing: overflow
    };
    const Case cases[] = {
        {1000, 2500, 1500},       {-5, 3, 8},
        {-1, kMax, std::nullopt}, {-1, kMax - 1, kMax},
        {1, kMin, std::nullopt},  {kMax, kMin, std::nullopt},
        {kMax, -1, kMin},         {kMin, -1, kMax},
        {kMin, 0, std::nullopt},
    };
    for (const Case& c : cases) {
        Stopwatch watch;
        watch.Start(c.start);
        EXPECT_TRUE(watch.IsRunning());
        try {
            EXPECT_EQ(c.run, watch.RunUntil(c.now)) << c.start << " to " << c.now;
        } catch (const RuntimeError& error) {
            EXPECT_EQ(6, error.number());
            EXPECT_FALSE(c.run) << c.start << " to " << c.now;
        }
    }
}

TEST(Stopwatch, GathersRunsUntilTheNextStart) {
    Stopwatch watch;
    EXPECT_FALSE(watch.IsRunning());
    watch.Start(0);
    EXPECT_FALSE(watch.IsRunning()) << "a start at 0 counts as no run";
    watch.Resume(100);
    watch.Add(watch.RunUntil(300));
    watch.Stop();
    EXPECT_FALSE(watch.IsRunning());
    EXPECT_EQ(200, watch.TotalWith(0));
    watch.Resume(1000);
    EXPECT_EQ(250, watch.TotalWith(watch.RunUntil(1050)));
    watch.Add(kMax - 200);
    EXPECT_THROW(watch.TotalWith(1), RuntimeError);
    EXPECT_THROW(watch.Add(1), RuntimeError);
    EXPECT_EQ(kMax, watch.TotalWith(0)) << "what did not fit was not added";
    watch.Start(5);
    EXPECT_EQ(0, watch.TotalWith(0));
}

TEST(UpTime, IsRoundedToMinutes) {
    const std::pair<std::uint32_t, std::int32_t> cases[] = {
        {0, 0},       {29'999, 0},  {30'000, 0},         {30'001, 1},          {90'000, 2},      {150'000, 2},
        {150'001, 3}, {210'000, 4}, {0x7FFFFFFF, 35791}, {0x80000000, -35791}, {0xFFFF'FFFF, 0}, {0U - 90'000U, -2},
    };
    for (const auto& [milliseconds, minutes] : cases)
        EXPECT_EQ(minutes, MinutesFromTicks(milliseconds)) << milliseconds;
}

TEST(IdentifierText, HasNoPaddingAndAnUndividedLastField) {
    const std::uint8_t zeros[8] = {};
    const std::uint8_t bytes[8] = {0xAB, 0x0C, 0, 1, 0x10, 0xFF, 9, 0xA};
    EXPECT_EQ("{0-0-0-00000000}", IdentifierText(0, 0, 0, zeros));
    EXPECT_EQ("{A1B2C3-F-10-ABC0110FF9A}", IdentifierText(0x00A1B2C3, 0x000F, 0x0010, bytes));
    EXPECT_EQ("{FFFFFFFF-FFFF-8000-00000000}", IdentifierText(0xFFFF'FFFF, 0xFFFF, 0x8000, zeros));
}

TEST(ConnectionFlags, TheFirstKindThatIsSetWins) {
    constexpr Connection kKinds[] = {Connection::None,  Connection::Modem, Connection::Lan, Connection::Modem,
                                     Connection::Proxy, Connection::Modem, Connection::Lan, Connection::Modem};
    for (std::uint32_t others : {0U, 0x8U, 0x70U, 0xFFFF'FFF8U}) {
        for (std::uint32_t kinds = 0; kinds < 8; ++kinds)
            EXPECT_EQ(kKinds[kinds], ConnectionOf(others | kinds)) << kinds;
    }
}

}  // namespace
}  // namespace velk
