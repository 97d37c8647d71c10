#include "platform/text.h"

#include <gtest/gtest.h>

namespace velk {
namespace {

using namespace std::literals;

TEST(Text, TrimNullsKeepsWhatStandsBeforeTheFirstNul) {
    EXPECT_EQ("abc", TrimNulls("abc\0def\0"sv));
    EXPECT_EQ("", TrimNulls("\0abc"sv));
    EXPECT_EQ("abc", TrimNulls("abc"));
}

TEST(Text, AnsiConversionsKeepEveryCharacterThatTheCodePageHas) {
    ASSERT_EQ(1252u, GetACP());
    const std::pair<std::wstring_view, std::string_view> both[] = {
        {L"", ""},
        {L"plain", "plain"},
        {L"a\0b"sv, "a\0b"sv},
        {L"\u20AC \u00FC\u00FF", "\x80 \xFC\xFF"},
    };
    for (const auto& [wide, bytes] : both) {
        EXPECT_EQ(bytes, ToAnsi(wide));
        EXPECT_EQ(Utf16(wide), FromAnsi(bytes));
    }
    EXPECT_EQ("?", ToAnsi(L"\u0416"));
    EXPECT_EQ(L"\u20ACuro", View(FromAnsiBuffer("\x80uro\0rest"sv).get()));
}

}  // namespace
}  // namespace velk
