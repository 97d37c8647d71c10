#include "platform/registry.h"

#include <algorithm>
#include <cstring>

#include "platform/handles.h"

namespace velk {

LONG RegistryValue::number() const noexcept {
    LONG number = 0;
    if (!bytes.empty()) std::memcpy(&number, bytes.data(), std::min(bytes.size(), sizeof number));
    return number;
}

std::optional<RegistryValue> ReadRegistryValue(HKEY root, const std::string& path, const std::string& name,
                                               REGSAM access) {
    RegistryKey key;
    if (RegOpenKeyExA(root, path.c_str(), 0, access, key.Receive()) != ERROR_SUCCESS) return std::nullopt;
    RegistryValue value{};
    DWORD size = 0;
    LSTATUS status = RegQueryValueExA(key.get(), name.c_str(), nullptr, &value.type, nullptr, &size);
    while (status == ERROR_SUCCESS) {
        value.bytes.resize(size);
        status = RegQueryValueExA(key.get(), name.c_str(), nullptr, &value.type,
                                  reinterpret_cast<BYTE*>(value.bytes.data()), &size);
        // Another program may store a longer value between the two calls.
        if (status != ERROR_MORE_DATA) break;
        status = ERROR_SUCCESS;
    }
    if (status != ERROR_SUCCESS) return std::nullopt;
    value.bytes.resize(size);
    return value;
}

}  // namespace velk
