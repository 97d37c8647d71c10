#pragma once

#include <functional>
#include <thread>

#include "platform/platform.h"

namespace velk::test {

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
    void Drive(const std::stop_token& over);

    std::function<void(HWND)> actions_;
    HWND dialog_ = nullptr;
    std::jthread thread_{[this](const std::stop_token& over) { Drive(over); }};
};

// Polls for up to five seconds.
bool WaitUntil(const std::function<bool()>& condition);

HWND ControlOf(HWND dialog, int id);  // however deep it lies; null for none
void Press(HWND dialog, int id);      // posted: a nested box would keep a sender waiting

}  // namespace velk::test
