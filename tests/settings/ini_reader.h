#pragma once

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace velk::test {

// What a file's bytes say by the documented rules, read without the platform and cut as CIniFile cuts.
class IniReader {
  public:
    explicit IniReader(std::string bytes) {
        if (bytes.starts_with("\xEF\xBB\xBF")) bytes.erase(0, 3);  // Wine's rule: elsewhere it hides the first line
        std::ranges::replace(bytes, '\r', '\n');
        for (std::size_t at = 0; at < bytes.size(); at = std::min(bytes.find('\n', at), bytes.size()) + 1) {
            Take(Trimmed(bytes.substr(at, bytes.find('\n', at) - at)));
        }
    }
    std::vector<std::string> Sections() const {
        std::vector<std::string> names;
        for (const auto& [name, keys] : sections_) names.push_back(name);
        std::erase(names, "");
        return Fitting(std::move(names));
    }
    std::vector<std::string> Keys(const std::string& section) const {
        std::vector<std::string> names;
        for (const auto& [name, value] : First(sections_, section)) names.push_back(name);
        return Fitting(std::move(names));
    }
    std::string Value(const std::string& section, const std::string& key) const {
        return First(First(sections_, section), key).substr(0, 254);
    }

  private:
    template <class Value>
    using Named = std::vector<std::pair<std::string, Value>>;

    void Take(const std::string& line) {
        const std::size_t equals = line.find('=');
        if (line.starts_with('[')) {
            sections_.emplace_back(line.substr(1, line.find(']') - 1), Named<std::string>());
        } else if (!line.starts_with(';') && equals != line.npos && !sections_.empty()) {
            sections_.back().second.emplace_back(Trimmed(line.substr(0, equals)),
                                                 Unquoted(Trimmed(line.substr(equals + 1))));
        }
    }
    template <class Value>
    static Value First(const Named<Value>& named, const std::string& name) {
        return std::ranges::find(named, name, &std::pair<std::string, Value>::first)->second;
    }
    static std::vector<std::string> Fitting(std::vector<std::string> names) {
        std::size_t count = 0;
        for (std::size_t room = 8190; count < names.size() && names[count].size() < room; ++count) {
            room -= names[count].size() + 1;
        }
        names.resize(count);
        return names;
    }
    static std::string Trimmed(const std::string& text) {
        const std::size_t first = text.find_first_not_of(" \t");
        return first == text.npos ? "" : text.substr(first, text.find_last_not_of(" \t") - first + 1);
    }
    static std::string Unquoted(const std::string& text) {
        const bool quoted = text.size() > 1 && (text[0] == '"' || text[0] == '\'') && text.back() == text[0];
        return quoted ? text.substr(1, text.size() - 2) : text;
    }

    Named<Named<std::string>> sections_;
};

// Everything that a reader gives, in one text: "[A]k=1;l=2;[B]".
template <class Reader>
std::string Shown(Reader& reader) {
    std::string shown;
    for (const auto& section : reader.Sections()) {
        shown += '[' + section + ']';
        for (const auto& key : reader.Keys(section)) shown += key + '=' + reader.Value(section, key) + ';';
    }
    return shown;
}

}  // namespace velk::test
