// The library in the platform's surrogate process, on this machine.
#include "tools/velkdoctor/surrogate.h"

#include "deploy/doctor.h"
#include "frame/handles.h"
#include "support/late_bound.h"
#include "tools/type_reader.h"

namespace velk::test {
namespace {

class Surrogate : public Deployed {
  protected:
    void SetUp() override {
        if (sizeof(void*) == 8) GTEST_SKIP() << "Wine starts the 32-bit surrogate only";
        Deployed::SetUp();
        // The surrogate process inherits this, so that no report can wait there for a click.
        SetEnvironmentVariableW(L"VELKSPRT_REPORTS", L"debugger");
    }
    static HRESULT Create(REFCLSID clsid, ComPtr<IDispatch>& object) {
        return CoCreateInstance(clsid, nullptr, CLSCTX_LOCAL_SERVER, IID_IDispatch, object.ReceiveVoid());
    }
    // A surrogate that runs goes on serving until it has seen that it has no object left.
    static bool NoLongerServed(REFCLSID clsid) {
        for (const ULONGLONG start = GetTickCount64(); GetTickCount64() - start < 20000; Sleep(50)) {
            ComPtr<IDispatch> object;
            if (FAILED(Create(clsid, object))) return true;
        }
        return false;
    }
};

TEST_F(Surrogate, IsOffByDefaultServesWhenOnAndGoesWithoutATrace) {
    EXPECT_EQ(2, RunDoctor(L"--surrogate on").code) << "nothing is registered";
    ASSERT_EQ(S_OK, Register());
    ComPtr<IDispatch> object;
    EXPECT_TRUE(FAILED(Create(__uuidof(CStack), object)));

    EXPECT_EQ(0, RunDoctor(L"--surrogate on").code);
    ASSERT_EQ(S_OK, Register()) << "registering again keeps the setting";
    ASSERT_EQ(S_OK, Create(__uuidof(CStack), object));
    EXPECT_TRUE(object.As<IClientSecurity>(IID_IClientSecurity)) << "no object of another process";
    object = nullptr;

    EXPECT_EQ(0, RunDoctor(L"--surrogate off").code);
    EXPECT_TRUE(NoLongerServed(__uuidof(CStack)));
    const std::wstring key =
        L"Software\\Classes\\AppID\\" + GuidText(AttributesOf(LoadTypes(LibraryPath().c_str()))->guid);
    RegistryKey left;
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, RegOpenKeyExW(HKEY_LOCAL_MACHINE, key.c_str(), 0, KEY_READ, left.Receive()));

    EXPECT_EQ(0, RunDoctor(L"--surrogate on").code);
    EXPECT_EQ(S_OK, Unregister());
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, RegOpenKeyExW(HKEY_LOCAL_MACHINE, key.c_str(), 0, KEY_READ, left.Receive()));
}

TEST_F(Surrogate, CarriesValuesAndErrorsBothWays) {
    ASSERT_EQ(S_OK, Register());
    ASSERT_EQ(0, RunDoctor(L"--surrogate on").code);
    ComPtr<IDispatch> object;
    ASSERT_EQ(S_OK, Create(__uuidof(CCRC32), object));
    const Variant text = Text(L"abc");
    EXPECT_EQ(0x352441C2, Call(object.get(), L"GetCRCFromStringAscii", {text}).value.lVal) << "late bound";
    const auto early = object.As<_CCRC32>();
    ASSERT_TRUE(early);
    Bstr input(L"abc");
    BSTR given = input.get();
    LONG checksum = 0;
    EXPECT_EQ(S_OK, early->GetCRCFromStringAscii(&given, &checksum));
    EXPECT_EQ(0x352441C2, checksum);

    ASSERT_EQ(S_OK, Create(__uuidof(CDatFile), object));
    const Variant name = Text(L"C:\\no such file.dat");
    const auto inside = CreateObject<IDispatch>(__uuidof(CDatFile));
    const HRESULT code = Call(inside.get(), L"Initialize", {name}).code;
    EXPECT_TRUE(FAILED(code));
    EXPECT_EQ(code, Call(object.get(), L"Initialize", {name}).code);
}

bool SpeaksOfHandles(const Type& type) {
    const Type members = OwnMembers(type);
    for (UINT i = 0; i < AttributesOf(members)->cFuncs; ++i) {
        const auto function = FunctionOf(members, i);
        BSTR names[32] = {};
        UINT count = 0;
        ThrowIfFailed(members->GetNames(function->memid, names, ARRAYSIZE(names), &count));
        std::wstring all;
        for (UINT n = 0; n < count; ++n) {
            all += std::wstring(L" ") + names[n];
            SysFreeString(names[n]);
        }
        for (wchar_t& c : all) c = static_cast<wchar_t>(towlower(c));
        for (const wchar_t* word : {L"hwnd", L"hdc", L"handle"}) {
            if (all.find(word) != std::wstring::npos) return true;
        }
    }
    return false;
}

TEST(SurrogateChoice, LeavesOutEveryClassThatTakesOrGivesHandles) {
    for (const Type& type : TypesOf(LoadTypes(LibraryPath().c_str()))) {
        if (AttributesOf(type)->typekind != TKIND_COCLASS || !SpeaksOfHandles(Implemented(type, 0))) continue;
        EXPECT_FALSE(MakesSenseOutside(NameOf(type))) << NameOf(type);
    }
}

}  // namespace
}  // namespace velk::test
