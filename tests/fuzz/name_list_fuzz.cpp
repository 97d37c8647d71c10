#include <string>

#include "fuzz/fuzz.h"
#include "settings/name_list.h"

// Joined again, the names are the list up to its last NUL; without the empty ones, the same without doubled NULs.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view list(reinterpret_cast<const char*>(data), size);
    std::string joined, withoutEmpty, expected;
    for (const auto name : velk::SplitNames(list, velk::EmptyNames::Keep)) joined.append(name) += '\0';
    for (const auto name : velk::SplitNames(list, velk::EmptyNames::Skip)) withoutEmpty.append(name) += '\0';
    for (const char c : joined) {
        if (c != '\0' || (!expected.empty() && expected.back() != '\0')) expected += c;
    }
    velk::test::Require(joined == list.substr(0, list.rfind('\0') + 1) && withoutEmpty == expected);
    return 0;
}
