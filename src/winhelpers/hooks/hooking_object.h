#pragma once

#include "frame/dispatch/dispatch_face.h"
#include "frame/object/automation_object.h"
#include "winhelpers/hooks/hook_client.h"

namespace velk {

// A class that hooks windows: what it has in common with the others of its kind. Its ISubclass is a part of the object
// with an IDispatch of its own, so that the same names mean the members of either interface. Identity and count are the
// object's.
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

    void* ExtraFace(REFIID iid) noexcept override { return iid == __uuidof(ISubclass) ? &subclass_ : nullptr; }

    void AddHook(LONG window, LONG message) { hooks_.Add(&subclass_, window, message); }
    void RemoveHook(LONG window, LONG message) { hooks_.Remove(&subclass_, window, message); }

    // For a destructor, where nobody is left to hear of a failure.
    template <class Body>
    static void Quietly(Body&& body) noexcept try {
        body();
    } catch (...) {
    }

    HookClient hooks_;

  private:
    class Face final : public DispatchFace<ISubclass> {
      public:
        explicit Face(HookingObject& owner) noexcept : owner_(owner) {}

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

    Face subclass_{*this};
};

}  // namespace velk
