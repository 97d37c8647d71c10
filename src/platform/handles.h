// One owning type for each kind of handle: a line of traits (type, value that is none, how to close).
#pragma once

#include <utility>

#include "platform/platform.h"

namespace velk {

template <class Traits>
class UniqueHandle {
  public:
    using Handle = typename Traits::Handle;

    UniqueHandle() noexcept = default;
    explicit UniqueHandle(Handle handle) noexcept : handle_(handle) {}
    UniqueHandle(UniqueHandle&& other) noexcept : handle_(std::exchange(other.handle_, Traits::Invalid())) {}
    UniqueHandle& operator=(UniqueHandle other) noexcept {
        std::swap(handle_, other.handle_);
        return *this;
    }
    ~UniqueHandle() {
        if (*this) Traits::Close(handle_);
    }

    Handle get() const noexcept { return handle_; }
    explicit operator bool() const noexcept { return handle_ != Traits::Invalid(); }
    Handle* Receive() noexcept {
        *this = UniqueHandle();
        return &handle_;
    }

  private:
    Handle handle_ = Traits::Invalid();
};

// What most traits have in common: the type, and which of its values is no handle.
template <class Type>
struct NullIsNone {
    using Handle = Type;
    static Handle Invalid() noexcept { return nullptr; }
};
struct MinusOneIsNone {
    using Handle = HANDLE;
    static Handle Invalid() noexcept { return INVALID_HANDLE_VALUE; }
};

struct FileTraits : MinusOneIsNone {
    static void Close(Handle handle) noexcept { CloseHandle(handle); }
};
struct FindTraits : MinusOneIsNone {
    static void Close(Handle handle) noexcept { FindClose(handle); }
};
struct RegistryKeyTraits : NullIsNone<HKEY> {
    static void Close(Handle handle) noexcept { RegCloseKey(handle); }
};

using FileHandle = UniqueHandle<FileTraits>;
using FindHandle = UniqueHandle<FindTraits>;
using RegistryKey = UniqueHandle<RegistryKeyTraits>;

}  // namespace velk
