// The two objects by which a class that hooks windows shows ISubclass and ISubclass2. Both pass its members on to the
// class:
//
//   HookPart      the interface that clients ask the class's object for: identity and reference count are the object's
//   AttachedHook  what the hook manager holds: it has a count of its own and does not keep the class's object alive, so
//                 that the object is destroyed, and detaches, with its client's last reference
#pragma once

#include "frame/dispatch/dispatch_impl.h"
#include "frame/object/helper_object.h"
#include "platform/long_handles.h"
#include "velksub.h"

namespace velk {

// What a class does with the messages that it hooks.
class HookHandler {
  public:
    virtual HRESULT MsgResponse(LONG* result) noexcept = 0;
    virtual HRESULT WindowProc(LONG window, LONG message, LONG_PTR wParam, LONG_PTR lParam,
                               LONG_PTR* result) noexcept = 0;

  protected:
    ~HookHandler() = default;
};

class HookMembers : public DispatchImpl<ISubclass>, public ISubclass2 {
  public:
    STDMETHODIMP get_MsgResponse(LONG* result) noexcept override {
        return handler_ ? handler_->MsgResponse(result) : CO_E_OBJNOTCONNECTED;
    }
    STDMETHODIMP put_MsgResponse(LONG) noexcept override { return S_OK; }  // deliberately ignored
    STDMETHODIMP WindowProc(LONG hWnd, LONG iMsg, LONG wParam, LONG lParam, LONG* result) noexcept override {
        if (!result) return E_POINTER;
        LONG_PTR wide = 0;
        const HRESULT called = WindowProcPtr(hWnd, iMsg, WidenedFrom(wParam), WidenedFrom(lParam), &wide);
        *result = static_cast<LONG>(wide);
        return called;
    }
    STDMETHODIMP WindowProcPtr(LONG hWnd, LONG iMsg, LONG_PTR wParam, LONG_PTR lParam,
                               LONG_PTR* result) noexcept override {
        return handler_ ? handler_->WindowProc(hWnd, iMsg, wParam, lParam, result) : CO_E_OBJNOTCONNECTED;
    }

    void Connect(HookHandler* handler) noexcept { handler_ = handler; }

  private:
    HookHandler* handler_ = nullptr;
};

class HookPart final : public HookMembers {
  public:
    HookPart(IUnknown& object, HookHandler& handler) noexcept : object_(object) { Connect(&handler); }

    STDMETHODIMP QueryInterface(REFIID iid, void** found) noexcept override {
        return object_.QueryInterface(iid, found);
    }
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return object_.AddRef(); }
    STDMETHODIMP_(ULONG) Release() noexcept override { return object_.Release(); }

  private:
    IUnknown& object_;
};

// Disconnected when the class's object is destroyed; a call that comes later fails, and the message is the window's.
class AttachedHook final : public HelperObject<HookMembers, ISubclass> {
  public:
    STDMETHODIMP QueryInterface(REFIID iid, void** object) noexcept override {
        if (iid != __uuidof(ISubclass2)) return HelperObject::QueryInterface(iid, object);
        if (!object) return E_POINTER;
        *object = static_cast<ISubclass2*>(this);
        AddRef();
        return S_OK;
    }
};

}  // namespace velk
