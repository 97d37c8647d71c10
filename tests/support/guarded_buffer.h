// Memory between two pages that must not be touched: a read or write one byte outside ends the process.
#pragma once

#include <cstddef>
#include <new>
#include <span>

#ifdef _WIN32
#include <windows.h>
#else
#include <sys/mman.h>
#endif

namespace velk::test {

class GuardedBuffer {
  public:
    // The size is rounded up to whole pages.
    explicit GuardedBuffer(std::size_t size)
        : size_((size + kPage - 1) / kPage * kPage), pages_(Reserve(size_ + 2 * kPage)) {
        if (!Open(pages_ + kPage, size_)) {
            Release(pages_, size_ + 2 * kPage);
            throw std::bad_alloc();
        }
    }
    GuardedBuffer(const GuardedBuffer&) = delete;
    GuardedBuffer& operator=(const GuardedBuffer&) = delete;
    ~GuardedBuffer() { Release(pages_, size_ + 2 * kPage); }

    std::span<unsigned char> All() const { return {pages_ + kPage, size_}; }

  private:
    static constexpr std::size_t kPage = 4096;

#ifdef _WIN32
    static unsigned char* Reserve(std::size_t size) {
        void* pages = VirtualAlloc(nullptr, size, MEM_RESERVE | MEM_COMMIT, PAGE_NOACCESS);
        if (pages == nullptr) throw std::bad_alloc();
        return static_cast<unsigned char*>(pages);
    }
    static bool Open(unsigned char* start, std::size_t size) {
        DWORD before;
        return VirtualProtect(start, size, PAGE_READWRITE, &before) != FALSE;
    }
    static void Release(unsigned char* pages, std::size_t) { VirtualFree(pages, 0, MEM_RELEASE); }
#else
    static unsigned char* Reserve(std::size_t size) {
        void* pages = mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (pages == MAP_FAILED) throw std::bad_alloc();
        return static_cast<unsigned char*>(pages);
    }
    static bool Open(unsigned char* start, std::size_t size) {
        return mprotect(start, size, PROT_READ | PROT_WRITE) == 0;
    }
    static void Release(unsigned char* pages, std::size_t size) { munmap(pages, size); }
#endif

    std::size_t size_;
    unsigned char* pages_;
};

}  // namespace velk::test
