#include "velksub/thread_hooks.h"

#include <new>
#include <utility>

#include "frame/failure/failure.h"
#include "platform/long_handles.h"
#include "velksub/hook_manager.h"

namespace velk {
namespace {

void WINAPI DeleteHooks(void* hooks) { delete static_cast<ThreadHooks*>(hooks); }

DWORD slot = FLS_OUT_OF_INDEXES;

DWORD Slot() {
    static const DWORD made = slot = FlsAlloc(&DeleteHooks);
    if (made == FLS_OUT_OF_INDEXES) throw std::bad_alloc();
    return made;
}

// A procedure that outlived its window's hooks, which only a program that puts back what it found earlier can bring
// about.
LRESULT CallDefault(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    const auto call = IsWindowUnicode(window) ? DefWindowProcW : DefWindowProcA;
    return call(window, message, wParam, lParam);
}

LRESULT CallPrevious(const HookedWindow& window, UINT message, const MessageValues& values) noexcept {
    return window.CallPrevious(message, static_cast<WPARAM>(values.wParam), values.lParam);
}

HRESULT Run(const HookTarget& hook, HWND window, UINT message, const MessageValues& values, LONG_PTR* result) noexcept {
    const LONG handle = LongFrom(window), number = static_cast<LONG>(message);
    if (hook.wide) return hook.wide->WindowProcPtr(handle, number, values.wParam, values.lParam, result);
    LONG narrow = 0;
    const HRESULT called = hook.subclass->WindowProc(handle, number, static_cast<LONG>(values.wParam),
                                                     static_cast<LONG>(values.lParam), &narrow);
    *result = narrow;
    return called;
}

}  // namespace

ThreadHooks* ThreadHooks::Current() noexcept {
    return slot == FLS_OUT_OF_INDEXES ? nullptr : static_cast<ThreadHooks*>(FlsGetValue(slot));
}

ThreadHooks& ThreadHooks::Get() {
    const DWORD made = Slot();
    if (ThreadHooks* const known = Current()) return *known;
    auto hooks = std::make_unique<ThreadHooks>();
    if (!FlsSetValue(made, hooks.get())) throw std::bad_alloc();
    return *hooks.release();
}

void ThreadHooks::ReleaseAll() noexcept {
    if (slot != FLS_OUT_OF_INDEXES) FlsFree(slot);
}

// At its thread's end: the windows were destroyed without a message, and hook objects may not be called any more.
ThreadHooks::~ThreadHooks() {
    for (auto& [handle, window] : windows_) {
        for (auto& hook : window->hooks().TakeAll()) hook.target.subclass.Detach();
    }
}

ThreadHooks::Step::Step(ThreadHooks& owner, const Call& given, WindowHooks::Place at) noexcept
    : hooks(owner), outer(owner.step_), call(given), place(at) {
    owner.step_ = this;
}

const ThreadHooks::Window* ThreadHooks::Find(HWND window) const noexcept {
    const auto found = windows_.find(window);
    return found == windows_.end() ? nullptr : &found->second;
}

// Subclasses a window unless it is already; one that got the handle of a destroyed window counts as new.
ThreadHooks::Window ThreadHooks::Subclassed(HWND window) {
    if (const Window* const known = Find(window)) {
        if ((*known)->IsDestroyed()) throw ClassError(eErrHookManager_InvalidWindowHandle, kInvalidWindowHandle);
        if ((*known)->IsStillThere()) return *known;
        Forget(Window(*known));
        return Subclassed(window);
    }
    Window made = std::make_shared<HookedWindow>(window, &Procedure);
    windows_.emplace(window, made);
    if (made->Subclass()) return made;
    windows_.erase(window);
    throw ClassError(eErrHookManager_CannotSubclass, L"The window cannot be subclassed");
}

void ThreadHooks::Add(HookTarget target, HWND window, UINT message) {
    const Window hooked = Subclassed(window);
    try {
        hooked->hooks().Add(message, std::move(target));
    } catch (...) {
        RestoreIfUnused(*hooked);
        throw;
    }
}

void ThreadHooks::Remove(const HookTarget& target, HWND window, UINT message) noexcept {
    const Window* const found = Find(window);
    if (!found) return;
    const Window hooked = *found;
    const auto removed = hooked->hooks().Remove(message, target);  // released last: that may run the client's code
    RestoreIfUnused(*hooked);
}

// A window that was subclassed again after us stays in the table without hooks: our procedure passes its messages on.
void ThreadHooks::RestoreIfUnused(HookedWindow& window) noexcept {
    if (window.hooks().empty() && window.Restore()) windows_.erase(window.handle());
}

// The window was destroyed. It is removed from the table last: hooks must not attach to it again while they are
// released.
void ThreadHooks::Forget(const Window& window) noexcept {
    window->SetDestroyed();
    window->hooks().TakeAll();
    windows_.erase(window->handle());
}

LRESULT CALLBACK ThreadHooks::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    ThreadHooks* const hooks = Current();
    const Window* const found = hooks ? hooks->Find(window) : nullptr;
    if (!found) return CallDefault(window, message, wParam, lParam);
    if (message != WM_NCDESTROY && !(*found)->hooks().Wants(message)) {
        return (*found)->CallPrevious(message, wParam, lParam);
    }
    const Window kept = *found;
    return hooks->Dispatch({kept, message, {static_cast<LONG_PTR>(wParam), lParam}});
}

