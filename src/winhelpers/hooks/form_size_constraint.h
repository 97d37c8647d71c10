// CFormSizeConstraint: keeps a form's tracking size within limits, as a hook for WM_GETMINMAXINFO.
//
// Release leaves the handle stored, so that a later Init, or the end of the object, detaches once more. This is
// deliberate: the hook manager takes a second detach for none.
#pragma once

#include "winhelpers/hooks/form_size_constraint.idl.h"
#include "winhelpers/hooks/form_size_constraint_errors.idl.h"
#include "winhelpers/hooks/hooking_object.h"
#include "winhelpers/hooks/size_range.h"

namespace velk {

class CFormSizeConstraint final : public HookingObject<_CFormSizeConstraint> {
  public:
    static const ClassInfo kInfo;

    CFormSizeConstraint() noexcept : HookingObject(kInfo) {}
    ~CFormSizeConstraint() override;

    STDMETHODIMP Init(LONG* hWnd) noexcept override;
    STDMETHODIMP get_hWnd(LONG* result) noexcept override;
    STDMETHODIMP put_hWnd(LONG* hWnd) noexcept override;
    STDMETHODIMP put_MaxHeight(LONG* Height) noexcept override;
    STDMETHODIMP get_MaxHeight(LONG* result) noexcept override;
    STDMETHODIMP put_MaxWidth(LONG* Width) noexcept override;
    STDMETHODIMP get_MaxWidth(LONG* result) noexcept override;
    STDMETHODIMP put_MinHeight(LONG* Height) noexcept override;
    STDMETHODIMP get_MinHeight(LONG* result) noexcept override;
    STDMETHODIMP put_MinWidth(LONG* Width) noexcept override;
    STDMETHODIMP get_MinWidth(LONG* result) noexcept override;
    STDMETHODIMP ReleaseForm() noexcept override;  // Release to clients

    HRESULT MsgResponse(LONG* result) noexcept override;
    HRESULT WindowProc(LONG window, LONG message, LONG_PTR wParam, LONG_PTR lParam, LONG_PTR* result) noexcept override;

  private:
    void Attach(LONG window);
    void Detach();
    HRESULT LetEdge(LONG* value, SizeRange& range, SizeRange::Setter set, EErrFormSizeConstraint code,
                    const wchar_t* description, const char* member = __builtin_FUNCTION()) noexcept;

    LONG window_ = 0;
    SizeRange width_;
    SizeRange height_;
};

}  // namespace velk
