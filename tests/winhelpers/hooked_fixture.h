// What the tests of the classes that hook windows share.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "support/import_patch.h"
#include "support/late_bound.h"
#include "support/test_hook.h"
#include "support/test_window.h"

namespace velk::test {

inline void ExpectRaised(const Outcome& outcome, std::pair<HRESULT, const wchar_t*> error, const wchar_t* source) {
    EXPECT_EQ(DISP_E_EXCEPTION, outcome.result);
    EXPECT_EQ(error.first, outcome.code);
    EXPECT_EQ(error.second, outcome.description);
    EXPECT_EQ(source, outcome.source);
}

// The hook library, neither registered nor in a manifest, and what the library says to a debugger.
class NoHookLibrary {
  public:
    NoHookLibrary() : patch_(Library(), "OutputDebugStringW", reinterpret_cast<void*>(&Say)) {
        HookLibrary::Unregister();
        said_.clear();
    }
    const std::wstring& said() const { return said_; }

  private:
    static void WINAPI Say(LPCWSTR text) { said_ += text; }

    static inline std::wstring said_;
    ImportPatch patch_;
};

}  // namespace velk::test
