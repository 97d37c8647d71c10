// The hook library as a client's installation has it, without the registry: its class factory is known in this process.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "frame/com_ptr.h"
#include "frame/platform.h"
#include "velksub.h"

namespace velk::test {

class HookLibrary {
  public:
    HookLibrary() {
        ComPtr<IUnknown> factory;
        EXPECT_EQ(S_OK, Entry()(__uuidof(HookManager), IID_IUnknown, factory.ReceiveVoid()));
        EXPECT_EQ(S_OK, CoRegisterClassObject(__uuidof(HookManager), factory.get(), CLSCTX_INPROC_SERVER,
                                              REGCLS_MULTIPLEUSE, &cookie_));
    }
    HookLibrary(const HookLibrary&) = delete;
    HookLibrary& operator=(const HookLibrary&) = delete;
    ~HookLibrary() { CoRevokeClassObject(cookie_); }

  private:
    static LPFNGETCLASSOBJECT Entry() {
        static const HMODULE module = [] {
            std::wstring path = L"Z:" VELKSUB_DLL;
            std::ranges::replace(path, L'/', L'\\');
            return LoadLibraryW(path.c_str());
        }();
        return reinterpret_cast<LPFNGETCLASSOBJECT>(
            reinterpret_cast<void*>(GetProcAddress(module, "DllGetClassObject")));
    }

    DWORD cookie_ = 0;
};

}  // namespace velk::test
