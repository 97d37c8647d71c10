#include "facts/platform_log.h"

#include <commdlg.h>
#include <lmcons.h>
#include <mmsystem.h>
#include <shellapi.h>
#include <wininet.h>
#include <algorithm>
#include <list>
#include <map>
#include <optional>
#include <stdexcept>

#include "facts/values.h"
#include "platform/text.h"
#include "support/client.h"
#include "support/import_patch.h"
#include "support/procedure_patch.h"

namespace velk::facts {

struct PlatformLog::State {
    std::list<Rule> rules;
    std::list<test::ImportPatch> imports;
    std::list<test::ProcedurePatch> procedures;
    std::deque<std::wstring> lines;
    std::map<std::wstring, std::vector<HGDIOBJ>> drawing;  // the objects of each kind that were told
};

namespace {

PlatformLog::State* current = nullptr;

// ---- Arguments as text ----

[[maybe_unused]] std::wstring Shown(LPCSTR text) { return text ? Quote(Wide(FromAnsi(text))) : L"null"; }
[[maybe_unused]] std::wstring Shown(LPCWSTR text) { return text ? Quote(text) : L"null"; }
template <class Number>
requires std::is_integral_v<Number> || std::is_enum_v<Number> std::wstring Shown(Number number) {
    return std::to_wstring(static_cast<LONGLONG>(number));
}
// "pen 1": drawing objects and device contexts have numbers in the order in which a scenario sees them.
std::wstring DrawingName(HGDIOBJ object) {
    constexpr std::pair<DWORD, const wchar_t*> kKinds[] = {
        {OBJ_PEN, L"pen "}, {OBJ_BRUSH, L"brush "}, {OBJ_BITMAP, L"bitmap "}, {OBJ_DC, L"dc "}, {OBJ_MEMDC, L"dc "}};
    const DWORD type = HandleToULong(object) > 0xFFFF ? GetObjectType(object) : 0;
    for (const auto& [kind, name] : kKinds) {
        if (type != kind) continue;
        auto& seen = current->drawing[name];
        const auto place = std::ranges::find(seen, object);
        const auto number = place - seen.begin() + 1;
        if (place == seen.end()) seen.push_back(object);
        return name + std::to_wstring(number);
    }
    return L"";
}
// The handles of windows and the like are pointers to records of one number; other pointers lead to places.
template <class T>
std::wstring Shown(T* place) {
    if constexpr (std::is_void_v<T> || std::is_same_v<T, HDC__> || std::is_same_v<T, HWND__>) {
        const bool window = std::is_same_v<T, HWND__> && IsWindow(reinterpret_cast<HWND>(place));
        const std::wstring name = window ? L"" : DrawingName(place);
        if (!name.empty()) return name;
    }
    if constexpr (std::is_class_v<T>) {
        if (sizeof(T) == sizeof(int)) return std::to_wstring(HandleToLong(place));
    }
    return place ? L"&" : L"null";
}
[[maybe_unused]] std::wstring Shown(char*) { return L"&"; }
[[maybe_unused]] std::wstring Shown(wchar_t*) { return L"&"; }
std::wstring Shown(const SHELLEXECUTEINFOA* order) {
    std::wstring shown = L"{" + std::to_wstring(order->fMask) + L", " + Shown(order->hwnd);
    for (const LPCSTR text : {order->lpVerb, order->lpFile, order->lpParameters, order->lpDirectory})
        shown += L", " + Shown(text);
    return shown + L", " + std::to_wstring(order->nShow) + L"}";
}
std::wstring Shown(const LOGBRUSH* brush) {
    return L"{" + Shown(brush->lbStyle) + L", " + Shown(brush->lbColor) + L", " + Shown(brush->lbHatch) + L"}";
}
std::wstring Shown(LARGE_INTEGER number) { return Shown(number.QuadPart); }
std::wstring Shown(SHELLEXECUTEINFOA* order) { return Shown(static_cast<const SHELLEXECUTEINFOA*>(order)); }

// ---- One function ----

void Fill(const std::wstring& filling, const std::vector<void*>& places) {
    std::size_t used = 0;
    void* const place = places.at(std::stoul(filling, &used));
    const std::wstring_view what = Trim(std::wstring_view(filling).substr(used));
    if (what.starts_with(L'"')) {
        const std::string bytes = ToAnsi(Unquote(what));
        std::memcpy(place, bytes.data(), bytes.size() + 1);
        return;
    }
    auto* to = static_cast<LONG*>(place);
    for (const std::wstring& number : Split(what.substr(what.find(L' ') + 1), L" ")) {
        if (number != L"_") *to = static_cast<LONG>(std::stoll(number, nullptr, 0));
        ++to;
    }
}

const Rule* RuleFor(const char* function, const std::wstring& arguments) {
    for (const Rule& rule : current->rules) {
        if (rule.function == function && (arguments + L",").starts_with(rule.arguments)) return &rule;
    }
    return nullptr;
}

template <class T>
void* PlaceOf(T argument) {
    if constexpr (std::is_pointer_v<T> && !std::is_function_v<std::remove_pointer_t<T>>) {
        return const_cast<void*>(static_cast<const void*>(argument));
    } else {
        return nullptr;
    }
}

struct Watchable {
    const char* name;
    void* replacement;
};

template <auto Function, class = decltype(Function)>
struct Watch;
template <auto Function, class Result, class... Arguments>
struct Watch<Function, Result(WINAPI*)(Arguments...)> {
    static inline const char* name;

