// CAPIDisks: the machine's drives and volumes, asked for afresh by every call.
//
// Drives are known by their position in the platform's list of those present; only DriveLetterFromNumber counts
// letters. Both are deliberate.
#pragma once

#include <optional>
#include <string>

#include "frame/object/automation_object.h"
#include "sysinfo/api_disks.idl.h"

namespace velk {

class CAPIDisks final : public AutomationObject<_CAPIDisks> {
  public:
    static const ClassInfo kInfo;

    CAPIDisks() noexcept : AutomationObject(kInfo) {}

    STDMETHODIMP get_DiskFreeSpace(SHORT* intValue, DOUBLE* result) noexcept override;
    STDMETHODIMP get_DiskTotalSpace(SHORT* intValue, DOUBLE* result) noexcept override;
    STDMETHODIMP get_DriveFileSystemType(SHORT* intValue, BSTR* result) noexcept override;
    STDMETHODIMP get_DriveFlags(SHORT* intValue, LONG* result) noexcept override;
    STDMETHODIMP get_DriveLabel(SHORT* intValue, BSTR* result) noexcept override;
    STDMETHODIMP get_DriveSerialNumber(SHORT* intValue, BSTR* result) noexcept override;
    STDMETHODIMP get_DriveType(SHORT* intValue, LONG* result) noexcept override;
    STDMETHODIMP get_LogicalDrives(SHORT* intValue, BSTR* result) noexcept override;
    STDMETHODIMP DriveLetterFromNumber(SHORT* intDrive, BSTR* result) noexcept override;
    STDMETHODIMP DriveTypeToString(LONG* lngDriveType, BSTR* result) noexcept override;
    STDMETHODIMP GetDriveCount(SHORT* result) noexcept override;
    STDMETHODIMP IsDriveReady(SHORT* intDrive, VARIANT_BOOL* result) noexcept override;
    STDMETHODIMP VolumeFlagsToString(LONG* lngFlags, BSTR* result) noexcept override;
    STDMETHODIMP WriteVolumeLabel(SHORT* intDrive, BSTR* strLabel) noexcept override;

  protected:
    std::optional<std::vector<Variant>> Items() override;

  private:
    struct Volume;

    std::string Root(SHORT position) const noexcept;
    std::optional<Volume> GetDriveInfo(SHORT position) const noexcept;  // nothing when it cannot be read

    // A member that tells a fact of the volume at a position: nothing when it cannot be read.
    template <class T, class Fact>
    HRESULT ReadVolume(SHORT* position, T* result, Fact fact, const char* member = __builtin_FUNCTION()) const noexcept;
};

}  // namespace velk
