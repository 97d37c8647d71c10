#pragma once

#include <map>
#include <string>
#include <vector>

namespace velk::test {

using Entries = std::map<std::u16string, std::u16string>;

// The rules read literally: split at CR LF, then at "=".
struct LiteralReading {
    Entries entries;
    int error = 0;

    explicit LiteralReading(const std::u16string& text) {
        std::vector<std::u16string> lines(1);
        for (std::size_t i = 0; i < text.size(); ++i) {
            if (text[i] == u'\r' && text.substr(i, 2) == u"\r\n") {
                lines.emplace_back();
                ++i;
            } else {
                lines.back() += text[i];
            }
        }
        for (const auto& line : lines)
            if (error == 0) Add(line);
    }

    void Add(const std::u16string& line) {
        std::vector<std::u16string> fields(1);
        for (const char16_t unit : line) {
            if (unit == u'=') fields.emplace_back();
            if (unit != u'=') fields.back() += unit;
        }
        if (fields.size() > 1 && !entries.emplace(fields[0], fields[1]).second) error = 457;
    }
};

}  // namespace velk::test
