#include "sysinfo/memory_status.h"

namespace velk {
namespace {

MEMORYSTATUS Memory() noexcept {
    MEMORYSTATUS status{};
    status.dwLength = sizeof status;
    GlobalMemoryStatus(&status);
    return status;
}

}  // namespace

constinit const ClassInfo CMemoryStatus::kInfo{
    .name = L"CMemoryStatus",
    .clsid = __uuidof(::CMemoryStatus),
    .iid = __uuidof(_CMemoryStatus),
    .events = nullptr,
    .policy = FailurePolicy::Report,
    .componentFailure = S_OK,
    .creationFailed = nullptr,
};

STDMETHODIMP CMemoryStatus::get_AvailablePageFile(LONG* result) noexcept {
    return Guard(L"AvailablePageFile", result, [] { return static_cast<LONG>(Memory().dwAvailPageFile); });
}

STDMETHODIMP CMemoryStatus::get_AvailablePhysical(LONG* result) noexcept {
    return Guard(L"AvailablePhysical", result, [] { return static_cast<LONG>(Memory().dwAvailPhys); });
}

STDMETHODIMP CMemoryStatus::get_AvailableVirtual(LONG* result) noexcept {
    return Guard(L"AvailableVirtual", result, [] { return static_cast<LONG>(Memory().dwAvailVirtual); });
}

STDMETHODIMP CMemoryStatus::get_MemoryLoad(LONG* result) noexcept {
    return Guard(L"MemoryLoad", result, [] { return static_cast<LONG>(Memory().dwMemoryLoad); });
}

STDMETHODIMP CMemoryStatus::get_TotalPageFile(LONG* result) noexcept {
    return Guard(L"TotalPageFile", result, [] { return static_cast<LONG>(Memory().dwTotalPageFile); });
}

STDMETHODIMP CMemoryStatus::get_TotalPhysical(LONG* result) noexcept {
    return Guard(L"TotalPhysical", result, [] { return static_cast<LONG>(Memory().dwTotalPhys); });
}

STDMETHODIMP CMemoryStatus::get_TotalVirtual(LONG* result) noexcept {
    return Guard(L"TotalVirtual", result, [] { return static_cast<LONG>(Memory().dwTotalVirtual); });
}

}  // namespace velk
