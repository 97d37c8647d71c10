#include "integrity/dat_seal.h"

#include <gtest/gtest.h>

#include <optional>
#include <random>
#include <string>

#include "frame/run_time_error.h"

namespace velk {
namespace {

// Nothing where there is no "[BEGIN]".
std::optional<std::u16string> Region(std::u16string_view text) {
    try {
        return std::u16string(SealedRegion(text));
    } catch (const RuntimeError& error) {
        EXPECT_EQ(error.number(), 5);
        return std::nullopt;
    }
}

// The rule read literally, with positions counted from 1 and 0 for "absent".
std::optional<std::u16string> NaiveRegion(const std::u16string& text) {
    std::size_t begin = 0, end = 0;
    for (auto at = text.size(); at > 0; --at)
        if (text.compare(at - 1, 7, u"[BEGIN]") == 0) begin = at;
    for (std::size_t at = 1; at <= text.size(); ++at)
        if (text.compare(at - 1, 5, u"[END]") == 0) end = at;
    if (begin == 0) return std::nullopt;
    std::u16string region;
    for (auto at = begin; at <= text.size() && region.size() < end; ++at) region += text[at - 1];
    return region;
}

TEST(DatSealTest, RegionOfOddTexts) {
    const struct {
        const char* what;
        std::u16string_view text;
        std::optional<std::u16string> region;
    } cases[] = {
        {"empty text", u"", std::nullopt},
        {"no begin", u"A=1\r\n[END]", std::nullopt},
        {"begin in lower case", u"[begin]A[END]", std::nullopt},
        {"begin cut off", u"[BEGIN", std::nullopt},
        {"no end", u"[BEGIN]A=1", u""},
        {"end in lower case", u"[BEGIN]A[end]", u""},
        {"begin first: up to the bracket of the end", u"[BEGIN]\r\nA=1\r\n[END]\r\n@CRC=0", u"[BEGIN]\r\nA=1\r\n["},
        {"begin later: as many further as stand before it", u"xy[BEGIN]A[END]tail", u"[BEGIN]A[EN"},
        {"clipped at the end of the text", u"123456789[BEGIN]A[END]", u"[BEGIN]A[END]"},
        {"end before begin", u"A[END]BC[BEGIN]tail", u"[B"},
        {"first begin", u"[BEGIN][BEGIN][END]", u"[BEGIN][BEGIN]["},
        {"last end", u"[BEGIN][END]A[END]B", u"[BEGIN][END]A["},
        {"overlapping brackets", u"[[BEGIN]][[END]]", u"[BEGIN]][[E"},
        {"NUL is ordinary", std::u16string_view(u"[BEGIN]\0[END]", 13), std::u16string(u"[BEGIN]\0[", 9)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(Region(c.text), c.region);
    }
}

TEST(DatSealTest, AgreesWithTheRuleReadLiterally) {
    const std::u16string pieces[] = {u"[BEGIN]", u"[END]", u"[BEGIN", u"[EN",    u"[",
                                     u"]",       u"A=",    u"\r\n",   u"\u00e9", std::u16string(1, u'\0')};
    std::mt19937 random(20240608);
    for (int round = 0; round < 100000; ++round) {
        std::u16string text;
        for (auto left = random() % 12; left > 0; --left) text += pieces[random() % std::size(pieces)];
        ASSERT_EQ(Region(text), NaiveRegion(text)) << testing::PrintToString(text);
    }
}

}  // namespace
}  // namespace velk
