#include "trust/calm_platform.h"

// clang-format off: these need the first
#include <commdlg.h>
#include <shellapi.h>
#include <wininet.h>
#include "platform/platform.h"
// clang-format on

#include <gtest/gtest.h>

#include <string_view>

#include "support/client.h"
#include "support/departures.h"
#include "trust/values.h"

namespace velk::test {
namespace {

constexpr const wchar_t* kSettings = L"MyFileSettings.ini";  // beside the library, in the build folder

// As the platform refuses it.
template <class Function>
struct Refusal;
template <class Result, class... Given>
struct Refusal<Result(WINAPI*)(Given...)> {
    static Result WINAPI Call(Given...) { return Result{}; }
};

// Drawing into what is no context at all.
bool DoesHarm(HDC context) noexcept {
    if (!Departs("GetObjectType")) return false;
    constexpr ULONG_PTR kKind = 0x7F, kMetafile = 0x66;
    const ULONG_PTR high = reinterpret_cast<ULONG_PTR>(context) >> 16;
    return high == 0 || ((high & kKind) == kMetafile && GetObjectType(context) == 0);
}
template <auto Function, class = decltype(Function)>
struct OnRealContexts;
template <auto Function, class Result, class... Given>
struct OnRealContexts<Function, Result(WINAPI*)(HDC, Given...)> {
    static Result WINAPI Call(HDC context, Given... given) {
        return DoesHarm(context) ? Result{} : Function(context, given...);
    }
};

BOOL WINAPI WriteProfile(LPCSTR section, LPCSTR key, LPCSTR value, LPCSTR file) {
    return std::string_view(file).ends_with("\\MyFileSettings.ini") &&
           WritePrivateProfileStringA(section, key, value, file);
}

// A number may happen to be the handle of an open key anywhere in the registry.
LSTATUS WINAPI CreateKey(HKEY root, LPCSTR path, DWORD reserved, LPSTR kind, DWORD options, REGSAM access,
                         const LPSECURITY_ATTRIBUTES security, PHKEY key, LPDWORD disposition) {
    const bool predefined = reinterpret_cast<ULONG_PTR>(root) & 0x80000000;
    return predefined ? RegCreateKeyExA(root, path, reserved, kind, options, access, security, key, disposition)
                      : ERROR_INVALID_HANDLE;
}

// A capture keeps the display's context that it made, on purpose; a lent one goes back. Copying a whole screen takes
// longer than a thousand other calls.
HDC WINAPI LendContext(LPCSTR, LPCSTR, LPCSTR, const DEVMODEA*) { return GetDC(nullptr); }
int WINAPI TakeBackContext(HWND, HDC context) { return ReleaseDC(nullptr, context); }
BOOL WINAPI Copy(HDC, int, int, int, int, HDC, int, int, DWORD) { return TRUE; }

// Asking a volume takes milliseconds; now and then is enough.
BOOL WINAPI AskVolume(LPCSTR root, LPSTR name, DWORD nameSize, LPDWORD serial, LPDWORD longest, LPDWORD flags,
                      LPSTR system, DWORD systemSize) {
    static unsigned asked = 0;
    return asked++ % 50 == 0 && GetVolumeInformationA(root, name, nameSize, serial, longest, flags, system, systemSize);
}

// Nothing is set. What is told may be far beyond what the library's numbers hold, and the clock jumps.
BOOL WINAPI OnlyTell(UINT action, UINT parameter, PVOID place, UINT update) {
    const BOOL told = place && SystemParametersInfoA(action, parameter, place, update);
    if (told && action == SPI_GETWORKAREA && OneIn(2)) *static_cast<RECT*>(place) = {-40000, -40000, 40000, 1};
    return told;
}
DWORD WINAPI Jump() { return static_cast<DWORD>(engine()); }

template <class Function>
void* Place(Function* function) {
    return reinterpret_cast<void*>(function);
}

const struct {
    const char* function;
    void* replacement;
} kCalm[] = {
    {"SetVolumeLabelA", Place(&Refusal<decltype(&SetVolumeLabelA)>::Call)},
    {"SetComputerNameA", Place(&Refusal<decltype(&SetComputerNameA)>::Call)},
    {"InternetSetOptionA", Place(&Refusal<decltype(&InternetSetOptionA)>::Call)},
    {"InternetGetConnectedStateExA", Place(&Refusal<decltype(&InternetGetConnectedStateExA)>::Call)},
    {"ShellExecuteA", Place(&Refusal<decltype(&ShellExecuteA)>::Call)},
    {"ShellExecuteExA", Place(&Refusal<decltype(&ShellExecuteExA)>::Call)},
    {"GetOpenFileNameA", Place(&Refusal<decltype(&GetOpenFileNameA)>::Call)},
    {"GetSaveFileNameA", Place(&Refusal<decltype(&GetSaveFileNameA)>::Call)},
    {"PrintDlgA", Place(&Refusal<decltype(&PrintDlgA)>::Call)},
    {"ChooseFontA", Place(&Refusal<decltype(&ChooseFontA)>::Call)},
    {"OpenClipboard", Place(&Refusal<decltype(&OpenClipboard)>::Call)},
    {"SetClipboardData", Place(&Refusal<decltype(&SetClipboardData)>::Call)},
    {"Arc", Place(&OnRealContexts<&Arc>::Call)},
    {"Ellipse", Place(&OnRealContexts<&Ellipse>::Call)},
    {"LineTo", Place(&OnRealContexts<&LineTo>::Call)},
    {"MoveToEx", Place(&OnRealContexts<&MoveToEx>::Call)},
    {"Rectangle", Place(&OnRealContexts<&Rectangle>::Call)},
    {"GetROP2", Place(&OnRealContexts<&GetROP2>::Call)},
    {"SetROP2", Place(&OnRealContexts<&SetROP2>::Call)},
    {"SelectObject", Place(&OnRealContexts<&SelectObject>::Call)},
    {"WritePrivateProfileStringA", Place(&WriteProfile)},
    {"RegCreateKeyExA", Place(&CreateKey)},
    {"CreateDCA", Place(&LendContext)},
    {"ReleaseDC", Place(&TakeBackContext)},
    {"BitBlt", Place(&Copy)},
    {"GetVolumeInformationA", Place(&AskVolume)},
    {"SystemParametersInfoA", Place(&OnlyTell)},
    {"timeGetTime", Place(&Jump)},
};

}  // namespace

CalmPlatform::CalmPlatform() {
    const auto low = static_cast<ULONG_PTR>(HandleToLong(GetStockObject(WHITE_BRUSH)) & 0xFFFF);
    EXPECT_EQ(Departs("GetObjectType"), GetObjectType(reinterpret_cast<HGDIOBJ>(low)) != 0);
    for (const auto& [function, replacement] : kCalm) {
        if (ImportPatch::IsImported(Library(), function))
            imports_.emplace_back(Library(), function, replacement);
        else
            procedures_.emplace_back(Library(), function, replacement);
    }
}

CalmPlatform::~CalmPlatform() {
    while (!procedures_.empty()) procedures_.pop_back();  // the last one goes first
    DeleteFileW(BuiltFile(kSettings).c_str());
}

}  // namespace velk::test
