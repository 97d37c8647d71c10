// CDatFile: a sealed parameter file. See dat_entries.h for the file's form and dat_seal.h for what its seal covers.
//
// Deliberate: an object counts as initialised from the first Initialize on, even one that failed; entries that were
// read stay when the seal turns out broken.
#pragma once

#include <optional>
#include <string>

#include "frame/object/automation_object.h"
#include "integrity/dat_entries.h"
#include "integrity/dat_file.idl.h"
#include "platform/com_ptr.h"
#include "platform/text.h"

namespace velk {

class CDatFile final : public AutomationObject<_CDatFile> {
  public:
    static const ClassInfo kInfo;

    CDatFile() noexcept : AutomationObject(kInfo) {}
    void OnCreate();

    STDMETHODIMP GetHumanReadable(BSTR* result) noexcept override;
    STDMETHODIMP GetIndicatorReadable(BSTR* result) noexcept override;
    STDMETHODIMP Initialize(BSTR* Filename, VARIANT_BOOL* DisplayCRC) noexcept override;
    STDMETHODIMP get_DatFileCRC(BSTR* result) noexcept override;
    STDMETHODIMP get_Parameter(BSTR* result) noexcept override;
    STDMETHODIMP put_Parameter(BSTR* strParameter) noexcept override;

  private:
    void RequireInitialised() const;
    Bstr Lookup(std::u16string_view suffix) const;
    bool SealHolds(bool display);

    bool initialised_ = false;
    std::wstring parameter_;
    std::wstring crc_;                   // the computed seal, signed decimal
    std::optional<DatEntries> entries_;  // nothing before the first file was read
    ComPtr<IUnknown> resources_;         // localised texts of the product line; kept for its users, not used here
};

}  // namespace velk
