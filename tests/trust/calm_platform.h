// Keeps calls with any arguments from harming what is not the tests': the machine's names and settings, files of any
// name, foreign registry keys, boxes that wait for a person. Everything else reaches the platform.
#pragma once

#include <gtest/gtest.h>
#include <windows.h>

#include <commdlg.h>
#include <shellapi.h>
#include <wininet.h>

#include <list>
#include <string_view>

#include "support/departures.h"
#include "support/fake.h"

namespace velk::test {

inline constexpr auto kNever = [](auto...) { return false; };

// Not drawing into what is no context at all.
inline constexpr auto kOnContext = [](HDC context, auto...) {
    if (!Departs("GetObjectType")) return true;
    constexpr ULONG_PTR kKind = 0x7F, kMetafile = 0x66;
    const ULONG_PTR high = reinterpret_cast<ULONG_PTR>(context) >> 16;
    return high != 0 && ((high & kKind) != kMetafile || GetObjectType(context) != 0);
};

inline constexpr auto kIntoSettings = [](LPCSTR, LPCSTR, LPCSTR, LPCSTR file) {
    return std::string_view(file).ends_with("\\MyFileSettings.ini");
};

// A number may happen to be the handle of an open key anywhere in the registry.
inline constexpr auto kBelowRoot = [](HKEY root, auto...) {
    return (reinterpret_cast<ULONG_PTR>(root) & 0x80000000) != 0;
};

inline constexpr auto kOnlyTelling = [](UINT, UINT, PVOID place, UINT) { return place != nullptr; };

// Asking a volume takes milliseconds, copying a whole screen longer than a thousand other calls; now and then is
// enough.
inline constexpr auto kSometimes = [](auto...) {
    static unsigned asked = 0;
    return asked++ % 10 == 0;
};

// A capture keeps the display's context that it made, on purpose; a lent one goes back.
inline HDC WINAPI LendContext(LPCSTR, LPCSTR, LPCSTR, const DEVMODEA*) { return GetDC(nullptr); }
inline int WINAPI TakeBackContext(HWND, HDC context) { return ReleaseDC(nullptr, context); }

inline std::list<ImportPatch> CalmPlatform() {
    const auto low = static_cast<ULONG_PTR>(HandleToLong(GetStockObject(WHITE_BRUSH)) & 0xFFFF);
    EXPECT_EQ(Departs("GetObjectType"), GetObjectType(reinterpret_cast<HGDIOBJ>(low)) != 0);
    std::list<ImportPatch> patches;
    Guard<kNever, &SetVolumeLabelA, &SetComputerNameA, &InternetSetOptionA, &InternetGetConnectedStateExA,
          &ShellExecuteA, &ShellExecuteExA, &GetOpenFileNameA, &GetSaveFileNameA, &PrintDlgA, &ChooseFontA,
          &OpenClipboard, &SetClipboardData>(Library(), patches);
    Guard<kOnContext, &Arc, &Ellipse, &LineTo, &MoveToEx, &Rectangle, &GetROP2, &SetROP2, &SelectObject>(Library(),
                                                                                                         patches);
    Guard<kIntoSettings, &WritePrivateProfileStringA>(Library(), patches);
    Guard<kBelowRoot, &RegCreateKeyExA>(Library(), patches);
    Guard<kOnlyTelling, &SystemParametersInfoA>(Library(), patches);
    Guard<kSometimes, &BitBlt, &GetDiskFreeSpaceA, &GetDiskFreeSpaceExA, &GetDriveTypeA, &GetVolumeInformationA>(
        Library(), patches);
    patches.emplace_back(Library(), "CreateDCA", reinterpret_cast<void*>(&LendContext));
    patches.emplace_back(Library(), "ReleaseDC", reinterpret_cast<void*>(&TakeBackContext));
    return patches;
}

}  // namespace velk::test