LRESULT ThreadHooks::Dispatch(const Call& call) noexcept {
    const LRESULT result = Below(WindowHooks::kTop, call);
    if (call.message == WM_NCDESTROY) {
        if (!call.window->Restore()) call.window->RemoveMark();
        Forget(call.window);
    }
    return result;
}

LRESULT ThreadHooks::Below(WindowHooks::Place place, const Call& call) noexcept {
    if (!IsWindow(call.window->handle())) return 0;  // a hook destroyed it
    const WindowHooks& hooks = call.window->hooks();
    const WindowHooks::Hook* hook = hooks.Below(call.message, place);
    if (hook && !call.values.FitLongs()) {
        while (hook && !hook->target.wide) hook = hooks.Below(call.message, hook->place);
    }
    return hook ? CallHook(*hook, call) : CallPrevious(*call.window, call.message, call.values);
}

// A hook that fails, and one that is removed meanwhile, is passed over.
LRESULT ThreadHooks::CallHook(const WindowHooks::Hook& hook, const Call& call) noexcept {
    const HookTarget target = hook.target;
    Step step(*this, call, hook.place);
    const auto attached = [&] { return call.window->hooks().Holds(call.message, step.place); };
    LONG response = 0;
    LONG_PTR result = 0;
    const auto run = [&] { return Run(target, call.window->handle(), call.message, call.values, &result); };
    if (FAILED(target.subclass->get_MsgResponse(&response)) || !attached()) return Below(step.place, call);
    if (response == eMsgResponse_HookAlone) {
        if (SUCCEEDED(run())) return target.wide ? result : step.Whole(result);
        return step.handledBelow ? step.resultBelow : Below(step.place, call);
    }
    const LRESULT below = Below(step.place, call);
    if (attached()) run();
    return below;
}

ThreadHooks::Step* ThreadHooks::StepOf(HWND window, UINT message) const noexcept {
    const bool its = step_ && step_->call.window->handle() == window && step_->call.message == message;
    return its ? step_ : nullptr;
}

MessageValues ThreadHooks::ValuesOf(HWND window, UINT message) const noexcept {
    const Step* const step = StepOf(window, message);
    return step ? step->call.values : MessageValues{};
}

bool ThreadHooks::CallBelow(HWND window, UINT message, const MessageValues& values, LRESULT* result) noexcept {
    if (Step* const step = StepOf(window, message)) {
        *result = step->resultBelow = Below(step->place, {step->call.window, message, values});
        step->handledBelow = true;
        return true;
    }
    const Window* const found = Find(window);
    if (found) *result = CallPrevious(**found, message, values);
    return found != nullptr;
}

}  // namespace velk
