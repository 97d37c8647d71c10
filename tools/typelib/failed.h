#pragma once

#include <cstdio>
#include <string>

#include "frame/failure/failure.h"

namespace velk {

// For the handler of a program's main: says what ended it, and returns its exit code.
inline int Failed(const char* program) {
    std::printf("%s: %ls\n", program, std::wstring(CaughtFailure().description).c_str());
    return 1;
}

}  // namespace velk
