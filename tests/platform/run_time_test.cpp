// The automation runtime's whole numbers.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "platform/run_time_error.h"
#include "platform/whole_numbers.h"

namespace velk {
namespace {

// The exact value is right where it fits, and error 6 where it does not.
template <class Calculation>
void Expect(double exact, Calculation calculation) {
    using Whole = decltype(calculation());
    const bool fits = exact >= std::numeric_limits<Whole>::min() && exact <= std::numeric_limits<Whole>::max();
    try {
        EXPECT_EQ(exact, calculation());
    } catch (const RuntimeError& error) {
        EXPECT_FALSE(fits) << exact;
        EXPECT_EQ(6, error.number());
    }
}

TEST(WholeNumbers, AreExactOrOverflowAndHalvesGoToTheEvenNeighbour) {
    for (const double whole :
         {-2147483648.0, -32768.0, -3.0, -2.0, 0.0, 1.0, 2.0, 32767.0, 2147483647.0, std::nan("")}) {
        for (const double part : {-0.6, -0.5, -0.4, 0.0, 0.49999999999999994, 0.5, 0.6}) {
            const double value = whole + part;
            Expect(std::nearbyint(value), [value] { return RoundToLong(value); });
            Expect(std::nearbyint(value), [value] { return RoundToInteger(value); });
        }
    }
    constexpr std::int32_t kLongs[] = {-2147483647 - 1, -2147483647, -1, 0, 1, 2147483646, 2147483647};
    for (const std::int32_t a : kLongs) {
        for (const std::int32_t b : kLongs) {
            Expect(0.0 + a + b, [=] { return AddLong(a, b); });
            Expect(0.0 + a - b, [=] { return SubtractLong(a, b); });
        }
    }
    for (const std::int16_t a : {-32768, -16384, -1, 0, 2, 32767}) {
        for (const std::int16_t b : {-1, 0, 1, 2, 3}) Expect(a * b, [=] { return MultiplyInteger(a, b); });
    }
}

}  // namespace
}  // namespace velk
