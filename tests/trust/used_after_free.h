#pragma once

#include <cstdlib>
#include <cstring>

#include "support/client.h"
#include "support/import_patch.h"

namespace velk::test {

// Overwrites what the library gives back, so that what still reads it goes astray at once. One at a time.
class UsedAfterFree {
  private:
    static void __cdecl Free(void* block) {
        if (block) std::memset(block, 0xDD, _msize(block));
        std::free(block);
    }

    ImportPatch patch_{Library(), "free", reinterpret_cast<void*>(&Free)};
};

}  // namespace velk::test
