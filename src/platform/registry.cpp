#include "platform/registry.h"

#include <algorithm>
#include <cstring>

#include "platform/handles.h"
#include "platform/system_errors.h"

namespace velk {
namespace {

constexpr int kMostTries = 16;

}  // namespace

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
    // At first this only tells the size. Another program may store a longer value before it is read.
    for (int tries = 0; tries < kMostTries; ++tries) {
        BYTE* const place = value.bytes.empty() ? nullptr : reinterpret_cast<BYTE*>(value.bytes.data());
        const LSTATUS status = RegQueryValueExA(key.get(), name.c_str(), nullptr, &value.type, place, &size);
        if (status != ERROR_SUCCESS && status != ERROR_MORE_DATA) return std::nullopt;
        const bool whole = status == ERROR_SUCCESS && size <= value.bytes.size();
        value.bytes.resize(size);
        if (whole) return value;
    }
    throw FromSystemError(ERROR_MORE_DATA);
}

}  // namespace velk
