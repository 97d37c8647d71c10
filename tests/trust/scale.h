#pragma once

#include <cstdlib>

namespace velk::test {

// How much of a long test is run: a part of it with every change, all of it with VELK_TRUST=full in the environment.
inline int AtScale(int always, int full) { return std::getenv("VELK_TRUST") ? full : always; }

}  // namespace velk::test
