// Writes and removes what makes the classes creatable by name.
#pragma once

#include "platform/platform.h"

namespace velk {

// For the whole machine, or for the current user when the machine's registry may not be written.
HRESULT RegisterLibrary() noexcept;

// Removes both, whichever is there.
HRESULT UnregisterLibrary() noexcept;

}  // namespace velk
