// The form in which the platform lists the names in an INI file: each name is followed by one NUL.
#pragma once

#include <string_view>
#include <vector>

namespace velk {

enum class EmptyNames { Keep, Skip };

// The names in a list's bytes, as views of them. A last name without its NUL was cut by the end of the buffer and is
// left out.
std::vector<std::string_view> SplitNames(std::string_view list, EmptyNames emptyNames);

}  // namespace velk
