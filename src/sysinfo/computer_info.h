// CComputerInfo: the processor and the address space, as the platform shows them to a 32-bit process.
#pragma once

#include "frame/object/automation_object.h"
#include "sysinfo/computer_info.idl.h"

namespace velk {

class CComputerInfo final : public AutomationObject<_CComputerInfo> {
  public:
    static const ClassInfo kInfo;

    CComputerInfo() noexcept : AutomationObject(kInfo) {}

    STDMETHODIMP get_ActiveProcessorMask(LONG* result) noexcept override;
    STDMETHODIMP get_AllocationGranularity(LONG* result) noexcept override;
    STDMETHODIMP get_CompareExchangeDouble(VARIANT_BOOL* result) noexcept override;
    STDMETHODIMP get_FloatingPointEmulated(VARIANT_BOOL* result) noexcept override;
    STDMETHODIMP get_FloatingPointError(VARIANT_BOOL* result) noexcept override;
    STDMETHODIMP get_LowMemory(VARIANT_BOOL* result) noexcept override;
    STDMETHODIMP get_MaxAppAddress(LONG* result) noexcept override;
    STDMETHODIMP get_MinAppAddress(LONG* result) noexcept override;
    STDMETHODIMP get_MMXAvailable(VARIANT_BOOL* result) noexcept override;
    STDMETHODIMP get_NumberOfProcessors(LONG* result) noexcept override;
    STDMETHODIMP get_PageSize(LONG* result) noexcept override;
    STDMETHODIMP get_ProcessorArchitecture(EnumProcessorArchitecture* result) noexcept override;
    STDMETHODIMP get_ProcessorLevel(LONG* result) noexcept override;
    STDMETHODIMP get_ProcessorRevision(LONG* result) noexcept override;
    STDMETHODIMP get_ProcessorType(EnumProcessorType* result) noexcept override;
    STDMETHODIMP get_SlowGraphics(VARIANT_BOOL* result) noexcept override;
    STDMETHODIMP get_SlowMachine(VARIANT_BOOL* result) noexcept override;
};

}  // namespace velk
