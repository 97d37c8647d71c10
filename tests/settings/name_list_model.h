#pragma once

#include <string>

#include "fuzz/model.h"
#include "settings/name_list.h"

namespace velk::test {

// Joined again, the names are the list up to its last NUL; without the empty ones, the same without doubled NULs.
inline void NameListModel(Bytes& bytes) {
    const std::string list = bytes.Rest(std::string_view("abc\0\0", 5));
    std::string joined, withoutEmpty, expected;
    for (const auto name : SplitNames(list, EmptyNames::Keep)) joined.append(name) += '\0';
    for (const auto name : SplitNames(list, EmptyNames::Skip)) withoutEmpty.append(name) += '\0';
    for (const char c : joined) {
        if (c != '\0' || (!expected.empty() && expected.back() != '\0')) expected += c;
    }
    Require(joined == list.substr(0, list.rfind('\0') + 1) && withoutEmpty == expected);
}

}  // namespace velk::test
