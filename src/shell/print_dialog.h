// CPrintDialog: the platform's print dialog.
//
// Deliberate: nothing that the dialog hands out is released here. The device context is the client's to delete; the
// memory handles with the printer's settings stay behind at each confirmed dialog.
#pragma once

#include "frame/object/automation_object.h"
#include "shell/print_dialog.idl.h"

namespace velk {

class CPrintDialog final : public AutomationObject<_CPrintDialog> {
  public:
    static const ClassInfo kInfo;

    CPrintDialog() noexcept : AutomationObject(kInfo) {}

    STDMETHODIMP get_Copies(SHORT* result) noexcept override;
    STDMETHODIMP put_Copies(SHORT* Value) noexcept override;
    STDMETHODIMP get_Flags(EnumPriFlags* result) noexcept override;
    STDMETHODIMP put_Flags(EnumPriFlags* Value) noexcept override;
    STDMETHODIMP get_FromPage(SHORT* result) noexcept override;
    STDMETHODIMP put_FromPage(SHORT* Value) noexcept override;
    STDMETHODIMP get_ToPage(SHORT* result) noexcept override;
    STDMETHODIMP put_ToPage(SHORT* Value) noexcept override;
    STDMETHODIMP get_Min(SHORT* result) noexcept override;
    STDMETHODIMP put_Min(SHORT* Value) noexcept override;
    STDMETHODIMP get_Max(SHORT* result) noexcept override;
    STDMETHODIMP put_Max(SHORT* Value) noexcept override;
    STDMETHODIMP get_hWndParent(LONG* result) noexcept override;
    STDMETHODIMP put_hWndParent(LONG* Value) noexcept override;
    STDMETHODIMP get_HDC(LONG* result) noexcept override;
    STDMETHODIMP Show(VARIANT_BOOL* result) noexcept override;

  private:
    bool Choose();

    SHORT copies_ = 0;
    LONG flags_ = 0;
    SHORT fromPage_ = 0;
    SHORT toPage_ = 0;
    SHORT min_ = 1;
    SHORT max_ = 9999;
    LONG hWndParent_ = 0;
    LONG hdc_ = 0;
};

}  // namespace velk
