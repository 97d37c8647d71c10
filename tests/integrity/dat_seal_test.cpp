#include "integrity/dat_seal.h"

#include <gtest/gtest.h>

#include <optional>
#include <random>
#include <string>

#include "platform/run_time_error.h"

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

TEST(DatSealTest, AgreesWithTheRuleReadLiterally) {
    const std::u16string pieces[] = {u"[BEGIN]", u"[END]", u"[begin]", u"[end]", u"[BEGIN", u"[EN",
                                     u"[",       u"]",     u"A=",      u"\r\n",  u"\u00e9", std::u16string(1, u'\0')};
    std::mt19937 random(20240608);
    for (int round = 0; round < 100000; ++round) {
        std::u16string text;
        for (auto left = random() % 12; left > 0; --left) text += pieces[random() % std::size(pieces)];
        ASSERT_EQ(Region(text), NaiveRegion(text)) << testing::PrintToString(text);
    }
}

}  // namespace
}  // namespace velk
