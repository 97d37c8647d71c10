#include "facts/platform_log.h"

#include <commdlg.h>
#include <htmlhelp.h>
#include <lmcons.h>
#include <mmsystem.h>
#include <shellapi.h>
#include <wininet.h>
#include <algorithm>
#include <bit>
#include <cstring>
#include <map>
#include <span>

#include "facts/values.h"
#include "platform/text.h"
#include "support/client.h"
#include "support/fake.h"

namespace velk::facts {
namespace {

PlatformLog* current = nullptr;

// ---- Places that arguments lead to ----

// How much of a place an item of a filling covers.
std::size_t SizeOf(const std::wstring& item) {
    if (item.ends_with(L'b') && !item.starts_with(L"0x")) return 1;
    return item.ends_with(L'p') ? sizeof(void*) : item.ends_with(L'q') ? 8 : item.ends_with(L'i') ? 2 : 4;
}

std::wstring Read(const void* place, std::string_view fields, std::size_t size = 0);

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
        return Zero(std::any_of(at_, std::max(at_, start_ + size_), [](char byte) { return byte != 0; }));
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

// Fields at a place, each at a multiple of its size: "iit", or a record of a size, whose other bytes have to be 0. A
// letter is a field: i a Long, n one without a sign, w 16 bits of it, b a byte, h a handle, s a text elsewhere and t
// one right here, f a dialog's filter, B a buffer and its size, L a font, S the size of the record; _ a Long, p a
// pointer and z a byte that have to be 0.
std::wstring Read(const void* place, std::string_view fields, std::size_t size) {
    Reader reader(place, size);
    std::vector<std::wstring> shown;
    for (const char field : fields) shown.push_back(reader.Next(field));
    shown.push_back(reader.Rest());
    std::erase(shown, L"");
    return L"[" + Joined(shown) + L"]";
}

// Writes what a filling says where the arguments lead.
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

// ---- Calls ----

[[maybe_unused]] std::wstring Shown(LPCSTR text) { return text ? Quote(text) : L"null"; }
[[maybe_unused]] std::wstring Shown(LPCWSTR text) { return text ? Quote(text) : L"null"; }
template <class Number>
requires std::is_integral_v<Number> || std::is_enum_v<Number> std::wstring Shown(Number number) {
    return std::to_wstring(static_cast<LONGLONG>(number));
}
// Handles are pointers to records of one number, or small numbers; other pointers lead to places.
template <class T>
std::wstring Shown(T* place) {
    if constexpr (std::is_class_v<T>) {
        if (sizeof(T) == sizeof(int)) return std::to_wstring(HandleToLong(place));
    }
    if (!place) return L"null";
    const auto number = reinterpret_cast<ULONG_PTR>(place);
    return number > 0xFFFF ? L"&" : std::to_wstring(number);
}
std::wstring Shown(const GUID&) { return L"guid"; }

std::wstring Shown(SHELLEXECUTEINFOA* order) { return Read(order, "Snhssssi", sizeof *order); }
std::wstring Shown(OPENFILENAMEA* dialog) { return Read(dialog, "Shpfp_nBBssn_s", sizeof(OPENFILENAME_NT4A)); }
std::wstring Shown(PRINTDLGA* dialog) { return Read(dialog, "Shpppnwwwww", sizeof *dialog); }
std::wstring Shown(CHOOSEFONTA* dialog) { return Read(dialog, "ShhL_nnppppp_ii", sizeof *dialog); }
std::wstring Shown(const LOGBRUSH* brush) { return Read(brush, "nni"); }
std::wstring Shown(LARGE_INTEGER number) { return Shown(number.QuadPart); }
std::wstring Shown(OSVERSIONINFOA* place) { return Read(place, "n"); }
std::wstring Shown(MEMORYSTATUS* place) { return place->dwLength == sizeof *place ? L"&" : L"of another size"; }

// The places that an argument leads to: numbers may be addresses, and the records of the shell and of dialogs lead to
// more.
template <class T>
void AddPlaces(std::vector<void*>& places, T argument) {
    if constexpr (sizeof(T) == sizeof(void*) && std::is_scalar_v<T>) {
        places.push_back(std::bit_cast<void*>(argument));
    } else {
        places.push_back(nullptr);
    }
    if constexpr (std::is_same_v<T, OPENFILENAMEA*>)
        places.insert(places.end(), {argument->lpstrFile, argument->lpstrFileTitle});
    if constexpr (std::is_same_v<T, CHOOSEFONTA*>) places.push_back(argument->lpLogFont);
    if constexpr (std::is_same_v<T, SHELLEXECUTEINFOA*>)
        places.insert(places.end(), {&argument->hInstApp, &argument->hProcess});
}

Rule* RuleFor(std::string_view function, const std::wstring& arguments) {
    for (Rule& rule : current->rules) {
        if (rule.function == function && Alike(rule.arguments, arguments)) return &rule;
    }
    return nullptr;
}

// A call's answer, by the latest rule for it or by the platform itself.
LONG_PTR Answer(const std::string& function, std::vector<std::wstring> shown, const std::vector<void*>& places,
                const std::function<LONG_PTR()>& itself) {
    const DWORD errorBefore = GetLastError();
    Rule* const rule = RuleFor(function, Joined(shown) + L",");
    std::optional<LONG_PTR> answer;
    if (rule) {
        for (const std::wstring& reading : rule->readings) {
            const auto parts = Split(reading, L" ");
            const std::size_t argument = std::stoul(parts.at(0));
            shown.at(argument) = Read(places.at(argument), ToAnsi(parts.at(1)));
        }
        const bool quietly = GetThreadErrorMode() & SEM_FAILCRITICALERRORS;
        if (rule->logged)
            current->lines.push_back(L"saw " + std::wstring(function.begin(), function.end()) +
                                     (shown.empty() ? L"" : L" ") + Joined(shown) + (quietly ? L" quietly" : L""));
        if (!rule->action.empty()) current->act(rule->action);
        if (!rule->answers.empty()) answer = rule->answers.front();
        if (rule->answers.size() > 1) rule->answers.pop_front();
    }
    SetLastError(errorBefore);
    const LONG_PTR result = answer ? *answer : itself();
    const DWORD error = answer ? rule->error.value_or(errorBefore) : GetLastError();
    for (const std::wstring& filling : rule ? rule->fillings : std::vector<std::wstring>()) Fill(filling, places);
    SetLastError(error);
    return result;
}

template <auto Function, class = decltype(Function)>
struct Watch;
template <auto Function, class Result, class... Arguments>
struct Watch<Function, Result(WINAPI*)(Arguments...)> {
    static Result WINAPI Run(Arguments... arguments) {
        std::vector<void*> places;
        (AddPlaces(places, arguments), ...);
        const auto itself = [&] {
            if constexpr (!std::is_void_v<Result>) return (LONG_PTR)Function(arguments...);
            return Function(arguments...), LONG_PTR{0};
        };
        return (Result)Answer(test::NameOf<Function>(), {Shown(arguments)...}, places, itself);
    }
};

template <auto... Functions>
std::map<std::string, void*> AllOf() {
    return {{test::NameOf<Functions>(), test::Address(&Watch<Functions>::Run)}...};
}

void* ReplacementOf(const std::string& name) {
    static const auto watchable = AllOf<
#include "watched_functions.h"
        >();
    return watchable.at(name);
}

// with F 1 answers 5, 6 error 87 fills 1 "text" fills 2 1 2 reads 3 ii does release
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

// The owner and the type are told where they are not the usual ones.
void ShowBox(HWND owner, LPCWSTR text, LPCWSTR title, UINT flags) {
    const UINT icon = flags & MB_ICONMASK;
    std::wstring line = L"shows " + Quote(title ? title : L"") + L", " + Quote(text);
    if (icon) line += L" icon " + std::to_wstring(icon);
    if (owner || (flags & ~icon) != MB_TASKMODAL) line += L" as another kind of box";
    current->lines.push_back(line);
    current->box(L"box" + line.substr(5));
}

}  // namespace

PlatformLog::PlatformLog(Take step, Take box) : act(std::move(step)), box(std::move(box)), boxes(&ShowBox) {
    current = this;
}

void PlatformLog::Add(const std::wstring& line) {
    Rule rule = RuleOf(line);
    void* const replacement = rule.missing ? nullptr : ReplacementOf(rule.function);
    patches.emplace_front(test::Library(), rule.function.c_str(), replacement);
    rules.push_front(std::move(rule));
}

std::wstring PlatformLog::Next() {
    if (lines.empty()) return L"";
    std::wstring line = std::move(lines.front());
    lines.pop_front();
    return line;
}

}  // namespace velk::facts
