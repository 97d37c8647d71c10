// One owning type for each kind of handle: a line of traits (type, invalid value, how to close).
#pragma once

#include <utility>

#include "frame/platform.h"

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

struct FileTraits {
    using Handle = HANDLE;
    static Handle Invalid() noexcept { return INVALID_HANDLE_VALUE; }
    static void Close(Handle handle) noexcept { CloseHandle(handle); }
};
struct FindTraits {
    using Handle = HANDLE;
    static Handle Invalid() noexcept { return INVALID_HANDLE_VALUE; }
    static void Close(Handle handle) noexcept { FindClose(handle); }
};
struct RegistryKeyTraits {
    using Handle = HKEY;
    static Handle Invalid() noexcept { return nullptr; }
    static void Close(Handle handle) noexcept { RegCloseKey(handle); }
};

using FileHandle = UniqueHandle<FileTraits>;
using FindHandle = UniqueHandle<FindTraits>;
using RegistryKey = UniqueHandle<RegistryKeyTraits>;

}  // namespace velk
