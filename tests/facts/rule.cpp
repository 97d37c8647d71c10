#include <cstring>
#include <span>

#include "facts/platform_log.h"
#include "facts/values.h"
#include "platform/text.h"

namespace velk::facts {
namespace {

// How much of a place an item of a filling covers.
std::size_t SizeOf(const std::wstring& item) {
    if (item.ends_with(L'b') && !item.starts_with(L"0x")) return 1;
    return item.ends_with(L'p') ? sizeof(void*) : item.ends_with(L'q') ? 8 : item.ends_with(L'i') ? 2 : 4;
}

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
    std::size_t at = 0;
    for (const std::wstring& item : std::span(items).subspan(1)) {
        const bool isText = item.starts_with(L'"');
        const std::string text = isText ? ToAnsi(Unquote(item)) + '\0' : "";
        const LONGLONG number = isText || item.starts_with(L'_') ? 0 : std::stoll(item, nullptr, 0);
        const std::size_t size = isText ? text.size() : SizeOf(item);
        if (!isText) at = (at + size - 1) / size * size;
        if (!item.starts_with(L'_'))
            std::memcpy(place + at, isText ? text.data() : static_cast<const void*>(&number), size);
        at += size;
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
