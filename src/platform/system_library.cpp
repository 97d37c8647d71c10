#include "platform/system_library.h"

#include <string>

namespace velk {

HMODULE LoadSystemLibrary(const wchar_t* name) noexcept try {
    wchar_t folder[MAX_PATH];
    const UINT length = GetSystemDirectoryW(folder, MAX_PATH);
    if (length == 0 || length >= MAX_PATH) return nullptr;
    const std::wstring path = std::wstring(folder, length) + L"\\" + name;
    return LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
} catch (...) {  // out of memory
    return nullptr;
}

}  // namespace velk
