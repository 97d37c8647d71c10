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
    .events = nullptr,
    .policy = FailurePolicy::Report,
    .componentFailure = S_OK,
    .creationFailed = nullptr,
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
    Guard(L"GetCurrentElapsedTime", [&] {
        if (watch_.IsRunning()) run = watch_.RunUntil(Now());
    });
    return run;
}

STDMETHODIMP CMMTimer::get_ElapsedTime(DOUBLE* result) noexcept {
    const ComPtr<_CMMTimer> alive(this);  // while an overflow is shown the client may drop the object
    return Guard(L"ElapsedTime", result,
                 [&] { return static_cast<double>(watch_.TotalWith(GetCurrentElapsedTime())) / scaleFactor_; });
}

STDMETHODIMP CMMTimer::get_ScaleFactor(LONG* result) noexcept {
    return Guard(L"ScaleFactor", result, [&] { return scaleFactor_; });
}

STDMETHODIMP CMMTimer::put_ScaleFactor(LONG lngFactor) noexcept {
    if (lngFactor > 0) scaleFactor_ = lngFactor;
    return S_OK;
}

STDMETHODIMP CMMTimer::StartTimer() noexcept {
    return Guard(L"StartTimer", [&] { watch_.Start(Now()); });
}

STDMETHODIMP CMMTimer::StopTimer() noexcept {
    const ComPtr<_CMMTimer> alive(this);  // as above
    const HRESULT added = Guard(L"StopTimer", [&] { watch_.Add(GetCurrentElapsedTime()); });
    watch_.Stop();  // also after an overflow
    return added;
}

STDMETHODIMP CMMTimer::ResumeTimer() noexcept {
    return Guard(L"ResumeTimer", [&] { watch_.Resume(Now()); });
}

}  // namespace velk
