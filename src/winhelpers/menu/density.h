// How many dots per inch things are drawn at.
#pragma once

#include "platform/drawing_handles.h"
#include "platform/system_library.h"

namespace velk {

// What the system tells this program, for all screens alike.
inline int SystemDensity() noexcept {
    const ScreenContext screen(GetDC(nullptr));
    return GetDeviceCaps(screen.get(), LOGPIXELSY);
}

// Of the screen that the window is on, in a program that minds each screen's density; in others the system's. The
// platform has told them apart since Windows 10.
inline int DensityOf(HWND window) noexcept {
    const auto ofWindow = FindFunction<UINT WINAPI(HWND)>(GetModuleHandleW(L"user32.dll"), "GetDpiForWindow");
    const UINT own = ofWindow ? ofWindow(window) : 0;
    return own ? static_cast<int>(own) : SystemDensity();
}

}  // namespace velk
