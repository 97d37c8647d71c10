#pragma once

namespace velk {

// Gives back what the C++ runtime holds for this module. Nothing may throw after it.
void ReleaseRuntime() noexcept;

}  // namespace velk
