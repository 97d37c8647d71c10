#pragma once

#include <process.h>

#include <string>

#include "platform/platform.h"

namespace velk::test {

inline std::wstring OwnProgram() {
    wchar_t path[MAX_PATH];
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    return path;
}

// A DISABLED_ test of this program in a process of its own, which may end in any way.
class OwnProcess {
  public:
    explicit OwnProcess(const std::wstring& test) : filter_(L"--gtest_filter=" + test) {}

    // Its exit code.
    DWORD Ended() const {
        return static_cast<DWORD>(_wspawnl(_P_WAIT, OwnProgram().c_str(), L"tests", L"--gtest_also_run_disabled_tests",
                                           filter_.c_str(), nullptr));
    }

  private:
    const std::wstring filter_;
};

}  // namespace velk::test
