#include "integrity/dat_entries.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "frame/run_time_error.h"
#include "integrity/literal_reading.h"

namespace velk {
namespace {

using test::Entries;
using test::LiteralReading;

static_assert(!std::is_copy_constructible_v<DatEntries> && !std::is_move_constructible_v<DatEntries>);
static_assert(!std::is_copy_assignable_v<DatEntries> && !std::is_move_assignable_v<DatEntries>);

// The number of the error thrown, 0 without one.
int ParseError(DatEntries& entries, std::u16string text) {
    try {
        entries.Parse(std::move(text));
        return 0;
    } catch (const RuntimeError& error) {
        return error.number();
    }
}

// An entry's expected and found value; an absent one is told from an empty one.
void ExpectEntries(const DatEntries& entries, const Entries& expected) {
    EXPECT_EQ(entries.size(), expected.size());
    for (const auto& [key, value] : expected) {
        const auto found = entries.Find(key);
        ASSERT_TRUE(found.has_value()) << testing::PrintToString(key);
        EXPECT_EQ(*found, value) << testing::PrintToString(key);
    }
}

std::u16string Digits(int number) {
    const auto narrow = std::to_string(number);
    return {narrow.begin(), narrow.end()};
}

TEST(DatEntriesTest, ReadsOddTexts) {
    const struct {
        const char* what;
        std::u16string text;
        Entries expected;
        int error = 0;
    } cases[] = {
        {"empty text", u"", {}},
        {"no entry", u"[BEGIN]\r\n\r\nword\r\n[END]", {}},
        {"last line without an end", u"A=1\r\nB=2", {{u"A", u"1"}, {u"B", u"2"}}},
        {"text ends in a lone CR", u"A=1\r", {{u"A", u"1\r"}}},
        {"only an equals sign", u"=", {{u"", u""}}},
        {"empty key, empty value", u"=v\r\nk=\r\n", {{u"", u"v"}, {u"k", u""}}},
        {"second equals sign", u"A=1=2=3\r\nB==x\r\nC=3", {{u"A", u"1"}, {u"B", u""}, {u"C", u"3"}}},
        {"nothing is trimmed", u" A =\t1 \r\nA=2", {{u" A ", u"\t1 "}, {u"A", u"2"}}},
        {"case and accents differ",
         u"a=1\r\nA=2\r\n\u00e9=3\r\n\u00c9=4",
         {{u"a", u"1"}, {u"A", u"2"}, {u"\u00e9", u"3"}, {u"\u00c9", u"4"}}},
        {"lone CR and LF are ordinary", u"A\n=1\r2\n3\r\n\rB=4\n\r", {{u"A\n", u"1\r2\n3"}, {u"\rB", u"4\n\r"}}},
        {"CR before CR LF", u"A=1\r\r\nB\r\r\n=2", {{u"A", u"1\r"}, {u"", u"2"}}},
        {"NUL is ordinary",
         std::u16string(u"A\0=\0B\r\nA=2", 10),
         {{std::u16string(u"A\0", 2), std::u16string(u"\0B", 2)}, {u"A", u"2"}}},
        {"duplicate", u"A=1\r\nB=2\r\nA=3\r\nC=4", {{u"A", u"1"}, {u"B", u"2"}}, 457},
        {"duplicate empty key", u"=\r\n=\r\nA=1", {{u"", u""}}, 457},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        DatEntries entries;
        EXPECT_EQ(ParseError(entries, c.text), c.error);
        EXPECT_EQ(entries.text(), c.text);
        ExpectEntries(entries, c.expected);
    }
}

TEST(DatEntriesTest, MissesWhatIsNoKey) {
    DatEntries entries;
    EXPECT_FALSE(entries.Find(u""));
    EXPECT_FALSE(entries.Find(u"A"));
    entries.Parse(u"word\r\nAB=1=2\r\nlast=");
    for (const std::u16string key :
         {u"", u"A", u"AB=1", u"AB=", u"B", u"ABC", u"word", u"word\r\nAB", u"1", u"last=", u"last=?"})
        EXPECT_FALSE(entries.Find(key)) << testing::PrintToString(key);
}

TEST(DatEntriesTest, ParseReplacesEverything) {
    DatEntries entries;
    entries.Parse(u"A=1\r\nB=2");
    EXPECT_EQ(ParseError(entries, u"B=3\r\nB=4"), 457);
    ExpectEntries(entries, {{u"B", u"3"}});
    EXPECT_FALSE(entries.Find(u"A"));
    entries.Parse(u"");
    EXPECT_EQ(entries.size(), 0u);
    EXPECT_FALSE(entries.Find(u"B"));
}

TEST(DatEntriesTest, FoundValueLiesInTheText) {
    DatEntries entries;
    entries.Parse(u"A=1\r\nB=\r\n");
    EXPECT_EQ(entries.Find(u"A")->data(), entries.text().data() + 2);
    EXPECT_EQ(entries.Find(u"B")->data(), entries.text().data() + 7);
}

TEST(DatEntriesTest, AgreesWithTheRulesReadLiterally) {
    const std::u16string pieces[] = {u"A", u"=", u"\r", u"\n", u"\r\n", u"[", std::u16string(1, u'\0'), u"\u00e9"};
    std::mt19937 random(20240607);
    const auto random_text = [&](unsigned limit) {
        std::u16string text;
        for (auto left = random() % limit; left > 0; --left) text += pieces[random() % std::size(pieces)];
        return text;
    };
    DatEntries entries;
    for (int round = 0; round < 100000; ++round) {
        const auto text = random_text(round % 100 == 0 ? 400 : 16);
        SCOPED_TRACE(testing::PrintToString(text));
        const LiteralReading naive(text);
        ASSERT_EQ(ParseError(entries, text), naive.error);
        ExpectEntries(entries, naive.entries);
        const auto key = random_text(4);
        ASSERT_EQ(entries.Find(key).has_value(), naive.entries.contains(key)) << testing::PrintToString(key);
        if (testing::Test::HasFailure()) break;
    }
}

// A duplicate counts at whatever distance from the first, whatever the index has grown to between them.
TEST(DatEntriesTest, KeepsTheEntriesBeforeADuplicateInALongText) {
    for (int count = 1; count < 200; ++count) {
        std::u16string text;
        Entries expected;
        for (int i = 0; i < count; ++i) {
            text += Digits(i) + u"=v" + Digits(i) + u"\r\n";
            expected[Digits(i)] = u"v" + Digits(i);
        }
        DatEntries entries;
        EXPECT_EQ(ParseError(entries, text + Digits(count / 2) + u"=again\r\nnext=1"), 457);
        ExpectEntries(entries, expected);
        EXPECT_FALSE(entries.Find(u"next"));
    }
}

using Seconds = std::chrono::duration<double>;

Seconds Elapsed(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::steady_clock::now() - start;
}

// Keys that a weak hash throws together would take thousands of times as long as an ordered map does.
TEST(DatEntriesTest, AlikeKeysStayFast) {
    constexpr int kCount = 50000;
    const struct {
        const char* what;
        std::function<std::u16string(int)> key;
    } families[] = {
        {"counted", [](int i) { return Digits(i); }},
        {"long common prefix", [](int i) { return std::u16string(200, u'x') + Digits(i); }},
        {"long common suffix", [](int i) { return Digits(i) + std::u16string(200, u'x'); }},
        {"differing in the middle", [](int i) { return u"PARAMETER" + Digits(100000 + i) + u".HR"; }},
        {"repeated", [](int i) { return Digits(i) + u"." + Digits(i) + u"." + Digits(i); }},
        {"two raw units",
         [](int i) {
             return std::u16string{char16_t(0x100 + i % 256), char16_t(0x100 + i / 256)};
         }},
        {"one bit a unit",
         [](int i) {
             std::u16string key(32, u'a');
             for (int bit = 0; bit < 16; ++bit) key[2 * bit] = i >> bit & 1 ? u'b' : u'a';
             return key;
         }},
    };
    for (const auto& family : families) {
        SCOPED_TRACE(family.what);
        std::u16string text;
        std::vector<std::u16string> keys;
        for (int i = 0; i < kCount; ++i) {
            keys.push_back(family.key(i));
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
