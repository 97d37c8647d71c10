#include "platform/whole_numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

namespace velk {
namespace {

constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();

// The value, or nothing when the calculation overflowed.
template <class Calculation>
auto Answer(Calculation calculation) -> std::optional<decltype(calculation())> {
    try {
        return calculation();
    } catch (const RuntimeError& error) {
        EXPECT_EQ(6, error.number());
        return std::nullopt;
    }
}

TEST(WholeNumbers, HalvesGoToTheEvenNeighbour) {
    const std::pair<std::optional<std::int32_t>, std::vector<double>> cases[] = {
        {0, {0.5, -0.5, 0.49999999999999994}},
        {2, {1.5, 2.5}},
        {-2, {-1.5, -2.5}},
        {-11, {-10.67, -11.25}},
        {3, {2.75, 3.25}},
        {kMax, {2147483647.4}},
        {kMin, {-2147483648.5}},
        {std::nullopt, {2147483647.5, -2147483648.6, std::nan("")}}};
    for (const auto& [rounded, values] : cases) {
        for (const double value : values) EXPECT_EQ(rounded, Answer([&] { return RoundToLong(value); })) << value;
    }
    EXPECT_EQ(std::nullopt, Answer([] { return RoundToInteger(32767.5); }));
    EXPECT_EQ(-32768, Answer([] { return RoundToInteger(-32768.5); }));
}

TEST(WholeNumbers, WhatDoesNotFitIsAnOverflow) {
    EXPECT_EQ(kMax, Answer([] { return AddLong(kMax - 1, 1); }));
    EXPECT_EQ(std::nullopt, Answer([] { return AddLong(kMax, 1); }));
    EXPECT_EQ(std::nullopt, Answer([] { return AddLong(kMin, -1); }));
    EXPECT_EQ(kMax, Answer([] { return SubtractLong(-1, kMin); }));
    EXPECT_EQ(std::nullopt, Answer([] { return SubtractLong(0, kMin); }));
    EXPECT_EQ(-32768, Answer([] { return MultiplyInteger(-16384, 2); }));
    EXPECT_EQ(std::nullopt, Answer([] { return MultiplyInteger(-32768, -1); }));
}

}  // namespace
}  // namespace velk
