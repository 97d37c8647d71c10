// CFormSizeConstraint: keeps a form's tracking size within limits, as a hook for WM_GETMINMAXINFO.
//
// Release leaves the handle stored, so that a later Init, or the end of the object, detaches once more. This is
// deliberate: the hook manager takes a second detach for none.
#pragma once

#include "frame/automation_object.h"
#include "velksprt.h"
#include "winhelpers/hook_client.h"
#include "winhelpers/size_range.h"
#include "winhelpers/subclass_face.h"

namespace velk {

class CFormSizeConstraint final : public AutomationObject<_CFormSizeConstraint> {
  public:
    static const ClassInfo kInfo;

    CFormSizeConstraint() noexcept : AutomationObject(kInfo) {}
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

    STDMETHODIMP InterfaceSupportsErrorInfo(REFIID iid) noexcept override {
        return iid == __uuidof(ISubclass) ? S_OK : AutomationObject::InterfaceSupportsErrorInfo(iid);
    }

    // Of ISubclass.
    HRESULT MsgResponse(LONG* result) noexcept;
    HRESULT WindowProc(LONG window, LONG message, LONG wParam, LONG lParam, LONG* result) noexcept;

  protected:
    void* ExtraFace(REFIID iid) noexcept override { return iid == __uuidof(ISubclass) ? &subclass_ : nullptr; }

  private:
    void Attach(LONG window);
    void Detach();

    SubclassFace<CFormSizeConstraint> subclass_{*this};
    HookClient hooks_;
    LONG window_ = 0;
    SizeRange width_;
    SizeRange height_;
};

}  // namespace velk
