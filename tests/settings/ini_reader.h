#pragma once

#include <algorithm>
#include <regex>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace velk::test {

// What a file's bytes say by the documented rules, read without the platform and cut as CIniFile cuts:
// "[A]k=1;l=2;[B]". Of sections and keys that stand twice the first counts.
inline std::string ReadIni(std::string bytes) {
    static const std::regex kSection(R"(\s*\[(.*?)\].*)");
    static const std::regex kEntry(R"lit((?!\s*;)\s*(.*?)\s*=\s*(?:(["'])(.*)\2|(.*?))\s*)lit");
    using Keys = std::vector<std::pair<std::string, std::string>>;
    std::vector<std::pair<std::string, Keys>> sections;
    if (bytes.starts_with("\xEF\xBB\xBF")) bytes.erase(0, 3);  // Wine's rule: elsewhere it hides the first line
    std::ranges::replace(bytes, '\r', '\n');
    std::istringstream lines(bytes);
    std::smatch found;
    for (std::string line; std::getline(lines, line);) {
        if (std::regex_match(line, found, kSection)) {
            sections.emplace_back(found[1], Keys());
        } else if (!sections.empty() && std::regex_match(line, found, kEntry)) {
            sections.back().second.emplace_back(found[1], found[2].matched ? found[3] : found[4]);
        }
    }
    // A list of names has room for 8190 bytes, with a NUL after each name.
    const auto first = [](const auto& named, const std::string& name) {
        return std::ranges::find(named, name, [](const auto& one) { return one.first; })->second;
    };
    const auto fits = [](std::size_t& room, const std::string& name) {
        return std::exchange(room, room - std::min(room, name.size() + 1)) > name.size();
    };
    std::string shown;
    std::size_t room = 8190;
    for (const auto& [section, ignored] : sections) {
        if (section.empty()) continue;
        if (!fits(room, section)) break;
        shown += '[' + section + ']';
        const Keys keys = first(sections, section);
        std::size_t keyRoom = 8190;
        for (const auto& [key, own] : keys) {
            if (!fits(keyRoom, key)) break;
            shown += key + '=' + first(keys, key).substr(0, 254) + ';';
        }
    }
    return shown;
}

}  // namespace velk::test
