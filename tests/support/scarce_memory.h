#pragma once

#include <cstdlib>

#include "support/client.h"
#include "support/import_patch.h"

namespace velk::test {

// Refuses the library's allocations of sizes within bounds, both included, and counts the bytes that it holds more than
// at first. One at a time.
class ScarceMemory {
  public:
    ScarceMemory(std::size_t from, std::size_t to) { held_ = 0, Refuse(from, to); }

    void Refuse(std::size_t from, std::size_t to) noexcept { from_ = from, to_ = to; }
    std::ptrdiff_t held() const noexcept { return held_; }

  private:
    static void* __cdecl Malloc(std::size_t size) {
        void* const block = size < from_ || size > to_ ? std::malloc(size) : nullptr;
        if (block) held_ += static_cast<std::ptrdiff_t>(_msize(block));
        return block;
    }
    static void __cdecl Free(void* block) {
        if (block) held_ -= static_cast<std::ptrdiff_t>(_msize(block));
        std::free(block);
    }

    static inline std::size_t from_, to_;
    static inline std::ptrdiff_t held_;
    ImportPatch malloc_{Library(), "malloc", reinterpret_cast<void*>(&Malloc)};
    ImportPatch free_{Library(), "free", reinterpret_cast<void*>(&Free)};
};

}  // namespace velk::test
