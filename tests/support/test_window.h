#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <utility>

#include "platform/platform.h"

namespace velk::test {

// A real window of the tests' own. Its handler sees each message first; what it leaves goes to the platform's default.
// With WS_CHILD it is for messages only, which costs little.
class TestWindow {
  public:
    using Handler = std::function<std::optional<LRESULT>(HWND, UINT, WPARAM, LPARAM)>;

    explicit TestWindow(DWORD style = WS_OVERLAPPEDWINDOW, Handler first = {}, int width = 300, int height = 200)
        : handler(std::move(first)) {
        const HINSTANCE own = GetModuleHandleW(nullptr);
        const HCURSOR arrow = LoadCursorW(nullptr, IDC_ARROW);
        const auto white = reinterpret_cast<HBRUSH>(COLOR_WINDOW + 1);
        const WNDCLASSW made{0, Procedure, 0, 0, own, nullptr, arrow, white, nullptr, L"VelkTestWindow"};
        static const ATOM kClass = RegisterClassW(&made);
        window_ = CreateWindowExW(0, MAKEINTATOM(kClass), L"test", style, 20, 20, width, height,
                                  style & WS_CHILD ? HWND_MESSAGE : nullptr, nullptr, own, this);
        EXPECT_NE(nullptr, window_) << "no window: is there a display?";
    }
    TestWindow(const TestWindow&) = delete;
    TestWindow& operator=(const TestWindow&) = delete;
    ~TestWindow() { Destroy(); }

    HWND get() const noexcept { return window_; }
    LONG handle() const noexcept { return HandleToLong(window_); }  // as the library's members take it
    WNDPROC CurrentProcedure() const { return reinterpret_cast<WNDPROC>(GetWindowLongPtrW(window_, GWLP_WNDPROC)); }
    LRESULT Send(UINT message, const void* first = nullptr, const void* second = nullptr) const {
        return SendMessageW(window_, message, reinterpret_cast<WPARAM>(first), reinterpret_cast<LPARAM>(second));
    }
    int CountProperties() const {
        int count = 0;
        EnumPropsExW(window_, &Count, reinterpret_cast<LPARAM>(&count));
        return count;
    }
    void Destroy() {
        if (IsWindow(window_)) DestroyWindow(window_);
        window_ = nullptr;
    }

    Handler handler;

  private:
    static BOOL CALLBACK Count(HWND, LPWSTR, HANDLE, ULONG_PTR count) noexcept {
        return ++*reinterpret_cast<int*>(count);
    }
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
        auto* self = reinterpret_cast<TestWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
        if (!self && message == WM_NCCREATE) {
            self = static_cast<TestWindow*>(reinterpret_cast<const CREATESTRUCTW*>(lParam)->lpCreateParams);
            SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(self));
        }
        const auto answer = self && self->handler ? self->handler(window, message, wParam, lParam) : std::nullopt;
        return answer ? *answer : DefWindowProcW(window, message, wParam, lParam);
    }

    HWND window_ = nullptr;
};

// Polls for up to five seconds.
inline bool WaitUntil(const std::function<bool()>& condition) {
    const DWORD start = GetTickCount();
    while (!condition()) {
        if (GetTickCount() - start > 5000) return false;
        Sleep(10);
    }
    return true;
}

// Dispatches what is waiting in this thread's queue.
inline void PumpMessages() {
    for (MSG message; PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE);) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

}  // namespace velk::test
