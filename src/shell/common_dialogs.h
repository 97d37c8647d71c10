// The library of the platform's dialogs. It brings the common controls and the shell into the process, so it is loaded
// when the first dialog is shown.
#pragma once

#include "platform/system_library.h"

namespace velk {

inline constinit KeptSystemLibrary comdlg32(L"comdlg32.dll");

}  // namespace velk
