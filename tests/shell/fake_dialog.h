#pragma once

#include <functional>
#include <utility>

#include "support/client.h"
#include "support/import_patch.h"

#include <commdlg.h>

namespace velk::test {

// The described size of a record where it is described, in 32 bits.
constexpr DWORD SizeOf(DWORD described, std::size_t real) {
    return sizeof(void*) == 4 ? described : static_cast<DWORD>(real);
}

// Stands in for one of the platform's dialog functions. Two that take the same record need different numbers.
template <class Record, int number = 0>
class FakeDialog {
  public:
    explicit FakeDialog(const char* function, std::function<BOOL(Record&)> user)
        : user_(std::move(user)), patch_(Library(), function, reinterpret_cast<void*>(&Run)) {
        current_ = this;
    }
    int calls() const noexcept { return calls_; }

  private:
    static BOOL WINAPI Run(Record* record) {
        ++current_->calls_;
        return current_->user_(*record);
    }

    static inline FakeDialog* current_ = nullptr;
    std::function<BOOL(Record&)> user_;
    int calls_ = 0;
    ImportPatch patch_;
};

}  // namespace velk::test
