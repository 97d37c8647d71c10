// Which run-time error stands for a call of the platform that failed.
#pragma once

#include <string>

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

// What another object's member failed with, for a client who asked for that object's work: its number is kept, with the
// source and the description that the object gave.
struct ObjectError {
    HRESULT code;
    std::wstring source;
    std::wstring description;
};

// After a call of a member of `object`'s interface `iid`. A number of the platform's that stands for a run-time error
// is thrown as that.
void ThrowIfMemberFailed(HRESULT result, IUnknown* object, REFIID iid);

template <class Interface>
void ThrowIfMemberFailed(HRESULT result, Interface& object) {
    ThrowIfMemberFailed(result, &object, __uuidof(Interface));
}

}  // namespace velk
