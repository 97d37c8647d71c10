#include "support/client.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace velk::test {

std::wstring BuiltFile(const wchar_t* name) {
    wchar_t path[MAX_PATH];
    if (GetEnvironmentVariableW(L"VELK_BUILD", path, MAX_PATH) > 0) return std::wstring(path) + L"\\" + name;
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    return std::filesystem::path(path).parent_path().parent_path().wstring() + L"\\" + name;
}
std::wstring LibraryPath() { return BuiltFile(L"VelkSprt.dll"); }

HMODULE Library() {
    static const HMODULE module = LoadLibraryW(LibraryPath().c_str());
    return module;
}

HRESULT GetClassObject(REFCLSID clsid, REFIID iid, void** object, HMODULE module) {
    return Export<decltype(&DllGetClassObject)>("DllGetClassObject", module)(clsid, iid, object);
}

bool CanUnload(HMODULE module) { return Export<decltype(&DllCanUnloadNow)>("DllCanUnloadNow", module)() == S_OK; }

ComPtr<IUnknown> CreateUnknown(REFCLSID clsid, HMODULE module) {
    ComPtr<IClassFactory> factory;
    ComPtr<IUnknown> object;
    EXPECT_EQ(S_OK, GetClassObject(clsid, IID_IClassFactory, factory.ReceiveVoid(), module));
    EXPECT_TRUE(factory && factory->CreateInstance(nullptr, IID_IUnknown, object.ReceiveVoid()) == S_OK);
    return object;
}

}  // namespace velk::test
