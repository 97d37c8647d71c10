#pragma once

#include <cstdint>
#include <cstring>

#include "support/import_patch.h"

namespace velk::test {

// Redirects a function that a module looks up at run time, for as long as the patch lives. One at a time.
class ProcedurePatch {
  public:
    // A null replacement stands for a platform that lacks the function.
    ProcedurePatch(HMODULE module, const char* function, void* replacement)
        : function_(function), replacement_(replacement), patch_(module, "GetProcAddress", Address(&Find)) {
        current_ = this;
    }
    ~ProcedurePatch() { current_ = nullptr; }

  private:
    using Finder = decltype(&GetProcAddress);

    static void* Address(Finder function) { return reinterpret_cast<void*>(function); }
    static FARPROC WINAPI Find(HMODULE module, LPCSTR name) {
        const bool byName = reinterpret_cast<std::uintptr_t>(name) > 0xFFFF;
        if (byName && std::strcmp(name, current_->function_) == 0) {
            return reinterpret_cast<FARPROC>(current_->replacement_);
        }
        return current_->patch_.Original<Finder>()(module, name);
    }

    static inline ProcedurePatch* current_ = nullptr;
    const char* function_;
    void* replacement_;
    ImportPatch patch_;
};

}  // namespace velk::test
