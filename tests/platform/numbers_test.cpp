#include "platform/numbers.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "frame/failure/failure.h"

namespace velk {
namespace {

TEST(Numbers, LongFromTextConvertsAndChecks) {
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
        {2, {L"2.5"}},
        {1000, {L"1,000"}},
        {kOverflow, {L"2147483648"}},
        {kMismatch, {L"", L"12abc", {L"12\0", 3}, {L"12\0junk", 7}}}};
    for (const auto& [number, texts] : cases) {
        for (const auto& text : texts) EXPECT_EQ(number, answer(text)) << testing::PrintToString(text);
    }
}

}  // namespace
}  // namespace velk
