// Fuzzes the splitting of name lists:
//
//     clang++ -std=c++20 -g -O1 -fsanitize=fuzzer,address,undefined -Isrc tests/fuzz/name_list_fuzz.cpp \
//         src/settings/name_list.cpp -o build/name_list_fuzz && build/name_list_fuzz -max_total_time=60
#include <cstdint>
#include <cstdlib>
#include <string>

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
    if (joined != list.substr(0, list.rfind('\0') + 1) || withoutEmpty != expected) std::abort();
    return 0;
}
