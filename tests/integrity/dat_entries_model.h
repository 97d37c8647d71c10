// The rules for a sealed file's text, read literally: split at CR LF, then at "="; the seal's region position by
// position.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/model.h"
#include "integrity/dat_entries.h"
#include "integrity/dat_seal.h"

namespace velk::test {

inline std::vector<std::u16string> Split(std::u16string text, std::u16string_view at) {
    std::vector<std::u16string> pieces;
    for (std::size_t end; (end = text.find(at)) != text.npos; text.erase(0, end + at.size()))
        pieces.push_back(text.substr(0, end));
    pieces.push_back(text);
    return pieces;
}

// Positions count from 1, and 0 is "absent".
inline std::optional<std::u16string> LiteralRegion(const std::u16string& text) {
    std::size_t begin = 0, end = 0;
    for (std::size_t at = text.size(); at > 0; --at) {
        if (text.compare(at - 1, 7, u"[BEGIN]") == 0) begin = at;
        if (end == 0 && text.compare(at - 1, 5, u"[END]") == 0) end = at;
    }
    if (begin == 0) return std::nullopt;
    std::u16string region;
    for (std::size_t at = begin; at <= text.size() && region.size() < end; ++at) region += text[at - 1];
    return region;
}

inline void DatEntriesModel(Bytes& bytes) {
    static const std::u16string pieces[] = {
        u"A",      u"a",      u"=",       u"=",     u"\r\n",    u"\r\n",   u"\r",  u"\n",
        u"\u00e9", u"\u00c9", u"[BEGIN]", u"[END]", u"[begin]", u"[BEGIN", u"[EN", std::u16string(1, u'\0')};
    const auto piece = [&] { return pieces[bytes.Next() % 16]; };
    const std::u16string front = piece(), back = piece();
    std::u16string texts[2];
    for (const std::size_t most : {4u, ~0u}) {  // the second replaces the first
        std::u16string& text = texts[most != 4];
        for (std::size_t i = 0; i < most && !bytes.empty(); ++i) text += piece();
    }
    DatEntries entries;
    Require(!entries.Find(u""));
    for (const std::u16string& text : texts) {
        std::map<std::u16string, std::u16string> expected;
        int error = 0;
        for (const auto& line : Split(text, u"\r\n")) {
            const auto fields = Split(line, u"=");
            if (!error && fields.size() > 1 && !expected.emplace(fields[0], fields[1]).second) error = -1457;
        }
        Require(Answer([&] { entries.Parse(text); }) == error);
        Require(entries.text() == text && entries.size() == expected.size());
        for (const auto& [key, value] : expected) Require(entries.Find(key) == value);
        Require(entries.Find(front, back).has_value() == expected.contains(front + back));
        std::optional<std::u16string> region;
        const int answer = Answer([&] { region.emplace(SealedRegion(text)); });
        Require(answer == (region ? 0 : -1005) && region == LiteralRegion(text));
    }
}

}  // namespace velk::test
