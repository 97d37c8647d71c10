#include "facts/platform_log.h"

#include <commdlg.h>
#include <htmlhelp.h>
#include <lmcons.h>
#include <mmsystem.h>
#include <shellapi.h>
#include <wininet.h>
#include <algorithm>
#include <bit>
#include <map>
#include <stdexcept>

#include "facts/values.h"
#include "platform/text.h"
#include "support/client.h"
#include "support/fake.h"

namespace velk::facts {
namespace {

PlatformLog* current = nullptr;
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

void PlatformLog::Add(Rule rule) {
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
