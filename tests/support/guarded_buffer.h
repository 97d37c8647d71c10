// Memory between two places that must not be touched: a read or write one byte outside ends the process.
#pragma once

#include <cstddef>
#include <memory>
#include <span>

#ifdef _WIN32
#include <windows.h>
#endif

namespace velk::test {

class GuardedBuffer {
  public:
#ifdef _WIN32
    // The size is rounded up to whole pages.
    explicit GuardedBuffer(std::size_t size)
        : pages_(VirtualAlloc(nullptr, Whole(size) + 2 * kPage, MEM_RESERVE, PAGE_NOACCESS)),
          bytes_(static_cast<unsigned char*>(
                     VirtualAlloc(static_cast<char*>(pages_.get()) + kPage, Whole(size), MEM_COMMIT, PAGE_READWRITE)),
                 Whole(size)) {}
#else  // by the address sanitizer
    explicit GuardedBuffer(std::size_t size) : pages_(new unsigned char[size]), bytes_(pages_.get(), size) {}
#endif
    std::span<unsigned char> All() const { return bytes_; }

  private:
#ifdef _WIN32
    static constexpr std::size_t kPage = 4096;
    static constexpr std::size_t Whole(std::size_t size) { return (size + kPage - 1) / kPage * kPage; }
    struct Free {
        void operator()(void* pages) const { VirtualFree(pages, 0, MEM_RELEASE); }
    };
    std::unique_ptr<void, Free> pages_;
#else
    std::unique_ptr<unsigned char[]> pages_;
#endif
    std::span<unsigned char> bytes_;
};

}  // namespace velk::test
