// The hooked windows of one thread, and how a message is passed through a window's hooks. Who owns what:
//
//   HookManager   the one object of the process that clients call; it keeps nothing itself
//   ThreadHooks   one for each thread that attached a hook, in a slot of that thread, deleted at the thread's end;
//                 owns the thread's HookedWindows
//   HookedWindow  one subclassed window; shared with the messages that are being dispatched to it, which it outlives
//   HookList      the hooks of a window; holds a reference to each hook object until it is removed or its window is
//                 destroyed
//
// A window's messages arrive on its own thread only, so nothing needs a lock.
//
// The hooks for a message lie on the window like layers, the one that was attached last on top. Each layer decides for
// what is below it: it handles the message alone, or lets what is below handle it first and then sees it.
#pragma once

#include <memory>
#include <unordered_map>

#include "platform/long_handles.h"
#include "platform/platform.h"
#include "velksub/hooked_window.h"

namespace velk {

// As hooks pass them on.
struct MessageValues {
    LONG_PTR wParam = 0;
    LONG_PTR lParam = 0;

    // Whether a hook that takes Longs can have them. What a Long cannot hold is a pointer or a handle of a 64-bit
    // process that such a hook could not use: half a pointer would crash the first that followed it.
    bool FitLongs() const noexcept { return FitsLong(wParam) && FitsLong(lParam); }

  private:
    static bool FitsLong(LONG_PTR value) noexcept {
        return value == static_cast<LONG>(value) || value == WidenedFrom(static_cast<LONG>(value));
    }
};

class ThreadHooks {
  public:
    // The calling thread's. `Current` is null until the thread attached a hook.
    static ThreadHooks* Current() noexcept;
    static ThreadHooks& Get();
    static void ReleaseAll() noexcept;  // when the module is unloaded: no window is hooked any more

    ThreadHooks() noexcept = default;
    ThreadHooks(const ThreadHooks&) = delete;
    ThreadHooks& operator=(const ThreadHooks&) = delete;
    ~ThreadHooks();

    // The window is one of this thread.
    void Add(HookTarget target, HWND window, UINT message);
    void Remove(const HookTarget& target, HWND window, UINT message) noexcept;

    // The hooked message that is being dispatched; 0 while there is none.
    UINT DispatchedMessage() const noexcept { return step_ ? step_->call.message : 0; }

    // The values with which a hook is being called for this message of this window; 0 if it is not.
    MessageValues ValuesOf(HWND window, UINT message) const noexcept;

    // What is below the hook that asks; without a hook that is being called, the window's previous procedure. False for
    // a window without hooks.
    bool CallBelow(HWND window, UINT message, const MessageValues& values, LRESULT* result) noexcept;

  private:
    using Window = std::shared_ptr<HookedWindow>;

    struct Call {
        const Window& window;
        UINT message;
        MessageValues values;
    };

    // One hook that is being called: a link of the chain from the innermost dispatched message to the outermost.
    struct Step {
        Step(ThreadHooks& owner, const Call& given, WindowHooks::Place at) noexcept;
        Step(const Step&) = delete;
        Step& operator=(const Step&) = delete;
        ~Step() { hooks.step_ = outer; }

        // A hook that takes Longs gives back the lower half of what CallPreviousProc gave it.
        LRESULT Whole(LRESULT result) const noexcept {
            return handledBelow && static_cast<LONG>(resultBelow) == result ? resultBelow : result;
        }

        ThreadHooks& hooks;
        Step* outer;
        const Call& call;
        WindowHooks::Place place;
        bool handledBelow = false;
        LRESULT resultBelow = 0;
    };

    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept;

    const Window* Find(HWND window) const noexcept;
    Window Subclassed(HWND window);
    void RestoreIfUnused(HookedWindow& window) noexcept;
    void Forget(const Window& window) noexcept;

    LRESULT Dispatch(const Call& call) noexcept;
    LRESULT Below(WindowHooks::Place place, const Call& call) noexcept;
    LRESULT CallHook(const WindowHooks::Hook& hook, const Call& call) noexcept;
    Step* StepOf(HWND window, UINT message) const noexcept;

    std::unordered_map<HWND, Window> windows_;
    Step* step_ = nullptr;
};

}  // namespace velk
