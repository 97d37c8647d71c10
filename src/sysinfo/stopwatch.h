// The arithmetic of a stopwatch on a 32-bit clock of milliseconds that wraps, read as a signed number.
//
// Deliberate: a run that begins at clock value 0 counts as no run, and one that spans the step from the largest to the
// smallest signed value is an overflow (error 6), while the step from -1 to 0 is like any other.
#pragma once

#include <cstdint>

#include "platform/whole_numbers.h"

namespace velk {

class Stopwatch {
  public:
    void Start(std::int32_t now) noexcept {
        accumulated_ = 0;
        runStart_ = now;
    }
    void Resume(std::int32_t now) noexcept { runStart_ = now; }
    void Stop() noexcept { runStart_ = 0; }

    bool IsRunning() const noexcept { return runStart_ != 0; }
    std::int32_t RunUntil(std::int32_t now) const { return SubtractLong(now, runStart_); }

    void Add(std::int32_t run) { accumulated_ = TotalWith(run); }
    std::int32_t TotalWith(std::int32_t run) const { return AddLong(accumulated_, run); }

  private:
    std::int32_t accumulated_ = 0;  // by earlier runs since the last start
    std::int32_t runStart_ = 0;     // 0: no run
};

}  // namespace velk
