#pragma once

#include "frame/dispatch/dispatch_impl.h"
#include "frame/object/automation_object.h"
#include "winhelpers/hooks/hook_client.h"

namespace velk {

// The base of the classes that hook windows. The object has an ISubclass beside its own interface, as a part with an
// IDispatch of its own: a late-bound call finds the members of the interface that it was made on. Identity and
// reference count are the object's.
template <class Interface>
class HookingObject : public AutomationObject<Interface> {
  public:
    STDMETHODIMP InterfaceSupportsErrorInfo(REFIID iid) noexcept override {
        return iid == __uuidof(ISubclass) ? S_OK : AutomationObject<Interface>::InterfaceSupportsErrorInfo(iid);
    }

    // Of ISubclass.
    virtual HRESULT MsgResponse(LONG* result) noexcept = 0;
    virtual HRESULT WindowProc(LONG window, LONG message, LONG wParam, LONG lParam, LONG* result) noexcept = 0;

  protected:
    using AutomationObject<Interface>::AutomationObject;

    void* ExtraInterface(REFIID iid) noexcept override { return iid == __uuidof(ISubclass) ? &hook_ : nullptr; }

    void AddHook(LONG window, LONG message) { hooks_.Add(&hook_, window, message); }
    void RemoveHook(LONG window, LONG message) { hooks_.Remove(&hook_, window, message); }

    // For what may fail without anybody being told, as detaching in a destructor.
    template <class Body>
    static bool Succeeds(Body&& body) noexcept try {
        body();
        return true;
    } catch (...) {
        return false;
    }

    HookClient hooks_;

  private:
    class Hook final : public DispatchImpl<ISubclass> {
      public:
        explicit Hook(HookingObject& owner) noexcept : owner_(owner) {}

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
        HookingObject& owner_;
    };

    Hook hook_{*this};
};

}  // namespace velk
