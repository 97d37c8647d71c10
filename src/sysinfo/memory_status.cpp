#include "sysinfo/memory_status.h"

#include <algorithm>

namespace velk {
namespace {

static_assert(sizeof(void*) != 4 || sizeof(MEMORYSTATUS) == 32);

MEMORYSTATUS Memory() noexcept {
    MEMORYSTATUS status{};
    status.dwLength = sizeof status;
    GlobalMemoryStatus(&status);
    return status;
}

// From 2 GB up a size reads as negative. A 64-bit process may see sizes that 32 bits cannot hold: those read as the
// largest that they can, which is -1.
LONG Bytes(SIZE_T size) noexcept { return static_cast<LONG>(std::min<SIZE_T>(size, 0xFFFF'FFFF)); }

}  // namespace

constinit const ClassInfo CMemoryStatus::kInfo{
    .name = L"CMemoryStatus",
    .clsid = __uuidof(::CMemoryStatus),
    .iid = __uuidof(_CMemoryStatus),
    .policy = FailurePolicy::Report,
};

STDMETHODIMP CMemoryStatus::get_AvailablePageFile(LONG* result) noexcept {
    return Guard(result, [] { return Bytes(Memory().dwAvailPageFile); });
}

STDMETHODIMP CMemoryStatus::get_AvailablePhysical(LONG* result) noexcept {
    return Guard(result, [] { return Bytes(Memory().dwAvailPhys); });
}

STDMETHODIMP CMemoryStatus::get_AvailableVirtual(LONG* result) noexcept {
    return Guard(result, [] { return Bytes(Memory().dwAvailVirtual); });
}

STDMETHODIMP CMemoryStatus::get_MemoryLoad(LONG* result) noexcept {
    return Guard(result, [] { return static_cast<LONG>(Memory().dwMemoryLoad); });
}

STDMETHODIMP CMemoryStatus::get_TotalPageFile(LONG* result) noexcept {
    return Guard(result, [] { return Bytes(Memory().dwTotalPageFile); });
}

STDMETHODIMP CMemoryStatus::get_TotalPhysical(LONG* result) noexcept {
    return Guard(result, [] { return Bytes(Memory().dwTotalPhys); });
}

STDMETHODIMP CMemoryStatus::get_TotalVirtual(LONG* result) noexcept {
    return Guard(result, [] { return Bytes(Memory().dwTotalVirtual); });
}

}  // namespace velk
