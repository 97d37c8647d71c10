#include "facts/scenario.h"

#include <fstream>

#include "facts/values.h"

namespace velk::facts {
std::list<Scenario> ScenariosOf(const std::filesystem::path& path) {
    std::list<Scenario> made;
    std::ifstream file(path, std::ios::binary);
    std::string bytes;
    for (int number = 1; std::getline(file, bytes); ++number) {
        const std::wstring line(bytes.begin(), bytes.end());  // other characters are written as escapes
        std::wstring text(Trim(line));
        if (text.empty() || text.starts_with(L"//")) continue;
        if (!line.starts_with(L' ')) {
            const std::wstring title = Cut(text, L":");
            made.push_back({path.filename().string(), number, text, title, {}});
        } else if (auto& lines = made.back().lines; !lines.empty() && lines.back().text.ends_with(L" ;")) {
            lines.back().text += L' ' + text;
        } else {
            lines.push_back({number, text});
        }
    }
    return made;
}

std::vector<std::wstring> Alternatives(const std::wstring& line) {
    std::vector<std::wstring> made(1);
    std::vector<std::vector<std::wstring>> groups;
    std::size_t at = 0;
    for (std::size_t open; (open = line.find(L'{', at)) != line.npos;) {
        const std::size_t close = line.find(L'}', open);
        auto parts = Split(std::wstring_view(line).substr(open + 1, close - open - 1), L"|");
        if (close == open + 2) parts = groups.at(line[open + 1] - L'1');
        if (parts.size() == 1) parts[0] = L'{' + parts[0] + L'}';  // nothing to choose from
        groups.push_back(parts);
        if (made.size() == 1) made.resize(parts.size(), made[0]);
        for (std::size_t i = 0; i < made.size(); ++i) made[i] += line.substr(at, open - at) + parts.at(i);
        at = close + 1;
    }
    for (std::wstring& one : made) one += line.substr(at);
    return made;
}

}  // namespace velk::facts
