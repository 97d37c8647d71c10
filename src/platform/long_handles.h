// Handles, and the values of messages, as clients and hooks pass them: in a 32-bit Long.
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

// The platform takes the low word of a handle, extended with or without a sign, for the handle itself; messages come
// with the whole one.
inline bool IsWhole(LONG handle) noexcept { return HIWORD(handle) != 0 && HIWORD(handle) != 0xFFFF; }

inline LONG LongFrom(const void* handle) noexcept { return HandleToLong(handle); }

// A message's value that came in a Long. With the lower half of `own` it is that value, passed on; any other is taken
// for an address, which has no sign: what fits in a Long lies in the lowest 4 GiB.
inline LONG_PTR WidenedFrom(LONG value, LONG_PTR own = 0) noexcept {
    return static_cast<LONG>(own) == value ? own : static_cast<LONG_PTR>(static_cast<ULONG>(value));
}
template <class Pointer>
Pointer AddressFrom(LONG address) noexcept {
    return reinterpret_cast<Pointer>(WidenedFrom(address));
}

}  // namespace velk
