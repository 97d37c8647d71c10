#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/platform.h"

namespace velk {

// A registry value as it is stored; the text of a string value keeps its final NUL if it has one.
struct RegistryValue {
    DWORD type;
    std::vector<char> bytes;

    std::string_view text() const noexcept { return {bytes.data(), bytes.size()}; }
    LONG number() const noexcept;  // the first four bytes, missing ones as 0
};

// Path and name are in the ANSI code page. Nothing when the key cannot be opened with this access or has no such value.
// Throws error 75 when the value is another size each time that it is read.
std::optional<RegistryValue> ReadRegistryValue(HKEY root, const std::string& path, const std::string& name,
                                               REGSAM access);

}  // namespace velk
