#pragma once

#include <gtest/gtest.h>

#include "support/client.h"
#include "support/scratch_folder.h"

namespace velk::test {

// A second copy of the library, loaded at its own place or at a path that is given: with nothing done at first use yet,
// and to be unloaded.
class LibraryCopy {
  public:
    explicit LibraryCopy(const std::wstring& path = {}) {
        if (!path.empty()) path_ = path;
        EXPECT_TRUE(CopyFileW(LibraryPath().c_str(), path_.c_str(), TRUE));
        module_ = LoadLibraryW(path_.c_str());
        EXPECT_NE(nullptr, module_);
    }
    ~LibraryCopy() { Unload(); }

    HMODULE module() const noexcept { return module_; }

    ComPtr<IDispatch> Create(REFCLSID clsid) const { return CreateObject<IDispatch>(clsid, module_); }

    // Fails the test when the library says that it is still needed.
    void Unload() {
        if (!module_) return;
        EXPECT_TRUE(CanUnload(module_));
        EXPECT_TRUE(FreeLibrary(module_));
        EXPECT_EQ(nullptr, GetModuleHandleW(path_.c_str()));
        EXPECT_TRUE(DeleteFileW(path_.c_str()));
        module_ = nullptr;
    }

  private:
    ScratchFolder folder_;
    std::wstring path_ = folder_.Path(L"VelkSprt.dll");
    HMODULE module_ = nullptr;
};

}  // namespace velk::test
