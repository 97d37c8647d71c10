// A key of the current user's that is empty at first and gone in the end, with values below it.
#pragma once

#include <string>

#include "facts/values.h"
#include "platform/platform.h"
#include "platform/text.h"

namespace velk::facts {

class RegistryKey {
  public:
    explicit RegistryKey(std::string root) : root_(std::move(root)) {
        RegDeleteTreeA(HKEY_CURRENT_USER, root_.c_str());
    }
    RegistryKey(const RegistryKey&) = delete;
    RegistryKey& operator=(const RegistryKey&) = delete;
    ~RegistryKey() { RegDeleteTreeA(HKEY_CURRENT_USER, root_.c_str()); }

    LSTATUS Store(const std::string& value, DWORD type, const std::string& bytes) const {
        return RegSetKeyValueA(HKEY_CURRENT_USER, KeyOf(value).c_str(), NameOf(value).c_str(), type, bytes.data(),
                               static_cast<DWORD>(bytes.size()));
    }

    // 1 "bytes"
    std::wstring Load(const std::string& value) const {
        std::string bytes(200'000, '\0');
        DWORD type = 0, size = static_cast<DWORD>(bytes.size());
        RegGetValueA(HKEY_CURRENT_USER, KeyOf(value).c_str(), NameOf(value).c_str(), RRF_RT_ANY | RRF_NOEXPAND, &type,
                     bytes.data(), &size);
        bytes.resize(size);
        return std::to_wstring(type) + L" " + Quote(Wide(FromAnsi(bytes)));
    }

  private:
    std::string KeyOf(const std::string& value) const { return root_ + '\\' + value.substr(0, value.rfind('\\')); }
    static std::string NameOf(const std::string& value) { return value.substr(value.rfind('\\') + 1); }

    std::string root_;
};

}  // namespace velk::facts
