#include "support/client.h"

#include <gtest/gtest.h>
#include <process.h>

#include <filesystem>
#include <string>

namespace velk::test {

std::wstring OwnProgram() {
    wchar_t path[MAX_PATH];
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    return path;
}

intptr_t RunAlone(const std::wstring& test) {
    const std::wstring filter = L"--gtest_filter=" + test;
    return _wspawnl(_P_WAIT, OwnProgram().c_str(), L"tests", L"--gtest_also_run_disabled_tests", filter.c_str(),
                    nullptr);
}

std::wstring BuiltFile(const wchar_t* name) {
    const wchar_t* const build = _wgetenv(L"VELK_BUILD");
    const std::filesystem::path folder = std::filesystem::path(OwnProgram()).parent_path().parent_path();
    return (build ? build : folder.wstring()) + L"\\" + name;
}
std::wstring LibraryPath() { return BuiltFile(L"VelkSprt.dll"); }

HMODULE Library() {
    static const HMODULE module = LoadLibraryW(LibraryPath().c_str());
    return module;
}

std::shared_ptr<void> Activated(const std::wstring& manifest) {
    ACTCTXW request{};
    request.cbSize = sizeof(request);
    request.lpSource = manifest.c_str();
    ULONG_PTR cookie = 0;
    const HANDLE context = CreateActCtxW(&request);
    EXPECT_TRUE(ActivateActCtx(context, &cookie)) << GetLastError();
    return {context, [cookie](HANDLE made) { DeactivateActCtx(0, cookie), ReleaseActCtx(made); }};
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
