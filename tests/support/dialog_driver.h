#pragma once

#include <functional>
#include <string>

#include "platform/platform.h"

namespace velk::test {

// The user of a modal dialog: a second thread that waits until a dialog of this process is on the screen and then does
// what it was told. It also watches: a box that comes up beside the dialog is closed and the dialog cancelled, and
// nothing stays open for more than ten seconds.
class DialogDriver {
  public:
    explicit DialogDriver(std::function<void(HWND dialog)> actions);
    DialogDriver(const DialogDriver&) = delete;
    DialogDriver& operator=(const DialogDriver&) = delete;
    ~DialogDriver();  // when the dialog has returned

    // Ends the watch. The texts of the boxes that came up, and whether there was a dialog at all.
    void Finish();
    bool sawDialog() const noexcept { return dialog_ != nullptr; }
    const std::wstring& boxes() const noexcept { return boxes_; }

  private:
    static DWORD WINAPI Run(void* self) noexcept;
    void Drive();
    void Watch();
    bool Done(DWORD milliseconds) const noexcept;

    std::function<void(HWND)> actions_;
    HWND dialog_ = nullptr;
    std::wstring boxes_;
    HANDLE done_;
    HANDLE thread_;
};

// Polls for up to five seconds.
bool WaitUntil(const std::function<bool()>& condition);

HWND ControlOf(HWND dialog, int id);  // however deep it lies
std::wstring TextOfWindow(HWND window);
void TypeInto(HWND dialog, int id, const std::wstring& text);
void Press(HWND dialog, int id);  // posted: a nested box would keep a sender waiting
// The last entry of a combo box that is wanted, chosen as a user does. Its text.
std::wstring SelectIn(HWND dialog, int id, const std::function<bool(const std::wstring&)>& wanted);
void SelectIn(HWND dialog, int id, const wchar_t* entry);

}  // namespace velk::test
