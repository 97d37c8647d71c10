#include "facts/rule.h"

#include "facts/values.h"
#include "platform/text.h"

namespace velk::facts {
namespace {

// What one item of a filling stands for: its bytes, and how many of the place it covers.
struct Item {
    explicit Item(const std::wstring& text) {
        if (text.starts_with(L'"')) {
            bytes = ToAnsi(Unquote(text)) + '\0';
            size = bytes.size();
            return;
        }
        constexpr std::pair<wchar_t, std::size_t> kSizes[] = {{L'p', sizeof(void*)}, {L'q', 8}, {L'i', 2}, {L'b', 1}};
        for (const auto& [mark, bySuffix] : kSizes) {
            if (text.back() == mark && (mark != L'b' || !text.starts_with(L"0x"))) size = bySuffix;
        }
        if (text.starts_with(L'_')) return;
        const LONGLONG number = std::stoll(text, nullptr, 0);
        bytes.assign(reinterpret_cast<const char*>(&number), size);
    }
    std::size_t size = 4;
    std::string bytes;  // none: what is there stays
};

}  // namespace

Rule RuleOf(const std::wstring& line) {
    Rule rule;
    rule.logged = line.starts_with(L"with ");
    rule.missing = line.starts_with(L"without ");
    auto parts = Split(line, L" does ");
    if (parts.size() == 2) rule.action = parts[1];
    parts = Split(parts[0], L" reads ");
    rule.readings.assign(parts.begin() + 1, parts.end());
    parts = Split(parts[0], L" fills ");
    rule.fillings.assign(parts.begin() + 1, parts.end());
    parts = Split(parts[0], L" error ");
    if (parts.size() == 2) rule.error = static_cast<DWORD>(std::stoul(parts[1]));
    parts = Split(parts[0], L" answers ");
    if (parts.size() == 2) {
        for (const auto& answer : Split(parts[1], L",")) {
            rule.answers.emplace_back();
            if (answer != L"itself") rule.answers.back() = static_cast<LONG_PTR>(std::stoll(answer, nullptr, 0));
        }
    }
    const std::wstring call = parts[0].substr(parts[0].find(L' ') + 1);
    const std::size_t name = call.find(L' ');
    rule.function = ToAnsi(call.substr(0, name));
    if (name != call.npos) rule.arguments = call.substr(name + 1);
    return rule;
}

void Fill(const std::wstring& filling, const std::vector<void*>& places) {
    const std::vector<std::wstring> items = Split(filling, L" ");
    char* const place = static_cast<char*>(places.at(std::stoul(items.at(0))));
    std::size_t offset = 0;
    for (std::size_t i = 1; i < items.size(); ++i) {
        const Item item(items[i]);
        if (!items[i].starts_with(L'"')) offset = (offset + item.size - 1) / item.size * item.size;
        item.bytes.copy(place + offset, item.bytes.size());
        offset += item.size;
    }
}

std::pair<std::size_t, std::wstring> Read(const std::wstring& reading, const std::vector<void*>& places) {
    const std::vector<std::wstring> parts = Split(reading, L" ");
    const std::size_t argument = std::stoul(parts.at(0));
    if (parts.at(1) == L"text") return {argument, Quote(Wide(FromAnsi(static_cast<LPCSTR>(places.at(argument)))))};
    std::wstring shown;
    for (int i = 0; i < std::stoi(parts.at(2)); ++i)
        shown += (i ? L", " : L"") + std::to_wstring(static_cast<const LONG*>(places.at(argument))[i]);
    return {argument, L"[" + shown + L"]"};
}

}  // namespace velk::facts
