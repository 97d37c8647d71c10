#pragma once

#include "frame/dispatch_face.h"
#include "frame/platform.h"
#include "velksub.h"

namespace velk {

// The ISubclass of a class that hooks windows: a part of the object with an IDispatch of its own, so that the same
// names mean the members of either interface. Identity and count are the object's. The owner has
//     HRESULT MsgResponse(LONG* result) noexcept
//     HRESULT WindowProc(LONG window, LONG message, LONG wParam, LONG lParam, LONG* result) noexcept
template <class Owner>
class SubclassFace final : public DispatchFace<ISubclass> {
  public:
    explicit SubclassFace(Owner& owner) noexcept : owner_(owner) {}

    STDMETHODIMP QueryInterface(REFIID iid, void** object) noexcept override {
        return owner_.QueryInterface(iid, object);
    }
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return owner_.AddRef(); }
    STDMETHODIMP_(ULONG) Release() noexcept override { return owner_.Release(); }

    STDMETHODIMP get_MsgResponse(LONG* result) noexcept override { return owner_.MsgResponse(result); }
    STDMETHODIMP put_MsgResponse(LONG) noexcept override { return S_OK; }  // deliberately ignored
    STDMETHODIMP WindowProc(LONG hWnd, LONG iMsg, LONG wParam, LONG lParam, LONG* result) noexcept override {
        return owner_.WindowProc(hWnd, iMsg, wParam, lParam, result);
    }

  private:
    Owner& owner_;
};

}  // namespace velk
