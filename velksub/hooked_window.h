// One subclassed window: the window procedure that it had before, and its hooks.
#pragma once

#include "frame/module/library.h"
#include "platform/com_ptr.h"
#include "platform/platform.h"
#include "velksub.h"
#include "velksub/hook_list.h"

namespace velk {

// Holds a reference to a hook object as long as it is attached.
struct HookTarget {
    ComPtr<ISubclass> subclass;
    ComPtr<ISubclass2> wide;  // empty for a hook that takes the values of messages in Longs only
    const void* identity;     // an object may show different ISubclass pointers; its IUnknown is always the same

    bool operator==(const HookTarget& other) const noexcept { return identity == other.identity; }
};

using WindowHooks = HookList<HookTarget>;

class HookedWindow {
  public:
    // `procedure` is the subclass procedure of all hooked windows.
    HookedWindow(HWND handle, WNDPROC procedure) noexcept : handle_(handle), procedure_(procedure) {}
    HookedWindow(const HookedWindow&) = delete;
    HookedWindow& operator=(const HookedWindow&) = delete;

    HWND handle() const noexcept { return handle_; }
    WindowHooks& hooks() noexcept { return hooks_; }

    // False when the platform refuses.
    bool Subclass() noexcept;

    // Puts the previous procedure back; false when the window was subclassed again after us, since whoever did that
    // calls our procedure.
    bool Restore() noexcept;

    // The platform wants a window's properties removed before the window is destroyed, subclassed again or not.
    void RemoveMark() noexcept;

    // Set while the hooks of a destroyed window are released.
    bool IsDestroyed() const noexcept { return destroyed_; }
    void SetDestroyed() noexcept { destroyed_ = true; }

    // Another window may have got the handle of a destroyed one. Only ours has the mark, which other programs may have
    // removed, or the procedure.
    bool IsStillThere() const noexcept;

    // By any thread or process.
    static bool IsSubclassed(HWND window) noexcept;

    // An address is called as the platform itself would call it, in the window's own character set: CallWindowProc
    // takes ten times as long as all the rest (measured). A handle in its place stands for a procedure of the other
    // character set, which only the platform can call.
    LRESULT CallPrevious(UINT message, WPARAM wParam, LPARAM lParam) const noexcept {
        if (!previousIsHandle_) return previous_(handle_, message, wParam, lParam);
        const auto call = unicode_ ? CallWindowProcW : CallWindowProcA;
        return call(previous_, handle_, message, wParam, lParam);
    }

  private:
    library::Use use_;  // the window's procedure is code of this module
    HWND handle_;
    WNDPROC procedure_;
    bool unicode_ = false;  // a window keeps its character set
    bool destroyed_ = false;
    WNDPROC previous_ = nullptr;
    bool previousIsHandle_ = false;
    WindowHooks hooks_;
};

}  // namespace velk
