#include "trust/calm_platform.h"

#include <cstring>
#include <string>

#include "support/client.h"

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

// A capture keeps its display context on purpose: what else it keeps is to be seen.
HDC display = nullptr;
HDC WINAPI CreateContext(LPCSTR driver, LPCSTR device, LPCSTR output, const DEVMODEA* mode) {
    return display = CreateDCA(driver, device, output, mode);
}
int WINAPI ReleaseContext(HWND window, HDC context) {
    return context == display ? DeleteDC(context) : ReleaseDC(window, context);
}

// Copying a whole screen takes longer than a thousand other calls.
BOOL WINAPI Copy(HDC, int, int, int, int, HDC, int, int, DWORD) { return TRUE; }

}  // namespace

CalmPlatform::CalmPlatform() {
    const auto patch = [this](const char* function, auto* replacement) {
        patches_.push_back(std::make_unique<ImportPatch>(Library(), function, reinterpret_cast<void*>(replacement)));
    };
    patch("WritePrivateProfileStringA", &WriteProfile);
    patch("RegCreateKeyExA", &CreateKey);
    patch("CreateDCA", &CreateContext);
    patch("ReleaseDC", &ReleaseContext);
    patch("BitBlt", &Copy);
}

CalmPlatform::~CalmPlatform() {
    const std::wstring library = LibraryPath();
    DeleteFileW((library.substr(0, library.rfind(L'\\')) + L"\\MyFileSettings.ini").c_str());
}

}  // namespace velk::test
