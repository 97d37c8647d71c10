#include "trust/calm_platform.h"

// clang-format off: these need the first
#include <commdlg.h>
#include <shellapi.h>
#include "platform/platform.h"
// clang-format on

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "support/client.h"
#include "support/departures.h"

namespace velk::test {
namespace {

// Only the file beside the library is written, which goes with the build folder.
BOOL WINAPI WriteProfile(LPCSTR section, LPCSTR key, LPCSTR value, LPCSTR file) {
    const char kOurs[] = "\\MyFileSettings.ini";
    const std::size_t length = std::strlen(file);
    const bool ours = length >= sizeof kOurs && std::strcmp(file + length - (sizeof kOurs - 1), kOurs) == 0;
    return ours && WritePrivateProfileStringA(section, key, value, file);
}

// A number may happen to be the handle of an open key anywhere in the registry.
LSTATUS WINAPI CreateKey(HKEY root, LPCSTR path, DWORD reserved, LPSTR kind, DWORD options, REGSAM access,
                         const LPSECURITY_ATTRIBUTES security, PHKEY key, LPDWORD disposition) {
    const bool predefined = reinterpret_cast<ULONG_PTR>(root) & 0x80000000;
    return predefined ? RegCreateKeyExA(root, path, reserved, kind, options, access, security, key, disposition)
                      : ERROR_INVALID_HANDLE;
}

// A capture keeps the display's context that it made, on purpose; a lent one goes back.
HDC WINAPI LendContext(LPCSTR, LPCSTR, LPCSTR, const DEVMODEA*) { return GetDC(nullptr); }
int WINAPI TakeBackContext(HWND, HDC context) { return ReleaseDC(nullptr, context); }

// Copying a whole screen and handing it over take longer than a thousand other calls.
BOOL WINAPI Copy(HDC, int, int, int, int, HDC, int, int, DWORD) { return TRUE; }
HANDLE WINAPI RefuseData(UINT, HANDLE) { return nullptr; }
BOOL WINAPI Refuse(HWND) { return FALSE; }

// Asking a volume takes milliseconds; now and then is enough.
BOOL WINAPI AskVolume(LPCSTR root, LPSTR name, DWORD nameSize, LPDWORD serial, LPDWORD longest, LPDWORD flags,
                      LPSTR system, DWORD systemSize) {
    static unsigned asked = 0;
    return asked++ % 50 == 0 && GetVolumeInformationA(root, name, nameSize, serial, longest, flags, system, systemSize);
}

// Nothing is launched, and nobody is there to answer a dialog.
HINSTANCE WINAPI RefuseLaunch(HWND, LPCSTR, LPCSTR, LPCSTR, LPCSTR, INT) { return nullptr; }
template <class Record>
BOOL WINAPI RefuseRecord(Record*) {
    return FALSE;
}

// Drawing into what is no context at all.
bool DoesHarm(HDC context) noexcept {
    if (!Departs("GetObjectType")) return false;
    constexpr ULONG_PTR kKind = 0x7F, kMetafile = 0x66;
    const ULONG_PTR high = reinterpret_cast<ULONG_PTR>(context) >> 16;
    return high == 0 || ((high & kKind) == kMetafile && GetObjectType(context) == 0);
}
template <int Number, class Function>
struct WithRealContexts;
template <int Number, class Result, class... Given>
struct WithRealContexts<Number, Result(WINAPI*)(HDC, Given...)> {
    static inline Result(WINAPI* original)(HDC, Given...) = nullptr;
    static Result WINAPI Call(HDC context, Given... given) {
        return DoesHarm(context) ? Result{} : original(context, given...);
    }
};

template <int Number, class Function>
auto* OnRealContexts(Function function) {
    WithRealContexts<Number, Function>::original = function;
    return &WithRealContexts<Number, Function>::Call;
}

}  // namespace

CalmPlatform::CalmPlatform() {
    const auto low = static_cast<ULONG_PTR>(HandleToLong(GetStockObject(WHITE_BRUSH)) & 0xFFFF);
    EXPECT_EQ(Departs("GetObjectType"), GetObjectType(reinterpret_cast<HGDIOBJ>(low)) != 0);
    const auto patch = [this](const char* function, auto* replacement) {
        patches_.push_back(std::make_unique<ImportPatch>(Library(), function, reinterpret_cast<void*>(replacement)));
    };
    patch("WritePrivateProfileStringA", &WriteProfile);
    patch("RegCreateKeyExA", &CreateKey);
    patch("Arc", OnRealContexts<0>(&Arc));
    patch("Ellipse", OnRealContexts<1>(&Ellipse));
    patch("LineTo", OnRealContexts<2>(&LineTo));
    patch("MoveToEx", OnRealContexts<3>(&MoveToEx));
    patch("Rectangle", OnRealContexts<4>(&Rectangle));
    patch("GetROP2", OnRealContexts<5>(&GetROP2));
    patch("SetROP2", OnRealContexts<6>(&SetROP2));
    patch("SelectObject", OnRealContexts<7>(&SelectObject));
    patch("GetVolumeInformationA", &AskVolume);
    patch("ShellExecuteA", &RefuseLaunch);
    patch("ShellExecuteExA", &RefuseRecord<SHELLEXECUTEINFOA>);
    patch("GetOpenFileNameA", &RefuseRecord<OPENFILENAMEA>);
    patch("GetSaveFileNameA", &RefuseRecord<OPENFILENAMEA>);
    patch("PrintDlgA", &RefuseRecord<PRINTDLGA>);
    patch("ChooseFontA", &RefuseRecord<CHOOSEFONTA>);
    patch("CreateDCA", &LendContext);
    patch("ReleaseDC", &TakeBackContext);
    patch("BitBlt", &Copy);
    patch("OpenClipboard", &Refuse);
    patch("SetClipboardData", &RefuseData);
}

CalmPlatform::~CalmPlatform() {
    const std::wstring library = LibraryPath();
    DeleteFileW((library.substr(0, library.rfind(L'\\')) + L"\\MyFileSettings.ini").c_str());
}

}  // namespace velk::test