    static Result WINAPI Run(Arguments... arguments) {
        std::wstring shown;
        ((shown += (shown.empty() ? L"" : L", ") + Shown(arguments)), ...);
        auto* const rule = const_cast<Rule*>(RuleFor(name, shown));
        const std::wstring call = shown.empty() ? shown : L" " + shown;
        if (rule && rule->logged) current->lines.push_back(L"saw " + std::wstring(Wide(FromAnsi(name))) + call);
        if (!rule) return Function(arguments...);
        const auto own = rule->answers.empty() ? std::optional<LONG_PTR>() : rule->answers.front();
        if (rule->answers.size() > 1) rule->answers.pop_front();
        const auto fill = [&] {
            for (const std::wstring& filling : rule->fillings) Fill(filling, {PlaceOf(arguments)...});
        };
        if constexpr (std::is_void_v<Result>) {
            if (!own) Function(arguments...);
            fill();
        } else {
            const Result answer = own ? (Result)*own : Function(arguments...);  // a number, a truth or a handle
            fill();
            if (own) SetLastError(rule->error);
            return answer;
        }
    }
};

template <auto Function>
Watchable Watched(const char* name) {
    Watch<Function>::name = name;
    return {name, reinterpret_cast<void*>(&Watch<Function>::Run)};
}

const Watchable kWatchable[] = {
    Watched<&Arc>("Arc"),
    Watched<&BitBlt>("BitBlt"),
    Watched<&CLSIDFromProgID>("CLSIDFromProgID"),
    Watched<&CloseClipboard>("CloseClipboard"),
    Watched<&CloseHandle>("CloseHandle"),
    Watched<&CreateBrushIndirect>("CreateBrushIndirect"),
    Watched<&CreateCompatibleBitmap>("CreateCompatibleBitmap"),
    Watched<&CreateCompatibleDC>("CreateCompatibleDC"),
    Watched<&CreateDCA>("CreateDCA"),
    Watched<&CreatePen>("CreatePen"),
    Watched<&DeleteDC>("DeleteDC"),
    Watched<&DeleteObject>("DeleteObject"),
    Watched<&Ellipse>("Ellipse"),
    Watched<&EmptyClipboard>("EmptyClipboard"),
    Watched<&FindClose>("FindClose"),
    Watched<&GetActiveWindow>("GetActiveWindow"),
    Watched<&GetComputerNameA>("GetComputerNameA"),
    Watched<&GetCurrentHwProfileA>("GetCurrentHwProfileA"),
    Watched<&GetDeviceCaps>("GetDeviceCaps"),
    Watched<&GetDesktopWindow>("GetDesktopWindow"),
    Watched<&GetDiskFreeSpaceA>("GetDiskFreeSpaceA"),
    Watched<&GetDiskFreeSpaceExA>("GetDiskFreeSpaceExA"),
    Watched<&GetDriveTypeA>("GetDriveTypeA"),
    Watched<&GetFileSizeEx>("GetFileSizeEx"),
    Watched<&GetLocaleInfoA>("GetLocaleInfoA"),
    Watched<&GetLogicalDriveStringsA>("GetLogicalDriveStringsA"),
    Watched<&GetSystemDirectoryA>("GetSystemDirectoryA"),
    Watched<&GetSystemInfo>("GetSystemInfo"),
    Watched<&GetSystemMetrics>("GetSystemMetrics"),
    Watched<&GetTempPathA>("GetTempPathA"),
    Watched<&GetTickCount>("GetTickCount"),
    Watched<&GetUserDefaultLCID>("GetUserDefaultLCID"),
    Watched<&GetUserNameA>("GetUserNameA"),
    Watched<&GetVersionExA>("GetVersionExA"),
    Watched<&GetVolumeInformationA>("GetVolumeInformationA"),
    Watched<&GetWindowLongA>("GetWindowLongA"),
    Watched<&GetWindowRect>("GetWindowRect"),
    Watched<&GetWindowsDirectoryA>("GetWindowsDirectoryA"),
    Watched<&GlobalMemoryStatus>("GlobalMemoryStatus"),
    Watched<&InternetGetConnectedStateExA>("InternetGetConnectedStateExA"),
    Watched<&InternetSetOptionA>("InternetSetOptionA"),
    Watched<&IsProcessorFeaturePresent>("IsProcessorFeaturePresent"),
    Watched<&IsWindow>("IsWindow"),
    Watched<&LineTo>("LineTo"),
    Watched<&LoadLibraryExW>("LoadLibraryExW"),
    Watched<&MoveToEx>("MoveToEx"),
    Watched<&OpenClipboard>("OpenClipboard"),
    Watched<&ReadFile>("ReadFile"),
    Watched<&Rectangle>("Rectangle"),
    Watched<&RegCreateKeyExA>("RegCreateKeyExA"),
    Watched<&RegOpenKeyExA>("RegOpenKeyExA"),
    Watched<&RegSetValueExA>("RegSetValueExA"),
    Watched<&ReleaseDC>("ReleaseDC"),
    Watched<&SelectObject>("SelectObject"),
    Watched<&SendMessageA>("SendMessageA"),
    Watched<&SetClipboardData>("SetClipboardData"),
    Watched<&SetComputerNameA>("SetComputerNameA"),
    Watched<&SetFilePointerEx>("SetFilePointerEx"),
    Watched<&SetROP2>("SetROP2"),
    Watched<&SetVolumeLabelA>("SetVolumeLabelA"),
    Watched<&SetWindowLongA>("SetWindowLongA"),
    Watched<&SetWindowPos>("SetWindowPos"),
    Watched<&ShellExecuteA>("ShellExecuteA"),
    Watched<&ShellExecuteExA>("ShellExecuteExA"),
    Watched<&SysAllocStringLen>("SysAllocStringLen"),
    Watched<&SystemParametersInfoA>("SystemParametersInfoA"),
    Watched<&WritePrivateProfileStringA>("WritePrivateProfileStringA"),
    Watched<&timeGetTime>("timeGetTime"),
};

const Watchable& Find(const std::string& name) {
    for (const Watchable& one : kWatchable) {
        if (name == one.name) return one;
    }
    throw std::runtime_error(name + " is not among the functions that can be watched");
}

// The owner and the type are told where they are not the usual ones.
int WINAPI ShowBox(HWND owner, LPCWSTR text, LPCWSTR title, UINT type) {
    std::wstring line = L"shows " + Quote(title) + L", " + Quote(text);
    if (owner) line += L", owned";
    if (type != (MB_OK | MB_TASKMODAL)) line += L", " + std::to_wstring(type);
    current->lines.push_back(std::move(line));
    return IDOK;
}

}  // namespace

PlatformLog::PlatformLog() : state_(std::make_unique<State>()) {
    current = state_.get();
    state_->imports.emplace_back(test::Library(), "MessageBoxW", reinterpret_cast<void*>(&ShowBox));
}

PlatformLog::~PlatformLog() {
    state_.reset();
    current = nullptr;
}

// The latest rule counts first.
void PlatformLog::Add(Rule rule) {
    const Watchable& function = Find(rule.function);
    void* const replacement = rule.missing ? nullptr : function.replacement;
    if (test::ImportPatch::IsImported(test::Library(), function.name)) {
        state_->imports.emplace_back(test::Library(), function.name, replacement);
    } else {
        state_->procedures.emplace_back(test::Library(), function.name, replacement);
    }
    state_->rules.push_front(std::move(rule));
}

void PlatformLog::Tell(const std::wstring& event) { state_->lines.push_back(L"saw " + event); }

std::wstring PlatformLog::Next() {
    if (state_->lines.empty()) return L"";
    std::wstring line = std::move(state_->lines.front());
    state_->lines.pop_front();
    return line;
}

}  // namespace velk::facts
