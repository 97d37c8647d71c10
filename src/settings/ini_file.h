// CIniFile: the values of an INI file, through the platform's profile functions. No handle and nothing read is kept
// between calls.
//
// Deliberate: saving makes a missing file and reports no failed write, deleting and reading refuse a missing file. What
// exists is what a search finds, so a folder or a pattern with a match exists too. Values are read into 255 bytes and
// lists of names into 8192, and what does not fit is cut; an empty name counts among keys and not among sections.
#pragma once

#include <string>
#include <string_view>

#include "frame/object/automation_object.h"
#include "settings/ini_file.idl.h"

namespace velk {

class CIniFile final : public AutomationObject<_CIniFile> {
  public:
    static const ClassInfo kInfo;

    CIniFile() noexcept : AutomationObject(kInfo) {}
    void OnCreate();

    STDMETHODIMP Init(BSTR* Filename) noexcept override;
    STDMETHODIMP put_Filename(BSTR* Value) noexcept override;
    STDMETHODIMP get_Filename(BSTR* result) noexcept override;
    STDMETHODIMP GetNumericValue(BSTR* Section, BSTR* Key, SHORT* result) noexcept override;
    STDMETHODIMP GetStringValue(BSTR* Section, BSTR* Key, BSTR* result) noexcept override;
    STDMETHODIMP EnumerateAllKeys(BSTR* Section, SAFEARRAY** Key, LONG* result) noexcept override;
    STDMETHODIMP EnumerateAllSections(SAFEARRAY** Sections, LONG* result) noexcept override;
    STDMETHODIMP SaveNumericValue(BSTR* Section, BSTR* Key, SHORT* iData) noexcept override;
    STDMETHODIMP SaveStringValue(BSTR* Section, BSTR* Key, BSTR* sText) noexcept override;
    STDMETHODIMP DeleteKey(BSTR Section, BSTR* Key, VARIANT_BOOL* result) noexcept override;
    STDMETHODIMP DeleteSection(BSTR Section, VARIANT_BOOL* result) noexcept override;

  private:
    void SetFileName(std::wstring_view name);

    // The file's name as the platform takes it, after the checks that come first in a member.
    std::string InitialisedFile() const;
    std::string ExistingFile() const;

    void Save(BSTR section, BSTR key, const std::string& text) const;

    std::wstring fileName_;  // empty only if creation failed
};

}  // namespace velk
