// CMMTimer: a stopwatch. See stopwatch.h for its arithmetic.
#pragma once

#include "platform/platform.h"

#include <mmsystem.h>

#include "frame/object/automation_object.h"
#include "sysinfo/mm_timer.idl.h"
#include "sysinfo/stopwatch.h"

namespace velk {

class CMMTimer final : public AutomationObject<_CMMTimer> {
  public:
    static const ClassInfo kInfo;

    CMMTimer() noexcept;

    STDMETHODIMP get_ElapsedTime(DOUBLE* result) noexcept override;
    STDMETHODIMP get_ScaleFactor(LONG* result) noexcept override;
    STDMETHODIMP put_ScaleFactor(LONG lngFactor) noexcept override;
    STDMETHODIMP StartTimer() noexcept override;
    STDMETHODIMP StopTimer() noexcept override;
    STDMETHODIMP ResumeTimer() noexcept override;

  private:
    LONG Now() const;
    LONG GetCurrentElapsedTime() const noexcept;

    decltype(timeGetTime)* const clock_;  // null when the platform has none
    Stopwatch watch_;
    LONG scaleFactor_ = 1000;
};

}  // namespace velk
