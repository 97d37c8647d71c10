#include "integrity/dat_entries.h"

#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "fuzz/replay.h"
#include "integrity/dat_entries_model.h"

namespace velk::test {
namespace {

TEST(DatEntries, AgreeWithTheRulesReadLiterally) {
    Replay(&DatEntriesModel, corpus::dat_entries, 10000, 16);
    Replay(&DatEntriesModel, {}, 400, 400);
}

auto Elapsed(auto work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::steady_clock::now() - start;
}

// Keys that a weak hash throws together would take thousands of times as long as an ordered map does.
TEST(DatEntries, AlikeKeysStayFast) {
    const std::u16string longText(200, u'x');
    for (const auto& [before, after, base] : {std::tuple(u"", u"", 2),
                                              {u"", u"", 10},
                                              {u"", u"", 0x4000},
                                              {longText.c_str(), u"", 10},
                                              {u"", longText.c_str(), 10}}) {
        std::u16string text;
        std::vector<std::u16string> keys;
        for (int i = 0x10000; i < 0x14000; ++i) {
            std::u16string key = before;
            for (int left = i; left > 0; left /= base) {
                key += static_cast<char16_t>(u'A' + left % base);
                if (base == 2) key += u'a';  // what differs lies in every other unit
            }
            text += keys.emplace_back(key + after) + u"=1\r\n";
        }
        std::map<std::u16string_view, int> map;
        const auto peer = Elapsed([&] {
            for (const auto& key : keys) map.emplace(key, 0);
        });
        DatEntries entries;
        EXPECT_LT(Elapsed([&] { entries.Parse(std::move(text)); }), 20 * peer) << base;
        EXPECT_EQ(keys.size(), entries.size());
    }
}

}  // namespace
}  // namespace velk::test
