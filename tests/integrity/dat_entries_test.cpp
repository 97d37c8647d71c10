#include "integrity/dat_entries.h"

#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "integrity/literal_reading.h"
#include "platform/run_time_error.h"

namespace velk {
namespace {

using test::Entries;
using test::LiteralReading;

// The number of the error thrown, 0 without one.
int ParseError(DatEntries& entries, std::u16string text) {
    try {
        entries.Parse(std::move(text));
        return 0;
    } catch (const RuntimeError& error) {
        return error.number();
    }
}

void ExpectEntries(const DatEntries& entries, const Entries& expected) {
    EXPECT_EQ(entries.size(), expected.size());
    for (const auto& [key, value] : expected) EXPECT_EQ(entries.Find(key), value) << testing::PrintToString(key);
}

std::u16string Digits(int number) {
    const auto narrow = std::to_string(number);
    return {narrow.begin(), narrow.end()};
}

TEST(DatEntriesTest, AgreesWithTheRulesReadLiterally) {
    const std::u16string pieces[] = {
        u"A", u"a", u"=", u"\r", u"\n", u"\r\n", u"\u00e9", u"\u00c9", std::u16string(1, u'\0')};
    std::mt19937 random(20240607);
    const auto random_text = [&](unsigned limit) {
        std::u16string text;
        for (auto left = random() % limit; left > 0; --left) text += pieces[random() % std::size(pieces)];
        return text;
    };
    DatEntries entries;  // one for all: each text replaces the one before
    EXPECT_FALSE(entries.Find(u""));
    for (int round = 0; round < 100000; ++round) {
        const auto text = random_text(round % 100 == 0 ? 400 : 16);
        SCOPED_TRACE(testing::PrintToString(text));
        const LiteralReading naive(text);
        ASSERT_EQ(ParseError(entries, text), naive.error);
        EXPECT_EQ(entries.text(), text);
        ExpectEntries(entries, naive.entries);
        const auto key = random_text(4);
        ASSERT_EQ(entries.Find(key).has_value(), naive.entries.contains(key)) << testing::PrintToString(key);
        if (testing::Test::HasFailure()) break;
    }
}

auto Elapsed(auto work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::steady_clock::now() - start;
}

// Keys that a weak hash throws together would take thousands of times as long as an ordered map does.
TEST(DatEntriesTest, AlikeKeysStayFast) {
    constexpr int kCount = 50000;
    const std::u16string longText(200, u'x');
    const struct {
        std::u16string before, after;
        int base;  // the number in the middle is written in
    } families[] = {{u"", u"", 10}, {longText, u"", 10}, {u"", longText, 10}, {u"PARAMETER", u".HR", 10},
                    {u"", u"", 2},  {u"", u"", 0x4000}};
    for (const auto& family : families) {
        SCOPED_TRACE(&family - families);
        std::u16string text;
        std::vector<std::u16string> keys;
        for (int i = 0; i < kCount; ++i) {
            std::u16string key = family.before;
            for (int left = i + 0x10000; left > 0; left /= family.base) {
                key += static_cast<char16_t>(u'A' + left % family.base);
                if (family.base == 2) key += u'a';  // what differs lies in every other unit
            }
            keys.push_back(key + family.after);
            text += keys.back() + u"=" + Digits(i) + u"\r\n";
        }
        std::map<std::u16string_view, int> map;
        const auto peer = Elapsed([&] {
            for (const auto& key : keys) map.emplace(key, 0);
        });
        DatEntries entries;
        EXPECT_LT(Elapsed([&] { entries.Parse(std::move(text)); }), 4 * peer);
        ASSERT_EQ(entries.size(), keys.size());
        for (int i = 0; i < kCount; ++i) ASSERT_EQ(entries.Find(keys[i]), Digits(i)) << i;
    }
}

}  // namespace
}  // namespace velk
