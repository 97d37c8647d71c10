#pragma once

#include <fstream>
#include <string>

#include "platform/platform.h"

namespace velk {

inline bool WriteUtf8(const char* path, const std::wstring& text) {
    std::string bytes(3 * text.size(), '\0');
    const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), bytes.data(),
                                         static_cast<int>(bytes.size()), nullptr, nullptr);
    std::ofstream file(path, std::ios::binary);
    file.write(bytes.data(), size);
    return static_cast<bool>(file.flush());
}

}  // namespace velk
