#include "support/test_window.h"

#include <gtest/gtest.h>

#include <utility>

namespace velk::test {

TestWindow::TestWindow(DWORD style, Handler first, int width, int height) : handler(std::move(first)) {
    static const ATOM kClass = [] {
        WNDCLASSW description{};
        description.lpfnWndProc = Procedure;
        description.hInstance = GetModuleHandleW(nullptr);
        description.hCursor = LoadCursorW(nullptr, IDC_ARROW);
        description.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_WINDOW + 1);
        description.lpszClassName = L"VelkTestWindow";
        return RegisterClassW(&description);
    }();
    window_ = CreateWindowExW(0, MAKEINTATOM(kClass), L"test", style, 20, 20, width, height,
                              style & WS_CHILD ? HWND_MESSAGE : nullptr, nullptr, GetModuleHandleW(nullptr), this);
    EXPECT_NE(nullptr, window_) << "no window: is there a display?";
}

TestWindow::~TestWindow() { Destroy(); }

int TestWindow::CountProperties() const {
    struct Counter {
        static BOOL CALLBACK Count(HWND, LPWSTR, HANDLE, ULONG_PTR count) { return ++*reinterpret_cast<int*>(count); }
    };
    int count = 0;
    EnumPropsExW(window_, &Counter::Count, reinterpret_cast<LPARAM>(&count));
    return count;
}

void TestWindow::Destroy() {
    if (window_ && IsWindow(window_)) DestroyWindow(window_);
    window_ = nullptr;
}

LRESULT CALLBACK TestWindow::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    if (message == WM_NCCREATE) {
        const auto* const create = reinterpret_cast<const CREATESTRUCTW*>(lParam);
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(create->lpCreateParams));
    }
    auto* const self = reinterpret_cast<TestWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (self && self->handler) {
        if (const auto answer = self->handler(window, message, wParam, lParam)) return *answer;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

void PumpMessages() {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

}  // namespace velk::test
