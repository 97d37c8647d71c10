#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace velk::test {

using Entries = std::map<std::u16string, std::u16string>;

inline std::vector<std::u16string> Split(const std::u16string& text, std::u16string_view at) {
    std::vector<std::u16string> pieces(1);
    for (std::size_t i = 0; i < text.size();) {
        if (text.compare(i, at.size(), at) == 0) {
            pieces.emplace_back();
            i += at.size();
        } else {
            pieces.back() += text[i++];
        }
    }
    return pieces;
}

// The rules read literally: split at CR LF, then at "=".
struct LiteralReading {
    Entries entries;
    int error = 0;

    explicit LiteralReading(const std::u16string& text) {
        for (const auto& line : Split(text, u"\r\n")) {
            const auto fields = Split(line, u"=");
            if (!error && fields.size() > 1 && !entries.emplace(fields[0], fields[1]).second) error = 457;
        }
    }
};

}  // namespace velk::test
