#include "support/dialog_driver.h"

#include <gtest/gtest.h>

namespace velk::test {
namespace {

constexpr DWORD kLongestMilliseconds = 10'000;
constexpr DWORD kStepMilliseconds = 10;

// A dialog of this process other than that one.
HWND FindDialog(HWND except) {
    for (HWND window = nullptr; (window = FindWindowExW(nullptr, window, L"#32770", nullptr));) {
        DWORD process = 0;
        GetWindowThreadProcessId(window, &process);
        if (process == GetCurrentProcessId() && IsWindowVisible(window) && window != except) return window;
    }
    return nullptr;
}

}  // namespace

void DialogDriver::Drive(const std::stop_token& over) {
    DWORD start = GetTickCount();
    for (HWND box = nullptr; !over.stop_requested(); Sleep(kStepMilliseconds)) {
        const HWND found = FindDialog(dialog_);
        if (found && !dialog_) {
            actions_(dialog_ = found);
        } else if (found && found != box) {
            PostMessageW(box = found, WM_CLOSE, 0, 0);
            Press(dialog_, IDCANCEL);
        }
        if (GetTickCount() - start < kLongestMilliseconds) continue;
        start += 500;
        ADD_FAILURE() << "a dialog stayed open";
        Press(FindDialog(nullptr), IDCANCEL);
    }
}

bool WaitUntil(const std::function<bool()>& condition) {
    const DWORD start = GetTickCount();
    while (!condition()) {
        if (GetTickCount() - start > 5000) return false;
        Sleep(kStepMilliseconds);
    }
    return true;
}

HWND ControlOf(HWND dialog, int id) {
    for (HWND child = nullptr; (child = FindWindowExW(dialog, child, nullptr, nullptr));) {
        const HWND found = GetDlgCtrlID(child) == id ? child : ControlOf(child, id);
        if (found) return found;
    }
    return nullptr;
}

void Press(HWND dialog, int id) {
    PostMessageW(dialog, WM_COMMAND, MAKEWPARAM(id, BN_CLICKED), reinterpret_cast<LPARAM>(ControlOf(dialog, id)));
}

}  // namespace velk::test
