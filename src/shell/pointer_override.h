// The process's one mouse pointer override. While the hourglass is set, a window that was asked for its pointer
// (WM_SETCURSOR) has its answer replaced, by a hook on each thread that had windows at that time and on the calling
// one. Windows themselves are left alone: nothing is subclassed and no class changes its pointer. Without an override
// nothing is hooked.
#pragma once

namespace velk::pointer_override {

// Sets it, and takes in the threads that have come since it was last set. The window under the pointer shows it at
// once. Throws the run-time error of a hook on the calling thread that the system refuses.
void ShowHourglass();

// The default: an arrow, and then whatever the window under the pointer chooses. Also without an override, where only
// an arrow is left as it is.
void Clear() noexcept;

}  // namespace velk::pointer_override
