#pragma once

#include <cstdlib>

#include "support/client.h"
#include "support/import_patch.h"

namespace velk::test {

// Refuses the library's allocations of sizes within bounds, both included. One at a time.
class ScarceMemory {
  public:
    ScarceMemory(std::size_t from, std::size_t to) { from_ = from, to_ = to; }

  private:
    static void* __cdecl Malloc(std::size_t size) { return size < from_ || size > to_ ? std::malloc(size) : nullptr; }

    static inline std::size_t from_, to_;
    ImportPatch patch_{Library(), "malloc", reinterpret_cast<void*>(&Malloc)};
};

}  // namespace velk::test
