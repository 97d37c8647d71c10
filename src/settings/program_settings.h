// CProgramSettings: a program's settings as values under one registry key.
//
// Deliberate: the key's path is joined without a look at empty parts, so it can hold a doubled "\"; reading asks for
// the right to write, so a key that may only be read gives defaults; a number is stored in as many bytes as its decimal
// text has characters; failed registry calls are not reported.
#pragma once

#include <string>
#include <string_view>
#include <variant>

#include "frame/object/automation_object.h"
#include "platform/long_handles.h"
#include "platform/text.h"
#include "settings/program_settings.idl.h"

namespace velk {

class CProgramSettings final : public AutomationObject<_CProgramSettings> {
  public:
    static const ClassInfo kInfo;

    CProgramSettings() : AutomationObject(kInfo) {}

    STDMETHODIMP get_MainBranch(BSTR* result) noexcept override;
    STDMETHODIMP put_MainBranch(BSTR* Value) noexcept override;
    STDMETHODIMP get_RegBase(BSTR* result) noexcept override;
    STDMETHODIMP put_RegBase(BSTR* Value) noexcept override;
    STDMETHODIMP get_Program(BSTR* result) noexcept override;
    STDMETHODIMP put_Program(BSTR* Value) noexcept override;
    STDMETHODIMP get_Section(BSTR* result) noexcept override;
    STDMETHODIMP put_Section(BSTR* Value) noexcept override;
    STDMETHODIMP get_RootKey(EnumProgramSettingsRoot* result) noexcept override;
    STDMETHODIMP put_RootKey(EnumProgramSettingsRoot* Value) noexcept override;
    STDMETHODIMP ReadEntry(BSTR* strEntry, BSTR* strDefault, BSTR* result) noexcept override;
    STDMETHODIMP ReadEntryLong(BSTR* strEntry, LONG* lngDefault, LONG* result) noexcept override;
    STDMETHODIMP WriteEntry(BSTR* strEntry, BSTR* strValue) noexcept override;
    STDMETHODIMP WriteEntryLong(BSTR* strEntry, LONG* lngValue) noexcept override;

  private:
    // A setting as it was read: nothing, a text or a number.
    using Setting = std::variant<std::monostate, std::u16string, LONG>;

    std::wstring KeyPath() const;
    HKEY Root() const noexcept { return HandleFrom<HKEY>(rootKey_); }

    // A failure in one of these is reported under its own name.
    Setting GetKeyValue(std::wstring_view path, std::wstring_view entry) const noexcept;
    void SetKeyValue(std::wstring_view path, std::wstring_view entry, std::wstring_view text) const noexcept;
    void SetKeyValue(std::wstring_view path, std::wstring_view entry, LONG number) const noexcept;

    std::wstring mainBranch_ = L"SOFTWARE";
    std::wstring regBase_;
    std::wstring program_;
    std::wstring section_ = L"Settings";
    LONG rootKey_ = psrHKEY_LOCAL_MACHINE;
};

}  // namespace velk
