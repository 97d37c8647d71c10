// The C++ runtime's heap as one library uses it, seen at its import table.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <functional>

#include "support/client.h"
#include "support/import_patch.h"

namespace velk::test {

// Counts what the library holds from now on, refuses what it is told to, and spoils memory that is new or was given
// back: no word is like another, so that even an emptied vector cannot look empty. One at a time.
class Heap {
  public:
    using Refusal = std::function<bool(std::size_t size)>;
    struct Held {
        std::ptrdiff_t blocks, bytes;
    };
    static inline Held held{};

    explicit Heap(HMODULE library = Library(), Refusal refuses = {})
        : malloc_(library, "malloc", reinterpret_cast<void*>(&Malloc)),
          free_(library, "free", reinterpret_cast<void*>(&Free)) {
        held = {};
        refuses_ = std::move(refuses);
    }
    ~Heap() { refuses_ = nullptr; }

    // Whether a request is to fail, for other ways to memory, too.
    static bool Refuses(std::size_t size) { return refuses_ && refuses_(size); }

  private:
    // Odd, and where a program has nothing; the beginning of what is very large. Volatile, since the compiler takes out
    // what nobody may read before a free.
    static void Spoil(void* block) {
        static std::uint32_t word = 0;
        auto* const words = static_cast<volatile std::uint32_t*>(block);
        const std::size_t size = std::min<std::size_t>(_msize(block), 1 << 16);
        for (std::size_t i = 0; i < size / sizeof word; ++i) words[i] = (word += 0x1002) | 0xD0000001;
    }
    static void Count(void* block, int by) {
        held.blocks += by;
        held.bytes += by * static_cast<std::ptrdiff_t>(_msize(block));
    }
    static void* __cdecl Malloc(std::size_t size) {
        void* const block = Refuses(size) ? nullptr : std::malloc(size);
        if (block) Count(block, 1), Spoil(block);
        return block;
    }
    // Small blocks rest for a while before anybody gets them again.
    static void __cdecl Free(void* block) {
        static std::array<void*, 64> resting{};
        static std::size_t next = 0;
        if (!block) return;
        Count(block, -1), Spoil(block);
        std::free(_msize(block) < 4096 ? std::exchange(resting[next++ % resting.size()], block) : block);
    }

    static inline Refusal refuses_;
    ImportPatch malloc_, free_;
};

}  // namespace velk::test
