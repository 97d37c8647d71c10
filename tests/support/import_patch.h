#pragma once

#include "platform/platform.h"

namespace velk::test {

template <class Function>
void* Address(Function* function) {
    return reinterpret_cast<void*>(function);
}

// Exchanges what stands in a read-only place.
void* WriteInto(void** slot, void* value);

// Redirects one function that a module imports, or looks up by its name, for as long as the patch lives. Null stands
// for a platform that lacks a function that is looked up.
class ImportPatch {
  public:
    // Fails the test when the main library neither imports the function nor names it, to bind it at its first use.
    ImportPatch(HMODULE module, const char* function, void* replacement);
    ImportPatch(const ImportPatch&) = delete;
    ImportPatch& operator=(const ImportPatch&) = delete;
    ~ImportPatch();

  private:
    void** slot_ = nullptr;
    void* original_ = nullptr;
};

}  // namespace velk::test
