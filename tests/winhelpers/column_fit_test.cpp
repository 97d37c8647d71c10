#include "winhelpers/hooks/column_fit.h"

#include <gtest/gtest.h>

#include <vector>

namespace velk {
namespace {

TEST(ColumnFit, ScalesAllButTheLastAndLeavesItTheRest) {
    struct Case {
        std::int32_t lastWidth, width;
        std::vector<std::int32_t> columns, expected;  // without the last one; with it
    };
    const Case cases[] = {
        {400, 600, {100, 100}, {150, 150, 300}},
        {0, 400, {100, 120}, {100, 120, 180}},
        {400, 0, {100, 100}, {0, 0, 0}},
        {2, 3, {1, 3, 5}, {2, 4, 8, -11}},  // 1.5, 4.5 and 7.5: halves go to the even neighbour
        {3, 1, {100, 50}, {33, 17, -49}},
        {1, 2, {3}, {6, -4}},
        {100, 100, {}, {100}},
    };
    for (const Case& c : cases) {
        ColumnFit fit(c.width, StretchRatio(c.width, c.lastWidth));
        std::vector<std::int32_t> fitted;
        for (const std::int32_t column : c.columns) fitted.push_back(fit.Scale(column));
        fitted.push_back(fit.Rest());
        EXPECT_EQ(c.expected, fitted) << c.lastWidth << " to " << c.width;
    }
    ColumnFit fit(1, 1000.0);
    EXPECT_THROW(fit.Scale(2147484), RuntimeError);
    EXPECT_EQ(2147483000, fit.Scale(2147483));
    EXPECT_THROW(fit.Scale(1), RuntimeError) << "the sum";
}

}  // namespace
}  // namespace velk
