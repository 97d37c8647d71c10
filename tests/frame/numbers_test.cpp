#include "frame/numbers.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "frame/failure.h"

namespace velk {
namespace {

TEST(Numbers, LongFromTextRoundsHalfToEvenAndChecks) {
    ASSERT_EQ(LCID{MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US)}, GetUserDefaultLCID());
    constexpr LONG kMismatch = -13, kOverflow = -6;  // errors
    const auto answer = [](std::wstring_view text) -> LONG {
        try {
            return LongFromText(text);
        } catch (const RuntimeError& error) {
            return -error.number();
        }
    };
    const std::pair<LONG, std::vector<std::wstring_view>> cases[] = {
        {2, {L"2.5", L" 2 ", L"+2"}},
        {4, {L"3.5"}},
        {3, {L"2.500001"}},
        {-2, {L"-2.5"}},
        {-4, {L"-3.5"}},
        {1000, {L"1,000", L"1e3"}},
        {2147483647, {L"2147483647.4"}},
        {static_cast<LONG>(0x80000000), {L"-2147483648"}},
        {kOverflow, {L"2147483648", L"-2147483649", L"1e300"}},
        {kMismatch, {L"", L" ", L"12abc", L"1 2", L"--1", {L"12\0", 3}, {L"12\0junk", 7}}}};
    for (const auto& [number, texts] : cases) {
        for (const auto& text : texts) EXPECT_EQ(number, answer(text)) << testing::PrintToString(text);
    }
}

}  // namespace
}  // namespace velk
