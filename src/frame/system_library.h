#pragma once

#include "frame/handles.h"

namespace velk {

struct ModuleTraits {
    using Handle = HMODULE;
    static Handle Invalid() noexcept { return nullptr; }
    static void Close(Handle handle) noexcept { FreeLibrary(handle); }
};
using ModuleHandle = UniqueHandle<ModuleTraits>;

// Loads a platform library from the system folder and from nowhere else; null when it is missing there. For what
// should not be loaded into every client, or may lack a function.
HMODULE LoadSystemLibrary(const wchar_t* name) noexcept;

// Null when the module is null or has no such function.
template <class Function>
Function* FindFunction(HMODULE module, const char* name) noexcept {
    if (!module) return nullptr;
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

}  // namespace velk
