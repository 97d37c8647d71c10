#pragma once

#include <gtest/gtest.h>

#include <string>

#include "support/test_hook.h"
#include "support/test_window.h"

namespace velk::test {

constexpr LONG kAlone = eMsgResponse_HookAlone;
constexpr LONG kAfter = eMsgResponse_PreviousFirst;
constexpr UINT kMessage = WM_APP + 1;
constexpr UINT kInner = WM_APP + 2;

// A window that answers 7 to two messages and counts up what they point to.
class Hooks : public testing::Test {
  protected:
    Hooks() {
        window.handler = [this](HWND, UINT message, WPARAM, LPARAM lParam) -> std::optional<LRESULT> {
            if (message != kMessage && message != kInner) return std::nullopt;
            log += 'w';
            if (lParam) *reinterpret_cast<int*>(lParam) += 1;
            return 7;
        };
    }

    HRESULT Add(TestHook* hook, LONG handle, UINT message = kMessage) {
        ISubclass* subclass = hook;
        return manager->AddHook(&subclass, handle, static_cast<LONG>(message));
    }
    HRESULT Remove(TestHook* hook, LONG handle, UINT message = kMessage) {
        ISubclass* subclass = hook;
        return manager->RemoveHook(&subclass, handle, static_cast<LONG>(message));
    }
    void AddToWindow(TestHook* hook, UINT message = kMessage) { ASSERT_EQ(S_OK, Add(hook, window.handle(), message)); }
    void RemoveFromWindow(TestHook* hook, UINT message = kMessage) {
        ASSERT_EQ(S_OK, Remove(hook, window.handle(), message));
    }
    HRESULT CallPrevious(LONG handle) {
        LONG result = -1;
        return manager->CallPreviousProc(handle, kMessage, 0, 0, &result);
    }
    LRESULT Send(UINT message = kMessage, LPARAM lParam = 0) { return SendMessageW(window.get(), message, 0, lParam); }
    // The window is as it was before the first hook.
    void ExpectUntouched() const {
        EXPECT_EQ(own, window.CurrentProcedure());
        EXPECT_EQ(properties, window.CountProperties());
    }

    // Logs its name and answers `result`; with `passes` it calls what is below first.
    ComPtr<TestHook> Logging(char name, LONG response, LONG result = 0, bool passes = false, HRESULT ends = S_OK) {
        auto hook = TestHook::Make(response);
        hook->handle = [=, this](const TestHook::Message& m, LONG* answer) {
            LONG below = 0;
            if (passes) {
                EXPECT_EQ(S_OK, manager->CallPreviousProc(m.window, m.number, m.wParam, m.lParam, &below));
            }
            log += name;
            *answer = result + below;
            return ends;
        };
        return hook;
    }

    HookLibrary library;
    ComPtr<IHookManager> manager = library.Manager();
    std::string log;
    TestWindow window;
    const WNDPROC own = window.CurrentProcedure();
    const int properties = window.CountProperties();  // the platform's own
};

}  // namespace velk::test
