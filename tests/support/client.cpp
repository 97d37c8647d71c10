#include "support/client.h"

#include <gtest/gtest.h>

#include <string>

namespace velk::test {

std::wstring LibraryPath() {
    std::wstring path = L"Z:" VELKSPRT_DLL;
    for (wchar_t& c : path) {
        if (c == L'/') c = L'\\';
    }
    return path;
}

std::wstring BuiltFile(const wchar_t* name) {
    const std::wstring library = LibraryPath();
    return library.substr(0, library.rfind(L'\\') + 1) + name;
}

HMODULE Library() {
    static const HMODULE module = LoadLibraryW(LibraryPath().c_str());
    return module;
}

HRESULT GetClassObject(REFCLSID clsid, REFIID iid, void** object) {
    return Export<decltype(&DllGetClassObject)>("DllGetClassObject")(clsid, iid, object);
}

bool CanUnload() { return Export<decltype(&DllCanUnloadNow)>("DllCanUnloadNow")() == S_OK; }

ComPtr<IUnknown> CreateUnknown(REFCLSID clsid) {
    ComPtr<IClassFactory> factory;
    ComPtr<IUnknown> object;
    EXPECT_EQ(S_OK, GetClassObject(clsid, IID_IClassFactory, factory.ReceiveVoid()));
    if (factory) {
        EXPECT_EQ(S_OK, factory->CreateInstance(nullptr, IID_IUnknown, object.ReceiveVoid()));
    }
    return object;
}

}  // namespace velk::test
