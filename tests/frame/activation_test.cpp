// Use without registration: a program that carries the library and its manifest.
#include <gtest/gtest.h>

#include "support/activation.h"
#include "support/client.h"
#include "support/late_bound.h"
#include "support/scratch_folder.h"

namespace velk::test {
namespace {

std::wstring CopyInto(const ScratchFolder& folder, const std::wstring& name) {
    const std::wstring copy = folder.Path(name);
    EXPECT_TRUE(CopyFileW(BuiltFile(name.c_str()).c_str(), copy.c_str(), TRUE)) << name;
    return copy;
}

TEST(Activation, TheManifestReplacesRegistration) {
    Export<decltype(&DllUnregisterServer)>("DllUnregisterServer")();
    const ScratchFolder folder;
    const std::wstring library = CopyInto(folder, L"VelkSprt.dll");
    const std::wstring manifest = CopyInto(folder, L"VelkSupport.manifest");
    CLSID clsid;
    ASSERT_EQ(CO_E_CLASSSTRING, CLSIDFromProgID(L"VelkSupport.CCRC32", &clsid));
    {
        const Activation active(manifest);
        ComPtr<IDispatch> object;
        ASSERT_EQ(S_OK, CLSIDFromProgID(L"VelkSupport.CCRC32", &clsid));
        ASSERT_EQ(S_OK, CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, object.ReceiveVoid()));
        EXPECT_NE(nullptr, GetModuleHandleW(library.c_str())) << "another library answered";
        const Variant text = Text(L"abc");
        EXPECT_EQ(0x352441C2, Call(object.get(), L"GetCRCFromStringAscii", {text}).value.lVal);
    }
    CoFreeUnusedLibrariesEx(0, 0);
    EXPECT_EQ(nullptr, GetModuleHandleW(library.c_str()));
    EXPECT_EQ(CO_E_CLASSSTRING, CLSIDFromProgID(L"VelkSupport.CCRC32", &clsid));
}

}  // namespace
}  // namespace velk::test
