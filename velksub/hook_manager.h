// HookManager: what clients see of the hooks. It checks what they pass; ThreadHooks does the work.
#pragma once

#include "frame/object/automation_object.h"
#include "velksub.h"

namespace velk {

inline constexpr const wchar_t* kInvalidWindowHandle = L"Invalid window handle";

class HookManager final : public AutomationObject<IHookManager, UsedBy::AnyThread>, public IHookManager2 {
  public:
    static const ClassInfo kInfo;

    // The process's one object, made when it is asked for and does not exist. It may be used on any thread, each of
    // which sees its own windows.
    static IDispatch* TheOne();

    STDMETHODIMP QueryInterface(REFIID iid, void** object) noexcept override {
        return AutomationObject::QueryInterface(iid, object);
    }
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return AutomationObject::AddRef(); }
    STDMETHODIMP_(ULONG) Release() noexcept override { return AutomationObject::Release(); }
    STDMETHODIMP InterfaceSupportsErrorInfo(REFIID iid) noexcept override {
        return iid == __uuidof(IHookManager2) ? S_OK : AutomationObject::InterfaceSupportsErrorInfo(iid);
    }

    // Takes objects of scripts for hooks too.
    STDMETHODIMP Invoke(DISPID id, REFIID reserved, LCID locale, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                        EXCEPINFO* exception, UINT* badArgument) noexcept override;

    STDMETHODIMP AddHook(ISubclass** Hook, LONG hWnd, LONG iMsg) noexcept override;
    STDMETHODIMP RemoveHook(ISubclass** Hook, LONG hWnd, LONG iMsg) noexcept override;
    STDMETHODIMP get_DispatchedMessage(LONG* result) noexcept override;
    STDMETHODIMP CallPreviousProc(LONG hWnd, LONG iMsg, LONG wParam, LONG lParam, LONG* result) noexcept override;
    STDMETHODIMP CallPreviousProcPtr(LONG hWnd, LONG iMsg, LONG_PTR wParam, LONG_PTR lParam,
                                     LONG_PTR* result) noexcept override;

  private:
    HookManager() noexcept : AutomationObject(kInfo) {}
    ~HookManager() override;

    void* ExtraInterface(REFIID iid) noexcept override {
        return iid == __uuidof(IHookManager2) ? static_cast<IHookManager2*>(this) : nullptr;
    }

    static HookManager* theOne_;
};

}  // namespace velk
