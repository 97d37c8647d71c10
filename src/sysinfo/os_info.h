// COSInfo: the operating system, the display and the user. Nothing is checked that the platform reports through a
// result: a failed query gives what its buffer or record held before.
#pragma once

#include "frame/object/automation_object.h"
#include "sysinfo/os_info.idl.h"

namespace velk {

class COSInfo final : public AutomationObject<_COSInfo> {
  public:
    static const ClassInfo kInfo;

    COSInfo() noexcept : AutomationObject(kInfo) {}

    STDMETHODIMP get_Beep(VARIANT_BOOL* result) noexcept override;
    STDMETHODIMP put_Beep(VARIANT_BOOL* blnValue) noexcept override;
    STDMETHODIMP get_ComputerName(BSTR* result) noexcept override;
    STDMETHODIMP put_ComputerName(BSTR* strName) noexcept override;
    STDMETHODIMP get_CurrentHardwareProfile(BSTR* result) noexcept override;
    STDMETHODIMP get_DefaultCompanyName(BSTR* result) noexcept override;
    STDMETHODIMP get_DefaultUserName(BSTR* result) noexcept override;
    STDMETHODIMP get_DisplayColors(LONG* result) noexcept override;
    STDMETHODIMP get_GUID(BSTR* result) noexcept override;
    STDMETHODIMP get_Language(BSTR* result) noexcept override;
    STDMETHODIMP get_LargeFonts(VARIANT_BOOL* result) noexcept override;
    STDMETHODIMP get_OSAdditional(BSTR* result) noexcept override;
    STDMETHODIMP get_OSBuild(LONG* result) noexcept override;
    STDMETHODIMP get_OSMajorVersion(LONG* result) noexcept override;
    STDMETHODIMP get_OSMinorVersion(LONG* result) noexcept override;
    STDMETHODIMP get_ScreenSaverActive(VARIANT_BOOL* result) noexcept override;
    STDMETHODIMP put_ScreenSaverActive(VARIANT_BOOL* blnValue) noexcept override;
    STDMETHODIMP get_ScreenSaverTimeout(LONG* result) noexcept override;
    STDMETHODIMP put_ScreenSaverTimeout(LONG* lngSeconds) noexcept override;
    STDMETHODIMP get_SystemDirectory(BSTR* result) noexcept override;
    STDMETHODIMP get_TempFile(BSTR* strPrefix, BSTR* result) noexcept override;
    STDMETHODIMP get_TempPath(BSTR* result) noexcept override;
    STDMETHODIMP get_UserName(BSTR* result) noexcept override;
    STDMETHODIMP get_WindowsDirectory(BSTR* result) noexcept override;
    STDMETHODIMP get_WindowsType(EnumWindowsType* result) noexcept override;
    STDMETHODIMP get_WindowsUpTime(LONG* result) noexcept override;
    STDMETHODIMP GetWorkArea(SHORT* intLeft, SHORT* intTop, SHORT* intWidth, SHORT* intHeight) noexcept override;
};

}  // namespace velk
