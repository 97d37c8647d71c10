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

// The exit code of a DISABLED_ test of this program, which runs in a process of its own and may end it in any way.
inline intptr_t RunAlone(const std::wstring& test) {
    const std::wstring filter = L"--gtest_filter=" + test;
    return _wspawnl(_P_WAIT, OwnProgram().c_str(), L"tests", L"--gtest_also_run_disabled_tests", filter.c_str(),
                    nullptr);
}

}  // namespace velk::test
