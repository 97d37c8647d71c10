// What a maintainer needs to know of a machine on which something does not work, and nothing private.
#pragma once

#include <string>

namespace velk {

// DIAGNOSIS is what the examination of all classes says.
std::wstring Report(const std::wstring& diagnosis);

}  // namespace velk
