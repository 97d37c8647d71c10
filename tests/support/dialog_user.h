#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <utility>

#include "platform/platform.h"

namespace velk::test {

// However deep it lies in the dialog; null for none.
inline HWND ControlOf(HWND dialog, int id) {
    for (HWND child = nullptr; (child = FindWindowExW(dialog, child, nullptr, nullptr));) {
        const HWND found = GetDlgCtrlID(child) == id ? child : ControlOf(child, id);
        if (found) return found;
    }
    return nullptr;
}

// Posted: a nested box would keep a sender waiting.
inline void Press(HWND dialog, int id) {
    PostMessageW(dialog, WM_COMMAND, MAKEWPARAM(id, BN_CLICKED), reinterpret_cast<LPARAM>(ControlOf(dialog, id)));
}

// The user of this thread's next modal dialog: acts whenever the dialog waits for messages, until there is nothing more
// to do. Boxes that come up beside the dialog are closed and the dialog cancelled, and so is what stays open for more
// than ten seconds. One at a time.
class DialogUser {
  public:
    // Acts on the dialog; whether that was all.
    explicit DialogUser(std::function<bool(HWND dialog)> acts) : acts_(std::move(acts)) { current_ = this; }
    DialogUser(const DialogUser&) = delete;
    DialogUser& operator=(const DialogUser&) = delete;
    ~DialogUser() { KillTimer(nullptr, timer_); }

    bool sawDialog() const noexcept { return dialog_ != nullptr; }

  private:
    static void CALLBACK Tick(HWND, UINT, UINT_PTR, DWORD) { current_->Look(); }

    void Look() {
        if (!dialog_) dialog_ = FindDialog(nullptr);
        if (dialog_ && !isDone_) isDone_ = acts_(dialog_);
        const HWND before = std::exchange(box_, FindDialog(dialog_));
        if (box_ && box_ != before) PostMessageW(box_, WM_CLOSE, 0, 0);
        if (before && !box_) Press(dialog_, IDCANCEL);
        if (GetTickCount() - start_ < 10'000) return;
        start_ += 500;
        ADD_FAILURE() << "a dialog stayed open";
        Press(FindDialog(nullptr), IDCANCEL);
    }

    // One of this process, other than that one.
    static HWND FindDialog(HWND except) {
        for (HWND window = nullptr; (window = FindWindowExW(nullptr, window, L"#32770", nullptr));) {
            DWORD process = 0;
            GetWindowThreadProcessId(window, &process);
            if (process == GetCurrentProcessId() && IsWindowVisible(window) && window != except) return window;
        }
        return nullptr;
    }

    static inline DialogUser* current_ = nullptr;
    const std::function<bool(HWND)> acts_;
    HWND dialog_ = nullptr, box_ = nullptr;
    bool isDone_ = false;
    DWORD start_ = GetTickCount();
    const UINT_PTR timer_ = SetTimer(nullptr, 0, 10, &Tick);
};

}  // namespace velk::test
