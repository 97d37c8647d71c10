#pragma once

#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace velk::test {

using IniKeys = std::vector<std::pair<std::string, std::string>>;
using IniSections = std::vector<std::pair<std::string, IniKeys>>;

inline std::string Trimmed(const std::string& text) {
    const std::size_t first = text.find_first_not_of(" \t");
    return first == text.npos ? "" : text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

inline std::string Unquoted(const std::string& text) {
    const bool quoted = text.size() > 1 && (text[0] == '"' || text[0] == '\'') && text.back() == text[0];
    return quoted ? text.substr(1, text.size() - 2) : text;
}

// What a file's bytes say by the documented rules, read without the platform.
inline IniSections ReadIni(std::string bytes) {
    for (char& c : bytes) c = c == '\r' ? '\n' : c;
    IniSections sections;
    std::istringstream lines(bytes);
    for (std::string line; std::getline(lines, line);) {
        line = Trimmed(line);
        const std::size_t equals = line.find('=');
        if (line.starts_with('[')) {
            sections.emplace_back(line.substr(1, line.find(']') - 1), IniKeys());
        } else if (!line.starts_with(';') && equals != line.npos && !sections.empty()) {
            sections.back().second.emplace_back(Trimmed(line.substr(0, equals)),
                                                Unquoted(Trimmed(line.substr(equals + 1))));
        }
    }
    return sections;
}

}  // namespace velk::test
