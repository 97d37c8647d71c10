#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "support/import_patch.h"

namespace velk::test {

// Counts what the library allocates, and makes one of the allocations fail. One at a time.
class FailingMemory {
  public:
    explicit FailingMemory(HMODULE library);
    ~FailingMemory();

    // The allocation with this number, counted from 1 and from now, fails.
    void FailAt(int number) noexcept;
    void Disarm() noexcept;
    bool hasFailed() const noexcept;         // between the two
    std::ptrdiff_t blocks() const noexcept;  // on the heap of the C++ runtime

  private:
    std::vector<std::unique_ptr<ImportPatch>> patches_;
};

}  // namespace velk::test
