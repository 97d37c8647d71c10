#include "facts/platform_log.h"

#include <commdlg.h>
#include <htmlhelp.h>
#include <lmcons.h>
#include <mmsystem.h>
#include <shellapi.h>
#include <wininet.h>
#include <algorithm>
#include <cstring>
#include <list>
#include <map>
#include <optional>
#include <stdexcept>

#include "facts/values.h"
#include "platform/text.h"
#include "support/client.h"
#include "support/import_patch.h"

namespace velk::facts {

struct PlatformLog::State {
    Take act, box;
    std::list<Rule> rules;
    std::list<test::ImportPatch> patches;  // the latest first, and taken away first
    std::deque<std::wstring> lines;
    std::map<std::wstring, std::vector<HGDIOBJ>> drawing;  // the objects of each kind that were told
};

namespace {

PlatformLog::State* current = nullptr;
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
std::wstring Shown(const GUID&) { return L"guid"; }

// Fields of a record. Each is cleared as it is shown, so that what is left of the record has to be 0.
template <class... Fields>
std::wstring Taken(Fields&... fields) {
    std::wstring shown;
    ((shown += (shown.empty() ? L"" : L", ") + Shown(std::exchange(fields, Fields{}))), ...);
    return shown;
}
template <class Record>
std::wstring Bracketed(const std::wstring& shown, const Record& left) {
    const std::string bytes(reinterpret_cast<const char*>(&left), sizeof left);
    return L"[" + shown + (bytes == std::string(sizeof left, '\0') ? L"]" : L", and something else]");
}
// Without the NULs at its end.
std::wstring TakenBuffer(LPSTR& buffer, DWORD& size) {
    std::string bytes(std::exchange(buffer, nullptr), size);
    while (bytes.ends_with('\0')) bytes.pop_back();
    return Quote(Wide(FromAnsi(bytes))) + L" of " + std::to_wstring(std::exchange(size, 0));
}
std::wstring Shown(SHELLEXECUTEINFOA* order) {
    SHELLEXECUTEINFOA left = *order;
    left.cbSize -= sizeof left;
    return Bracketed(
        Taken(left.fMask, left.hwnd, left.lpVerb, left.lpFile, left.lpParameters, left.lpDirectory, left.nShow), left);
}
std::wstring Shown(OPENFILENAMEA* dialog) {
    OPENFILENAMEA left = *dialog;
    left.lStructSize -= sizeof(OPENFILENAME_NT4A);
    const char kEnd[] = "\0";
    LPCSTR filter = std::exchange(left.lpstrFilter, nullptr);
    const LPCSTR end = std::search(filter, filter + 32768, kEnd, kEnd + 2);
    const std::wstring first = Taken(left.hwndOwner) + L", " + Quote(Wide(FromAnsi({filter, end}))) + L", " +
                               Taken(left.nFilterIndex) + L", " + TakenBuffer(left.lpstrFile, left.nMaxFile);
    return Bracketed(first + L", " + TakenBuffer(left.lpstrFileTitle, left.nMaxFileTitle) + L", " +
                         Taken(left.lpstrInitialDir, left.lpstrTitle, left.Flags, left.lpstrDefExt),
                     left);
}
std::wstring Shown(PRINTDLGA* dialog) {
    PRINTDLGA left = *dialog;  // packed, so that nothing can refer to its fields
    std::wstring shown = Shown(+left.hwndOwner);
    for (const DWORD number : {left.Flags, DWORD{left.nFromPage}, DWORD{left.nToPage}, DWORD{left.nMinPage},
                               DWORD{left.nMaxPage}, DWORD{left.nCopies}})
        shown += L", " + Shown(number);
    left.lStructSize -= sizeof left;
    left.hwndOwner = nullptr;
    left.Flags = left.nFromPage = left.nToPage = left.nMinPage = left.nMaxPage = left.nCopies = 0;
    return Bracketed(shown, left);
}
std::wstring Shown(CHOOSEFONTA* dialog) {
    CHOOSEFONTA left = *dialog;
    left.lStructSize -= sizeof left;
    LOGFONTA font = *std::exchange(left.lpLogFont, nullptr);
    const std::string face = dialog->lpLogFont->lfFaceName;  // which may have 33 bytes here
    std::memset(font.lfFaceName, 0, sizeof font.lfFaceName);
    const std::wstring style = Taken(font.lfHeight, font.lfWeight, font.lfItalic, font.lfUnderline, font.lfStrikeOut);
    return Bracketed(Taken(left.hwndOwner, left.hDC) + L", " + Bracketed(style + L", " + Shown(face.c_str()), font) +
                         L", " + Taken(left.Flags, left.rgbColors, left.nSizeMin, left.nSizeMax),
                     left);
}
std::wstring Shown(const LOGBRUSH* brush) {
    return L"{" + Shown(brush->lbStyle) + L", " + Shown(brush->lbColor) + L", " + Shown(brush->lbHatch) + L"}";
}
std::wstring Shown(LARGE_INTEGER number) { return Shown(number.QuadPart); }
std::wstring Shown(OSVERSIONINFOA* place) { return L"[" + std::to_wstring(place->dwOSVersionInfoSize) + L"]"; }
std::wstring Shown(MEMORYSTATUS* place) { return place->dwLength == sizeof *place ? L"&" : L"of another size"; }

std::wstring Joined(const std::vector<std::wstring>& texts) {
    std::wstring joined;
    for (const std::wstring& text : texts) joined += (joined.empty() ? L"" : L", ") + text;
    return joined;
}

Rule* RuleFor(const char* function, const std::wstring& arguments) {
    for (Rule& rule : current->rules) {
        if (rule.function == function && Alike(rule.arguments, arguments + L",")) return &rule;
    }
    return nullptr;
}

// The places that an argument leads to: numbers may be addresses, and the records of the shell and of dialogs lead to
// more.
template <class T>
void AddPlaces(std::vector<void*>& places, T argument) {
    if constexpr (std::is_pointer_v<T> && !std::is_function_v<std::remove_pointer_t<T>>) {
        places.push_back(const_cast<void*>(static_cast<const void*>(argument)));
    } else if constexpr (sizeof(T) == sizeof(void*) && std::is_integral_v<T>) {
        places.push_back(reinterpret_cast<void*>(argument));
    } else {
        places.push_back(nullptr);
    }
    if constexpr (std::is_same_v<T, OPENFILENAMEA*>)
        places.insert(places.end(), {argument->lpstrFile, argument->lpstrFileTitle});
    if constexpr (std::is_same_v<T, CHOOSEFONTA*>) places.push_back(argument->lpLogFont);
    if constexpr (std::is_same_v<T, SHELLEXECUTEINFOA*>)
        places.insert(places.end(), {&argument->hInstApp, &argument->hProcess});
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
        const DWORD errorBefore = GetLastError();
        std::vector<std::wstring> shown{Shown(arguments)...};
        std::vector<void*> places;
        (AddPlaces(places, arguments), ...);
        Rule* const rule = current ? RuleFor(name, Joined(shown)) : nullptr;
        if (!rule) return SetLastError(errorBefore), Function(arguments...);
        for (const std::wstring& reading : rule->readings) {
            const auto [argument, text] = Read(reading, places);
            shown.at(argument) = text;
        }
        const bool quietly = GetThreadErrorMode() & SEM_FAILCRITICALERRORS;
        if (rule->logged)
            current->lines.push_back(L"saw " + std::wstring(Wide(FromAnsi(name))) + (shown.empty() ? L"" : L" ") +
                                     Joined(shown) + (quietly ? L" quietly" : L""));
        if (!rule->action.empty()) current->act(rule->action);
        const bool itself = rule->answers.empty() || !rule->answers.front();
        const LONG_PTR own = itself ? 0 : *rule->answers.front();
        if (rule->answers.size() > 1) rule->answers.pop_front();
        const auto fill = [&] {
            for (const std::wstring& filling : rule->fillings) Fill(filling, places);
        };
        if (itself) SetLastError(errorBefore);
        if constexpr (std::is_void_v<Result>) {
            if (itself) Function(arguments...);
            fill();
        } else {
            const Result answer = itself ? Function(arguments...) : (Result)own;  // a number, a truth or a handle
            fill();
            if (!itself) SetLastError(rule->error.value_or(errorBefore));
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
    Watched<&ChooseFontA>("ChooseFontA"),
    Watched<&CloseClipboard>("CloseClipboard"),
    Watched<&CloseHandle>("CloseHandle"),
    Watched<&CoCreateGuid>("CoCreateGuid"),
    Watched<&CoCreateInstance>("CoCreateInstance"),
    Watched<&CreateBrushIndirect>("CreateBrushIndirect"),
    Watched<&CreateCompatibleBitmap>("CreateCompatibleBitmap"),
    Watched<&CreateCompatibleDC>("CreateCompatibleDC"),
    Watched<&CreateDCA>("CreateDCA"),
    Watched<&CreatePen>("CreatePen"),
    Watched<&DeleteDC>("DeleteDC"),
    Watched<&DeleteObject>("DeleteObject"),
    {"DllGetClassObject", nullptr},  // of oleaut32.dll, for facts without it
    Watched<&Ellipse>("Ellipse"),
    Watched<&EmptyClipboard>("EmptyClipboard"),
    Watched<&FindClose>("FindClose"),
    Watched<&FreeLibrary>("FreeLibrary"),
    Watched<&GetActiveWindow>("GetActiveWindow"),
    Watched<&GetClientRect>("GetClientRect"),
    Watched<&GetComputerNameA>("GetComputerNameA"),
    Watched<&GetCurrentHwProfileA>("GetCurrentHwProfileA"),
    Watched<&GetDesktopWindow>("GetDesktopWindow"),
    Watched<&GetDeviceCaps>("GetDeviceCaps"),
    Watched<&GetDiskFreeSpaceA>("GetDiskFreeSpaceA"),
    Watched<&GetDiskFreeSpaceExA>("GetDiskFreeSpaceExA"),
    Watched<&GetDriveTypeA>("GetDriveTypeA"),
    Watched<&GetExitCodeProcess>("GetExitCodeProcess"),
    Watched<&GetFileSizeEx>("GetFileSizeEx"),
    Watched<&GetLocaleInfoA>("GetLocaleInfoA"),
    Watched<&GetLogicalDriveStringsA>("GetLogicalDriveStringsA"),
    Watched<&GetLogicalDrives>("GetLogicalDrives"),
    Watched<&GetModuleFileNameW>("GetModuleFileNameW"),
    Watched<&GetOpenFileNameA>("GetOpenFileNameA"),
    Watched<&GetProfileStringA>("GetProfileStringA"),
    Watched<&GetSaveFileNameA>("GetSaveFileNameA"),
    Watched<&GetSystemDirectoryA>("GetSystemDirectoryA"),
    Watched<&GetSystemInfo>("GetSystemInfo"),
    Watched<&GetSystemMetrics>("GetSystemMetrics"),
    Watched<&GetTempFileNameA>("GetTempFileNameA"),
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
    Watched<&HtmlHelpA>("HtmlHelpA"),
    Watched<&InternetGetConnectedStateExA>("InternetGetConnectedStateExA"),
    Watched<&InternetSetOptionA>("InternetSetOptionA"),
    Watched<&InvalidateRect>("InvalidateRect"),
    Watched<&IsProcessorFeaturePresent>("IsProcessorFeaturePresent"),
    Watched<&IsWindow>("IsWindow"),
    Watched<&LineTo>("LineTo"),
    Watched<&LoadLibraryExW>("LoadLibraryExW"),
    Watched<&MoveToEx>("MoveToEx"),
    Watched<&OpenClipboard>("OpenClipboard"),
    Watched<&OutputDebugStringW>("OutputDebugStringW"),
    Watched<&PrintDlgA>("PrintDlgA"),
    Watched<&ReadFile>("ReadFile"),
    Watched<&Rectangle>("Rectangle"),
    Watched<&RegCreateKeyExA>("RegCreateKeyExA"),
    Watched<&RegOpenKeyExA>("RegOpenKeyExA"),
    Watched<&RegQueryValueExA>("RegQueryValueExA"),
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
    Watched<&SetWindowsHookExW>("SetWindowsHookExW"),
    Watched<&ShellExecuteA>("ShellExecuteA"),
    Watched<&ShellExecuteExA>("ShellExecuteExA"),
    Watched<&SysAllocStringLen>("SysAllocStringLen"),
    Watched<&SystemParametersInfoA>("SystemParametersInfoA"),
    Watched<&UnhookWindowsHookEx>("UnhookWindowsHookEx"),
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
int WINAPI ShowBox(HWND owner, LPCWSTR text, LPCWSTR title, UINT flags) {
    const UINT icon = flags & MB_ICONMASK;
    std::wstring line = L"shows " + Quote(title ? title : L"") + L", " + Quote(text);
    if (icon) line += L" icon " + std::to_wstring(icon);
    if (owner || (flags & ~icon) != MB_TASKMODAL) line += L" as another kind of box";
    current->lines.push_back(line);
    current->box(L"box" + line.substr(5));
    return IDOK;
}

}  // namespace

PlatformLog::PlatformLog(Take step, Take box) : state_(std::make_unique<State>()) {
    current = state_.get();
    state_->act = std::move(step), state_->box = std::move(box);
    state_->patches.emplace_back(test::Library(), "MessageBoxW", reinterpret_cast<void*>(&ShowBox));
}

PlatformLog::~PlatformLog() { current = nullptr; }
// The latest rule counts first.
void PlatformLog::Add(Rule rule) {
    const Watchable& function = Find(rule.function);
    void* const replacement = rule.missing ? nullptr : function.replacement;
    state_->patches.emplace_front(test::Library(), function.name, replacement);
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
