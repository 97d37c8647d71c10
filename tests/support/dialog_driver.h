#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <thread>

#include "platform/platform.h"

namespace velk::test {

// Polls for up to five seconds.
inline bool WaitUntil(const std::function<bool()>& condition) {
    const DWORD start = GetTickCount();
    while (!condition()) {
        if (GetTickCount() - start > 5000) return false;
        Sleep(10);
    }
    return true;
}

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

// The user of a modal dialog: a second thread that waits until a dialog of this process is on the screen and then does
// what it was told. It also watches: a box that comes up beside the dialog is closed and the dialog cancelled, and
// nothing stays open for more than ten seconds.
class DialogDriver {
  public:
    explicit DialogDriver(std::function<void(HWND dialog)> actions) : actions_(std::move(actions)) {}

    // Ends the watch, when the dialog has returned.
    void Finish() { thread_ = std::jthread(); }
    bool sawDialog() const noexcept { return dialog_ != nullptr; }

  private:
    void Drive(const std::stop_token& over) {
        DWORD start = GetTickCount();
        for (HWND box = nullptr; !over.stop_requested(); Sleep(10)) {
            const HWND found = FindDialog(dialog_);
            if (found && !dialog_) {
                actions_(dialog_ = found);
            } else if (found && found != box) {
                PostMessageW(box = found, WM_CLOSE, 0, 0);
                Press(dialog_, IDCANCEL);
            }
            if (GetTickCount() - start < 10'000) continue;
            start += 500;
            ADD_FAILURE() << "a dialog stayed open";
            Press(FindDialog(nullptr), IDCANCEL);
        }
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

    std::function<void(HWND)> actions_;
    HWND dialog_ = nullptr;
    std::jthread thread_{[this](const std::stop_token& over) { Drive(over); }};
};

}  // namespace velk::test
