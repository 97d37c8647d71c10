#include "winhelpers/hooks/size_range.h"

#include <gtest/gtest.h>

namespace velk {
namespace {

TEST(SizeRange, AcceptsWhatDoesNotContradict) {
    struct Case {
        std::int32_t least, most;  // set before, 0 for not
        bool setsLeast;
        std::int32_t value;
        bool accepted;
    };
    const Case cases[] = {
        {0, 0, true, 1, true},      {0, 0, true, 0, false},      {0, 0, true, INT32_MIN, false},
        {0, 0, true, 500, true},    {0, 1, true, 2, false},      {0, 400, true, 400, true},
        {0, 400, true, 401, false}, {0, 0, false, 1, true},      {0, 0, false, 0, false},
        {0, 0, false, -5, false},   {300, 0, false, 299, false}, {300, 0, false, 300, true},
        {300, 0, false, 301, true}, {300, 400, true, 350, true}, {300, 400, false, 0x7FFFFFFF, true},
    };
    for (const Case& c : cases) {
        SizeRange range;
        ASSERT_TRUE(!c.least || range.SetLeast(c.least));
        ASSERT_TRUE(!c.most || range.SetMost(c.most));
        EXPECT_EQ(c.accepted, c.setsLeast ? range.SetLeast(c.value) : range.SetMost(c.value)) << c.value;
        EXPECT_EQ(c.accepted && c.setsLeast ? c.value : c.least, range.least());
        EXPECT_EQ(c.accepted && !c.setsLeast ? c.value : c.most, range.most());
    }
}

}  // namespace
}  // namespace velk
