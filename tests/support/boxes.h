#pragma once

#include <functional>
#include <utility>

#include "support/fake.h"

namespace velk::test {

// A library's message boxes, given to a function instead of the screen. Elsewhere the tests have its reports written to
// the debugger, by a variable of the environment. One at a time.
class Boxes {
  public:
    using Shown = std::function<void(HWND owner, LPCWSTR text, LPCWSTR title, UINT type)>;

    explicit Boxes(Shown shown, HMODULE module = Library())
        : fake_(
              "MessageBoxW", &MessageBoxW, [shown = std::move(shown)](auto... box) { return shown(box...), IDOK; },
              module) {
        SetEnvironmentVariableW(L"VELKSPRT_REPORTS", nullptr);
    }
    ~Boxes() { SetEnvironmentVariableW(L"VELKSPRT_REPORTS", L"debugger"); }

  private:
    Fake<decltype(&MessageBoxW), std::function<int(HWND, LPCWSTR, LPCWSTR, UINT)>> fake_;
};

}  // namespace velk::test
