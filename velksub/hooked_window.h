// One subclassed window: its procedure before, and its hooks.
#pragma once

#include "frame/module/library.h"
#include "platform/com_ptr.h"
#include "platform/platform.h"
#include "velksub.h"
#include "velksub/hook_list.h"

namespace velk {

// Holds a hook object as long as it is attached.
struct HookTarget {
    ComPtr<ISubclass> subclass;
    const void* identity;  // an object may show different ISubclass pointers; its IUnknown is always the same

    bool operator==(const HookTarget& other) const noexcept { return identity == other.identity; }
};

using WindowHooks = HookList<HookTarget>;

class HookedWindow {
  public:
    explicit HookedWindow(HWND handle) noexcept : handle_(handle) {}
    HookedWindow(const HookedWindow&) = delete;
    HookedWindow& operator=(const HookedWindow&) = delete;

    HWND handle() const noexcept { return handle_; }
    WindowHooks& hooks() noexcept { return hooks_; }

    // Puts a procedure before the window's own; false when the platform refuses.
    bool Subclass(WNDPROC procedure) noexcept;

    // Gives the window its procedure back; false when another program stands on ours: taking it away would cut that
    // program's way to the window.
    bool Restore(WNDPROC procedure) noexcept;

    // The platform wants a window's properties taken off before the window goes, whoever stands on our procedure.
    void Unmark() noexcept;

    // Set while the hooks of a destroyed window are let go.
    bool IsDestroyed() const noexcept { return destroyed_; }
    void SetDestroyed() noexcept { destroyed_ = true; }

    // A handle may come back with another window behind it. Only ours bears the mark, which other programs may have
    // taken away, or has the procedure.
    bool IsStillThere(WNDPROC procedure) const noexcept;

    // By any thread or process.
    static bool IsSubclassed(HWND window) noexcept;

    // An address is called as the platform itself would call it, in the window's own character set; to go through the
    // platform takes several times as long as all the rest. A handle in its place stands for a procedure of the other
    // character set, which only the platform can call.
    LRESULT CallPrevious(UINT message, WPARAM wParam, LPARAM lParam) const noexcept {
        if (!previousIsHandle_) return previous_(handle_, message, wParam, lParam);
        const auto call = unicode_ ? CallWindowProcW : CallWindowProcA;
        return call(previous_, handle_, message, wParam, lParam);
    }

  private:
    library::Use use_;  // the window's procedure is code of this module
    HWND handle_;
    bool unicode_ = false;  // a window keeps its character set
    bool destroyed_ = false;
    WNDPROC previous_ = nullptr;
    bool previousIsHandle_ = false;
    WindowHooks hooks_;
};

}  // namespace velk
