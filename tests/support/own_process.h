#pragma once

#include <gtest/gtest.h>

#include <string>

#include "platform/handles.h"
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
    explicit OwnProcess(const wchar_t* test) {
        std::wstring line = L"\"" + OwnProgram() + L"\" --gtest_also_run_disabled_tests --gtest_filter=" + test;
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        PROCESS_INFORMATION started{};
        EXPECT_TRUE(CreateProcessW(OwnProgram().c_str(), line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                                   &startup, &started));
        CloseHandle(started.hThread);
        process_ = FileHandle(started.hProcess);
    }

    // Its exit code. A minute is enough for any of them.
    DWORD Ended() const {
        if (WaitForSingleObject(process_.get(), 60'000)) TerminateProcess(process_.get(), STILL_ACTIVE);
        DWORD code = STILL_ACTIVE;
        GetExitCodeProcess(process_.get(), &code);
        return code;
    }

  private:
    FileHandle process_;
};

}  // namespace velk::test
