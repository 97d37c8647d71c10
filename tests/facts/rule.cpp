#include <cstring>

#include "facts/platform_log.h"
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

class Reader {
  public:
    Reader(const void* place, std::size_t size) : at_(static_cast<const char*>(place)), size_(size) {}

    std::wstring Next(char field) {
        if (field == 'i') return std::to_wstring(Take<LONG>());
        if (field == 'n') return std::to_wstring(Take<DWORD>());
        if (field == 'w') return std::to_wstring(Take<WORD>());
        if (field == 'b') return std::to_wstring(Take<BYTE>());
        if (field == 'h') return std::to_wstring(HandleToLong(Take<HANDLE>()));
        if (field == 't') return Quote(std::exchange(at_, start_ + size_));
        if (field == 'L') return Read(Take<LPCSTR>(), "i___ibbbzzzzzt", sizeof(LOGFONTA));
        if (field == '_') return Zero(Take<DWORD>());
        if (field == 'z') return Zero(Take<BYTE>());
        if (field == 'p') return Zero(Take<ULONG_PTR>());
        if (field == 'S') return Zero(Take<DWORD>() - static_cast<DWORD>(size_));
        const char* const text = Take<LPCSTR>();
        std::size_t size = text ? std::strlen(text) : 0;
        if (field == 'f')
            for (size = 0; text[size] || text[size + 1];) ++size;
        if (field != 'B') return text ? Quote(std::string_view(text, size)) : L"null";
        const std::string_view buffer(text, Take<DWORD>());
        return Quote(buffer.substr(0, buffer.find_last_not_of('\0') + 1)) + L" of " + std::to_wstring(buffer.size());
    }
    // The bytes that are left.
    std::wstring Rest() {
        bool zero = true;
        while (at_ < start_ + size_) zero = *at_++ == 0 && zero;
        return Zero(!zero);
    }

  private:
    template <class T>
    T Take() {
        at_ += static_cast<std::size_t>(start_ - at_) % sizeof(T);
        T field;
        std::memcpy(&field, std::exchange(at_, at_ + sizeof field), sizeof field);
        return field;
    }
    static std::wstring Zero(ULONG_PTR field) { return field ? L"something else" : L""; }

    const char* at_;
    const char* const start_ = at_;
    const std::size_t size_;
};

}  // namespace

Rule RuleOf(std::wstring line) {
    Rule rule;
    rule.logged = line.starts_with(L"with ");
    rule.missing = line.starts_with(L"without ");
    rule.action = Cut(line, L" does ");
    auto parts = Split(line, L" reads ");
    rule.readings.assign(parts.begin() + 1, parts.end());
    parts = Split(parts[0], L" fills ");
    rule.fillings.assign(parts.begin() + 1, parts.end());
    line = parts[0];
    if (const auto error = Cut(line, L" error "); !error.empty()) rule.error = static_cast<DWORD>(std::stoul(error));
    for (const auto& answer : Split(Cut(line, L" answers "), L",")) {
        rule.answers.emplace_back();
        if (answer != L"itself") rule.answers.back() = static_cast<LONG_PTR>(std::stoll(answer, nullptr, 0));
    }
    line.erase(0, line.find(L' ') + 1);
    rule.function = ToAnsi(line.substr(0, line.find(L' ')));
    rule.arguments = Trim(line.substr(rule.function.size()));
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

std::wstring Read(const void* place, std::string_view fields, std::size_t size) {
    Reader reader(place, size);
    std::vector<std::wstring> shown;
    for (const char field : fields) shown.push_back(reader.Next(field));
    shown.push_back(reader.Rest());
    std::erase(shown, L"");
    return L"[" + Joined(shown) + L"]";
}

}  // namespace velk::facts
