#include "sysinfo/mm_timer.h"

#include "platform/com_ptr.h"
#include "platform/system_library.h"

namespace velk {
namespace {

// Loaded with the first stopwatch, since most clients measure no time, and kept: loading it takes milliseconds.
constinit KeptSystemLibrary winmm(L"winmm.dll");

}  // namespace

constinit const ClassInfo CMMTimer::kInfo{
    .name = L"CMMTimer",
    .clsid = __uuidof(::CMMTimer),
    .iid = __uuidof(_CMMTimer),
    .policy = FailurePolicy::Report,
};

CMMTimer::CMMTimer() noexcept
    : AutomationObject(kInfo), clock_(FindFunction<decltype(timeGetTime)>(winmm.get(), "timeGetTime")) {}

LONG CMMTimer::Now() const {
    if (!clock_) throw RuntimeError(Error::FileNotFound);
    return static_cast<LONG>(clock_());
}

// An overflow is reported by this procedure and counts as 0; its callers go on.
LONG CMMTimer::GetCurrentElapsedTime() const noexcept {
    LONG run = 0;
    Guard([&] {
        if (watch_.IsRunning()) run = watch_.RunUntil(Now());
    });
    return run;
}

STDMETHODIMP CMMTimer::get_ElapsedTime(DOUBLE* result) noexcept {
    return Guard(result, [&] { return static_cast<double>(watch_.TotalWith(GetCurrentElapsedTime())) / scaleFactor_; });
}

STDMETHODIMP CMMTimer::get_ScaleFactor(LONG* result) noexcept { return Get(result, scaleFactor_); }

STDMETHODIMP CMMTimer::put_ScaleFactor(LONG lngFactor) noexcept {
    if (lngFactor > 0) scaleFactor_ = lngFactor;
    return S_OK;
}

STDMETHODIMP CMMTimer::StartTimer() noexcept {
    return Guard([&] { watch_.Start(Now()); });
}

STDMETHODIMP CMMTimer::StopTimer() noexcept {
    return Guard([&] {
        const LONG run = GetCurrentElapsedTime();
        watch_.Stop();  // also when the sum overflows
        watch_.Add(run);
    });
}

STDMETHODIMP CMMTimer::ResumeTimer() noexcept {
    return Guard([&] { watch_.Resume(Now()); });
}

}  // namespace velk
