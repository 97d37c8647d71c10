#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

namespace velk::test {

// How much of a long test is run: a part of it with every change, all of it with VELK_TRUST=full in the environment.
inline int AtScale(int always, int full) { return std::getenv("VELK_TRUST") ? full : always; }

// A figure for the table that `./dev trust` writes.
inline void Tell(const std::string& what, const std::string& figure) {
    std::printf("trust: %s: %s\n", what.c_str(), figure.c_str());
}

}  // namespace velk::test
