#pragma once

namespace velk {

// Makes what the C++ runtime keeps of the calling thread, which it would make at the thread's first exception: without
// memory for it, it would end the process. False when there is none.
bool PrepareThread() noexcept;

// Gives back what the C++ runtime holds for this module. Nothing may throw after it.
void ReleaseRuntime() noexcept;

}  // namespace velk
