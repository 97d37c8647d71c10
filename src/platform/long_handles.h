// Handles and addresses as clients and hooks pass them: in a 32-bit Long.
#pragma once

#include "platform/platform.h"

namespace velk {

// Only the lower half of a handle counts, and its sign is extended: so the system passes handles between 32-bit and
// 64-bit programs, and so are the predefined keys of the registry.
template <class Handle>
Handle HandleFrom(LONG handle) noexcept {
    return static_cast<Handle>(LongToHandle(handle));
}
inline HWND WindowFrom(LONG handle) noexcept { return HandleFrom<HWND>(handle); }

inline LONG LongFrom(const void* handle) noexcept { return HandleToLong(handle); }

// An address has no sign: what fits in a Long lies in the lowest 4 GB.
template <class Pointer>
Pointer AddressFrom(LONG address) noexcept {
    return static_cast<Pointer>(ULongToPtr(static_cast<ULONG>(address)));
}

}  // namespace velk
