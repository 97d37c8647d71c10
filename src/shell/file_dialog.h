// CFileDialog: the platform's dialogs to open a file and to save one.
//
// Deliberate: Flags and FilterIndex keep what the client set, whatever the user chose.
#pragma once

#include <optional>
#include <string>

#include "frame/object/automation_object.h"
#include "shell/file_dialog.idl.h"

namespace velk {

class CFileDialog final : public AutomationObject<_CFileDialog> {
  public:
    static const ClassInfo kInfo;

    CFileDialog() noexcept : AutomationObject(kInfo) {}

    STDMETHODIMP get_DefaultExt(BSTR* result) noexcept override;
    STDMETHODIMP put_DefaultExt(BSTR* Value) noexcept override;
    STDMETHODIMP get_DialogTitle(BSTR* result) noexcept override;
    STDMETHODIMP put_DialogTitle(BSTR* Value) noexcept override;
    STDMETHODIMP get_Filename(BSTR* result) noexcept override;
    STDMETHODIMP put_Filename(BSTR* Value) noexcept override;
    STDMETHODIMP get_FileTitle(BSTR* result) noexcept override;
    STDMETHODIMP put_FileTitle(BSTR* Value) noexcept override;
    STDMETHODIMP get_Filter(BSTR* result) noexcept override;
    STDMETHODIMP put_Filter(BSTR* Value) noexcept override;
    STDMETHODIMP get_FilterIndex(SHORT* result) noexcept override;
    STDMETHODIMP put_FilterIndex(SHORT* Value) noexcept override;
    STDMETHODIMP get_Flags(EnumFilFlags* result) noexcept override;
    STDMETHODIMP put_Flags(EnumFilFlags* Value) noexcept override;
    STDMETHODIMP get_hWndParent(LONG* result) noexcept override;
    STDMETHODIMP put_hWndParent(LONG* Value) noexcept override;
    STDMETHODIMP get_InitialDir(BSTR* result) noexcept override;
    STDMETHODIMP put_InitialDir(BSTR* Value) noexcept override;
    STDMETHODIMP get_MaxFileSize(SHORT* result) noexcept override;
    STDMETHODIMP put_MaxFileSize(SHORT* Value) noexcept override;
    STDMETHODIMP Show(VARIANT_BOOL* fOpen, VARIANT_BOOL* result) noexcept override;

  private:
    bool Choose(bool toOpen);
    std::wstring TrimNulls(std::string_view buffer) const noexcept;

    std::wstring defaultExt_;
    std::wstring dialogTitle_;
    std::wstring filename_;
    std::wstring fileTitle_;
    std::wstring filter_;
    SHORT filterIndex_ = 0;
    LONG flags_ = 0;
    LONG hWndParent_ = 0;
    std::optional<std::wstring> initialDir_;  // never set is not the same as empty
    SHORT maxFileSize_ = MAX_PATH;
};

}  // namespace velk
