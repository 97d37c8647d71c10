#pragma once

#include <functional>
#include <optional>

#include "platform/platform.h"

namespace velk::test {

// A real window of the tests' own. Its handler sees each message first; what it leaves goes to the platform's default.
// With WS_CHILD it is for messages only, which costs little.
class TestWindow {
  public:
    using Handler = std::function<std::optional<LRESULT>(HWND, UINT, WPARAM, LPARAM)>;

    explicit TestWindow(DWORD style = WS_OVERLAPPEDWINDOW, Handler handler = {}, int width = 300, int height = 200);
    TestWindow(const TestWindow&) = delete;
    TestWindow& operator=(const TestWindow&) = delete;
    ~TestWindow();

    HWND get() const noexcept { return window_; }
    LONG handle() const noexcept { return HandleToLong(window_); }  // as the library's members take it
    WNDPROC CurrentProcedure() const { return reinterpret_cast<WNDPROC>(GetWindowLongPtrW(window_, GWLP_WNDPROC)); }
    int CountProperties() const;
    void Destroy();

    Handler handler;

  private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept;

    HWND window_ = nullptr;
};

// Dispatches what is waiting in this thread's queue.
void PumpMessages();

}  // namespace velk::test
