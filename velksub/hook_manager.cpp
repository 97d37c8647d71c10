#include "velksub/hook_manager.h"

#include <algorithm>
#include <utility>

#include "platform/lock.h"
#include "platform/long_handles.h"
#include "velksub/script_hook.h"
#include "velksub/thread_hooks.h"

namespace velk {
namespace {

SRWLOCK oneAtATime = SRWLOCK_INIT;

HookTarget TargetOf(ISubclass* hook) {
    if (!hook) throw RuntimeError(Error::ObjectNotSet);
    const ComPtr<ISubclass> subclass(hook);
    const auto identity = subclass.As<IUnknown>();
    return {subclass, subclass.As<ISubclass2>(), identity.get()};
}

constexpr ClassError kOtherThread{eErrHookManager_OtherThread, L"The window belongs to another thread"};

// The window of a client's handle, and the thread and process that own it; 0 when there is no such window. A hook on a
// handle's low word would never be called, nor be released with its window.
class ClientWindow {
  public:
    explicit ClientWindow(LONG handle) noexcept : window_(WindowFrom(handle)) {
        if (IsWhole(handle)) thread_ = GetWindowThreadProcessId(window_, &process_);
    }

    HWND RequireOwn() const {
        if (!thread_) throw ClassError(eErrHookManager_InvalidWindowHandle, kInvalidWindowHandle);
        if (thread_ != GetCurrentThreadId()) throw kOtherThread;
        return window_;
    }

    // Only there can a hook be attached that this thread cannot remove.
    bool IsHookedByAnotherThread() const noexcept {
        return process_ == GetCurrentProcessId() && thread_ != GetCurrentThreadId() &&
               HookedWindow::IsSubclassed(window_);
    }

  private:
    HWND window_;
    DWORD thread_ = 0;
    DWORD process_ = 0;
};

LRESULT CallBelow(LONG handle, LONG message, const MessageValues& values) {
    ThreadHooks* const hooks = ThreadHooks::Current();
    LRESULT below = 0;
    if (hooks && hooks->CallBelow(WindowFrom(handle), static_cast<UINT>(message), values, &below)) return below;
    ClientWindow(handle).RequireOwn();
    throw ClassError(eErrHookManager_NotHooked, L"The window has no hooks");
}

constexpr DISPID kAddHook = 1;
constexpr DISPID kRemoveHook = 2;
constexpr UINT kArguments = 3;  // the hook is the first, and so the last of the array

// The hook among the arguments of a late-bound call, if it is an object that implements ISubclass by name only.
ComPtr<ISubclass> ScriptHookIn(DISPID id, const DISPPARAMS* parameters) noexcept {
    const bool takesHook = id == kAddHook || id == kRemoveHook;
    if (!takesHook || !parameters || parameters->cArgs != kArguments || parameters->cNamedArgs) return nullptr;
    const VARIANT* given = parameters->rgvarg ? &parameters->rgvarg[kArguments - 1] : nullptr;
    if (given && given->vt == kVariable) given = given->pvarVal;
    return given && given->vt == VT_DISPATCH ? ScriptHook::For(given->pdispVal) : nullptr;
}

}  // namespace

constinit const ClassInfo HookManager::kInfo{
    .name = L"HookManager",
    .clsid = __uuidof(::HookManager),
    .iid = __uuidof(IHookManager),
    .policy = FailurePolicy::PassOn,
};

HookManager* HookManager::theOne_ = nullptr;

IDispatch* HookManager::TheOne() {
    const Lock lock(oneAtATime);
    if (!theOne_ || !theOne_->CountUpIfAlive()) theOne_ = new HookManager;
    return static_cast<IHookManager*>(theOne_);
}

// Meanwhile there may be another one, made when this one's last reference was gone.
HookManager::~HookManager() {
    const Lock lock(oneAtATime);
    if (theOne_ == this) theOne_ = nullptr;
}

// Held from here: who is asked whether it is a script's hook may drop the last reference.
STDMETHODIMP HookManager::Invoke(DISPID id, REFIID reserved, LCID locale, WORD flags, DISPPARAMS* parameters,
                                 VARIANT* result, EXCEPINFO* exception, UINT* badArgument) noexcept {
    const Hold hold(*this);
    const auto invoke = [&](DISPPARAMS* given) {
        return AutomationObject::Invoke(id, reserved, locale, flags, given, result, exception, badArgument);
    };
    const ComPtr<ISubclass> hook = ScriptHookIn(id, parameters);
    if (!hook) return invoke(parameters);
    VARIANT arguments[kArguments];
    std::copy_n(parameters->rgvarg, kArguments, arguments);
    arguments[kArguments - 1].vt = VT_UNKNOWN;
    arguments[kArguments - 1].punkVal = hook.get();
    DISPPARAMS given{arguments, nullptr, kArguments, 0};
    return invoke(&given);
}

STDMETHODIMP HookManager::AddHook(ISubclass** Hook, LONG hWnd, LONG iMsg) noexcept {
    return Guard([&] {
        HookTarget target = TargetOf(Given(Hook));
        const HWND window = ClientWindow(hWnd).RequireOwn();
        ThreadHooks::Get().Add(std::move(target), window, static_cast<UINT>(iMsg));
    });
}

STDMETHODIMP HookManager::RemoveHook(ISubclass** Hook, LONG hWnd, LONG iMsg) noexcept {
    return Guard([&] {
        const HookTarget target = TargetOf(Given(Hook));
        if (ClientWindow(hWnd).IsHookedByAnotherThread()) throw kOtherThread;
        ThreadHooks* const hooks = ThreadHooks::Current();
        if (hooks) hooks->Remove(target, WindowFrom(hWnd), static_cast<UINT>(iMsg));
    });
}

STDMETHODIMP HookManager::get_DispatchedMessage(LONG* result) noexcept {
    return Guard(result, [] {
        const ThreadHooks* const hooks = ThreadHooks::Current();
        return hooks ? static_cast<LONG>(hooks->DispatchedMessage()) : 0;
    });
}

STDMETHODIMP HookManager::CallPreviousProc(LONG hWnd, LONG iMsg, LONG wParam, LONG lParam, LONG* result) noexcept {
    return Guard(result, [&] {
        const ThreadHooks* const hooks = ThreadHooks::Current();
        const MessageValues own = hooks ? hooks->ValuesOf(WindowFrom(hWnd), static_cast<UINT>(iMsg)) : MessageValues{};
        return static_cast<LONG>(
            CallBelow(hWnd, iMsg, {WidenedFrom(wParam, own.wParam), WidenedFrom(lParam, own.lParam)}));
    });
}

STDMETHODIMP HookManager::CallPreviousProcPtr(LONG hWnd, LONG iMsg, LONG_PTR wParam, LONG_PTR lParam,
                                              LONG_PTR* result) noexcept {
    return Guard(result, [&] { return CallBelow(hWnd, iMsg, {wParam, lParam}); });
}

}  // namespace velk
