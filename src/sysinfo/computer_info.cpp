#include "sysinfo/computer_info.h"

#include <algorithm>

namespace velk {
namespace {

// The slow-machine metric is a set of bits.
constexpr int kSlowProcessor = 1;
constexpr int kLowMemory = 2;
constexpr int kSlowGraphics = 4;

bool IsCalled(int bit) noexcept { return (GetSystemMetrics(SM_SLOWMACHINE) & bit) != 0; }

SYSTEM_INFO System() noexcept {
    SYSTEM_INFO info{};
    GetSystemInfo(&info);
    return info;
}

// 16 bits, with their sign: deliberate.
LONG Widened(WORD value) noexcept { return static_cast<SHORT>(value); }

// An address that 32 bits cannot hold reads as the largest that they can, which is -1: never as some other address.
LONG AddressOf(LPVOID address) noexcept {
    return static_cast<LONG>(std::min<ULONG_PTR>(reinterpret_cast<ULONG_PTR>(address), 0xFFFF'FFFF));
}

}  // namespace

constinit const ClassInfo CComputerInfo::kInfo{
    .name = L"CComputerInfo",
    .clsid = __uuidof(::CComputerInfo),
    .iid = __uuidof(_CComputerInfo),
    .policy = FailurePolicy::Report,
};

STDMETHODIMP CComputerInfo::get_ActiveProcessorMask(LONG* result) noexcept {
    return Guard(result, [] { return static_cast<LONG>(System().dwActiveProcessorMask); });
}

STDMETHODIMP CComputerInfo::get_AllocationGranularity(LONG* result) noexcept {
    return Guard(result, [] { return static_cast<LONG>(System().dwAllocationGranularity); });
}

STDMETHODIMP CComputerInfo::get_CompareExchangeDouble(VARIANT_BOOL* result) noexcept {
    return Guard(result, [] { return IsProcessorFeaturePresent(PF_COMPARE_EXCHANGE_DOUBLE) != FALSE; });
}

STDMETHODIMP CComputerInfo::get_FloatingPointEmulated(VARIANT_BOOL* result) noexcept {
    return Guard(result, [] { return IsProcessorFeaturePresent(PF_FLOATING_POINT_EMULATED) != FALSE; });
}

STDMETHODIMP CComputerInfo::get_FloatingPointError(VARIANT_BOOL* result) noexcept {
    return Guard(result, [] { return IsProcessorFeaturePresent(PF_FLOATING_POINT_PRECISION_ERRATA) != FALSE; });
}

STDMETHODIMP CComputerInfo::get_LowMemory(VARIANT_BOOL* result) noexcept {
    return Guard(result, [] { return IsCalled(kLowMemory); });
}

STDMETHODIMP CComputerInfo::get_MaxAppAddress(LONG* result) noexcept {
    return Guard(result, [] { return AddressOf(System().lpMaximumApplicationAddress); });
}

STDMETHODIMP CComputerInfo::get_MinAppAddress(LONG* result) noexcept {
    return Guard(result, [] { return AddressOf(System().lpMinimumApplicationAddress); });
}

STDMETHODIMP CComputerInfo::get_MMXAvailable(VARIANT_BOOL* result) noexcept {
    return Guard(result, [] { return IsProcessorFeaturePresent(PF_MMX_INSTRUCTIONS_AVAILABLE) != FALSE; });
}

STDMETHODIMP CComputerInfo::get_NumberOfProcessors(LONG* result) noexcept {
    return Guard(result, [] { return static_cast<LONG>(System().dwNumberOfProcessors); });
}

STDMETHODIMP CComputerInfo::get_PageSize(LONG* result) noexcept {
    return Guard(result, [] { return static_cast<LONG>(System().dwPageSize); });
}

STDMETHODIMP CComputerInfo::get_ProcessorArchitecture(EnumProcessorArchitecture* result) noexcept {
    return Guard(result,
                 [] { return static_cast<EnumProcessorArchitecture>(Widened(System().wProcessorArchitecture)); });
}

STDMETHODIMP CComputerInfo::get_ProcessorLevel(LONG* result) noexcept {
    return Guard(result, [] { return Widened(System().wProcessorLevel); });
}

STDMETHODIMP CComputerInfo::get_ProcessorRevision(LONG* result) noexcept {
    return Guard(result, [] { return Widened(System().wProcessorRevision); });
}

STDMETHODIMP CComputerInfo::get_ProcessorType(EnumProcessorType* result) noexcept {
    return Guard(result, [] { return static_cast<EnumProcessorType>(System().dwProcessorType); });
}

STDMETHODIMP CComputerInfo::get_SlowGraphics(VARIANT_BOOL* result) noexcept {
    return Guard(result, [] { return IsCalled(kSlowGraphics); });
}

STDMETHODIMP CComputerInfo::get_SlowMachine(VARIANT_BOOL* result) noexcept {
    return Guard(result, [] { return IsCalled(kSlowProcessor); });
}

}  // namespace velk
