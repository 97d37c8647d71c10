#pragma once

#include "platform/platform.h"

namespace velk {

// Holds a lock for as long as it lives; nobody else does meanwhile.
class Lock {
  public:
    explicit Lock(SRWLOCK& lock) noexcept : lock_(lock) { AcquireSRWLockExclusive(&lock_); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;
    ~Lock() { ReleaseSRWLockExclusive(&lock_); }

  private:
    SRWLOCK& lock_;
};

}  // namespace velk
