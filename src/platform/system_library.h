#pragma once

#include <atomic>

#include "platform/handles.h"
#include "platform/run_time_error.h"

namespace velk {

struct ModuleTraits : NullIsNone<HMODULE> {
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

// The same, loaded at the first use and kept: its windows and threads may outlive the call that needed it. What could
// not be loaded is tried again at the next.
class KeptSystemLibrary {
  public:
    explicit constexpr KeptSystemLibrary(const wchar_t* name) noexcept : name_(name) {}
    HMODULE get() noexcept {
        HMODULE module = module_;
        if (!module) module_ = module = LoadSystemLibrary(name_);
        return module;
    }

    // A function that the library has on every Windows: Find<decltype(ChooseFontA)>("ChooseFontA").
    template <class Function>
    Function& Find(const char* name) {
        Function* const found = FindFunction<Function>(get(), name);
        return found ? *found : throw RuntimeError(Error::FileNotFound);
    }

  private:
    const wchar_t* name_;
    std::atomic<HMODULE> module_ = nullptr;
};

}  // namespace velk
