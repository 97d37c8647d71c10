#pragma once

#include <cstdint>
#include <cstring>

#include "support/import_patch.h"

namespace velk::test {

// Redirects a function that a module looks up at run time, for as long as the patch lives. The last
// one goes first.
class ProcedurePatch {
  public:
    // A null replacement stands for a platform that lacks the function.
    ProcedurePatch(HMODULE module, const char* function, void* replacement)
        : before_(last_),
          function_(function),
          replacement_(replacement),
          patch_(module, "GetProcAddress", Address(&Find)) {
        last_ = this;
    }
    ProcedurePatch(const ProcedurePatch&) = delete;
    ProcedurePatch& operator=(const ProcedurePatch&) = delete;
    ~ProcedurePatch() { last_ = before_; }

  private:
    using Finder = decltype(&GetProcAddress);

    static void* Address(Finder function) { return reinterpret_cast<void*>(function); }
    static FARPROC WINAPI Find(HMODULE module, LPCSTR name) {
        const bool byName = reinterpret_cast<std::uintptr_t>(name) > 0xFFFF;
        for (const ProcedurePatch* patch = last_; byName && patch; patch = patch->before_) {
            if (std::strcmp(name, patch->function_) == 0) return reinterpret_cast<FARPROC>(patch->replacement_);
        }
        return GetProcAddress(module, name);
    }

    static inline ProcedurePatch* last_ = nullptr;
    ProcedurePatch* before_;
    const char* function_;
    void* replacement_;
    ImportPatch patch_;
};

}  // namespace velk::test
