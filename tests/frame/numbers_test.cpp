#include "frame/numbers.h"

#include <gtest/gtest.h>

#include "frame/failure.h"

namespace velk {
namespace {

TEST(Numbers, LongFromTextRoundsHalfToEvenAndChecks) {
    ASSERT_EQ(LCID{MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US)}, GetUserDefaultLCID());
    const std::pair<std::wstring_view, LONG> good[] = {
        {L"0", 0},        {L"-1", -1},
        {L" 42 ", 42},    {L"+7", 7},
        {L"2.5", 2},      {L"3.5", 4},
        {L"-2.5", -2},    {L"-3.5", -4},
        {L"2.500001", 3}, {L"1,234", 1234},
        {L"1e3", 1000},   {L"2147483647.4", 2147483647},
        {L"0000012", 12}, {L"-2147483648", static_cast<LONG>(0x80000000)},
    };
    for (const auto& [text, number] : good) EXPECT_EQ(number, LongFromText(text)) << testing::PrintToString(text);

    const std::pair<std::wstring_view, int> bad[] = {
        {L"2147483648", 6},
        {L"-2147483649", 6},
        {L"1e300", 6},
        {L"", 13},
        {L" ", 13},
        {L"abc", 13},
        {L"12abc", 13},
        {L"1 2", 13},
        {L"--1", 13},
        {std::wstring_view(L"12\0", 3), 13},
        {std::wstring_view(L"12\0junk", 7), 13},
    };
    for (const auto& [text, error] : bad) {
        try {
            ADD_FAILURE() << testing::PrintToString(text) << " gave " << LongFromText(text);
        } catch (const RuntimeError& thrown) {
            EXPECT_EQ(error, thrown.number()) << testing::PrintToString(text);
        }
    }
}

}  // namespace
}  // namespace velk
