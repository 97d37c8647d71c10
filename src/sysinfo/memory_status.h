// CMemoryStatus: memory load and sizes. Sizes of 2 GB and more read as negative Longs; deliberate.
#pragma once

#include "frame/object/automation_object.h"
#include "sysinfo/memory_status.idl.h"

namespace velk {

class CMemoryStatus final : public AutomationObject<_CMemoryStatus> {
  public:
    static const ClassInfo kInfo;

    CMemoryStatus() noexcept : AutomationObject(kInfo) {}

    STDMETHODIMP get_AvailablePageFile(LONG* result) noexcept override;
    STDMETHODIMP get_AvailablePhysical(LONG* result) noexcept override;
    STDMETHODIMP get_AvailableVirtual(LONG* result) noexcept override;
    STDMETHODIMP get_MemoryLoad(LONG* result) noexcept override;
    STDMETHODIMP get_TotalPageFile(LONG* result) noexcept override;
    STDMETHODIMP get_TotalPhysical(LONG* result) noexcept override;
    STDMETHODIMP get_TotalVirtual(LONG* result) noexcept override;
};

}  // namespace velk
