// Which run-time error stands for a call of the platform that failed.
#pragma once

#include "platform/platform.h"
#include "platform/run_time_error.h"

namespace velk {

// The run-time error that stands for a failed system call (file, drive or memory) with this last-error value.
RuntimeError FromSystemError(DWORD error) noexcept;

// The run-time error that stands for a failed automation call, for instance a conversion.
RuntimeError FromComError(HRESULT result) noexcept;

inline void ThrowIfFailed(HRESULT result) {
    if (FAILED(result)) throw FromComError(result);
}

}  // namespace velk
