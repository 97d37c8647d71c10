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
    return {subclass, identity.get()};
}

constexpr ClassError kOtherThread{eErrHookManager_OtherThread, L"The window belongs to another thread"};

bool IsOfThisThread(HWND window) noexcept { return GetWindowThreadProcessId(window, nullptr) == GetCurrentThreadId(); }

// The platform takes the low word of a handle, extended with or without a sign, for the handle itself. Messages come
// with the whole one, so that what is attached to the short one would neither be called nor go with its window.
bool IsShort(LONG handle) noexcept { return HIWORD(handle) == 0 || HIWORD(handle) == 0xFFFF; }

HWND OwnWindow(LONG handle) {
    const auto window = WindowFrom(handle);
    if (IsShort(handle) || !IsWindow(window))
        throw ClassError(eErrHookManager_InvalidWindowHandle, kInvalidWindowHandle);
    if (!IsOfThisThread(window)) throw kOtherThread;
    return window;
}

// Only there can a hook be attached that this thread cannot take off.
bool IsHookedByAnotherThread(LONG handle) noexcept {
    const auto window = WindowFrom(handle);
    DWORD process = 0;
    const DWORD thread = GetWindowThreadProcessId(window, &process);
    return !IsShort(handle) && process == GetCurrentProcessId() && thread != GetCurrentThreadId() &&
           HookedWindow::IsSubclassed(window);
}

constexpr DISPID kAddHook = 1;
constexpr DISPID kRemoveHook = 2;
constexpr UINT kArguments = 3;  // the hook is the first, and so the last of the array

// The hook among the arguments of a late-bound call, if it is an object that has its members by name only.
ComPtr<ISubclass> ScriptHookIn(DISPID id, const DISPPARAMS* parameters) noexcept {
    const bool takesHook = id == kAddHook || id == kRemoveHook;
    if (!takesHook || !parameters || parameters->cArgs != kArguments || parameters->cNamedArgs) return nullptr;
    const VARIANT* given = parameters->rgvarg ? &parameters->rgvarg[kArguments - 1] : nullptr;
    if (given && given->vt == (VT_BYREF | VT_VARIANT)) given = given->pvarVal;
    return given && given->vt == VT_DISPATCH ? ScriptHook::For(given->pdispVal) : nullptr;
}

}  // namespace

constinit const ClassInfo HookManager::kInfo{
    .name = L"HookManager",
    .clsid = __uuidof(::HookManager),
    .iid = __uuidof(IHookManager),
    .events = nullptr,
    .policy = FailurePolicy::PassOn,
    .componentFailure = S_OK,
    .creationFailed = L"",
    .onAnyThread = true,
};

HookManager* HookManager::theOne_ = nullptr;

IDispatch* HookManager::TheOne() {
    const Lock lock(oneAtATime);
    if (theOne_) {
        theOne_->AddRef();
    } else {
        theOne_ = new HookManager;
    }
    return theOne_;
}

// The last reference must not go while another thread asks for the object.
STDMETHODIMP_(ULONG) HookManager::Release() noexcept {
    const Lock lock(oneAtATime);
    return AutomationObject::Release();
}

HookManager::~HookManager() { theOne_ = nullptr; }

STDMETHODIMP HookManager::Invoke(DISPID id, REFIID reserved, LCID locale, WORD flags, DISPPARAMS* parameters,
                                 VARIANT* result, EXCEPINFO* exception, UINT* badArgument) noexcept {
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
    return Guard(L"AddHook", [&] {
        HookTarget target = TargetOf(Given(Hook));
        const HWND window = OwnWindow(hWnd);
        ThreadHooks::Get().Add(std::move(target), window, static_cast<UINT>(iMsg));
    });
}

STDMETHODIMP HookManager::RemoveHook(ISubclass** Hook, LONG hWnd, LONG iMsg) noexcept {
    return Guard(L"RemoveHook", [&] {
        const HookTarget target = TargetOf(Given(Hook));
        if (IsHookedByAnotherThread(hWnd)) throw kOtherThread;
        const auto window = WindowFrom(hWnd);
        if (ThreadHooks* const hooks = ThreadHooks::Current()) hooks->Remove(target, window, static_cast<UINT>(iMsg));
    });
}

STDMETHODIMP HookManager::get_DispatchedMessage(LONG* result) noexcept {
    return Guard(L"DispatchedMessage", result, [] {
        const ThreadHooks* const hooks = ThreadHooks::Current();
        return hooks ? static_cast<LONG>(hooks->DispatchedMessage()) : 0;
    });
}

STDMETHODIMP HookManager::CallPreviousProc(LONG hWnd, LONG iMsg, LONG wParam, LONG lParam, LONG* result) noexcept {
    return Guard(L"CallPreviousProc", result, [&] {
        ThreadHooks* const hooks = ThreadHooks::Current();
        const auto window = WindowFrom(hWnd);
        LRESULT answer = 0;
        if (hooks && hooks->CallBelow(window, static_cast<UINT>(iMsg), static_cast<WPARAM>(wParam), lParam, &answer)) {
            return static_cast<LONG>(answer);
        }
        OwnWindow(hWnd);
        throw ClassError(eErrHookManager_NotHooked, L"The window has no hooks");
    });
}

}  // namespace velk
