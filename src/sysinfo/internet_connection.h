// CInternetConnection: how the machine reaches the internet, and the offline mode.
#pragma once

#include "frame/object/automation_object.h"
#include "sysinfo/internet_connection.idl.h"

namespace velk {

class CInternetConnection final : public AutomationObject<_CInternetConnection> {
  public:
    static const ClassInfo kInfo;

    CInternetConnection() noexcept : AutomationObject(kInfo) {}

    STDMETHODIMP get_Connected(VARIANT_BOOL* result) noexcept override;
    STDMETHODIMP get_ConnectionName(BSTR* result) noexcept override;
    STDMETHODIMP get_ConnectionType(EConnectionType* result) noexcept override;
    STDMETHODIMP get_RasInstalled(VARIANT_BOOL* result) noexcept override;
    STDMETHODIMP get_WorkMode(EWorkMode* result) noexcept override;
    STDMETHODIMP put_WorkMode(EWorkMode* eMode) noexcept override;
};

}  // namespace velk
