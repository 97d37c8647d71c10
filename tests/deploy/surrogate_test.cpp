// The library in the platform's surrogate process, on this machine.
#include "velkdoctor/surrogate.h"

#include "deploy/doctor.h"
#include "platform/handles.h"
#include "support/departures.h"
#include "support/event_sink.h"
#include "support/late_bound.h"
#include "tools/typelib/type_reader.h"

namespace velk::test {
namespace {

class Surrogate : public Deployed {
  protected:
    void SetUp() override {
        if (sizeof(void*) == 8 && Departs("DllSurrogate")) GTEST_SKIP() << "there is a 32-bit surrogate only";
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

TEST_F(Surrogate, CarriesValuesEventsAndFailures) {
    ASSERT_EQ(S_OK, Register());
    ASSERT_EQ(0, RunDoctor(L"--surrogate on").code);
    ComPtr<IDispatch> object;
    ASSERT_EQ(S_OK, Create(__uuidof(CCRC32), object));
    const auto sink = EventSink::Make();
    Connection connection(object.get(), __uuidof(__CCRC32), sink.get());
    ASSERT_EQ(S_OK, connection.result());
    const Variant text = Text(L"abc");
    EXPECT_EQ(0x352441C2, Call(object.get(), L"GetCRCFromStringAscii", {text}).value.lVal) << "late bound";
    const std::size_t raised = sink->events.size();
    EXPECT_LT(0u, raised);
    EXPECT_EQ(1.0, sink->events.back().value) << "the whole of it";
    const auto early = object.As<_CCRC32>();
    ASSERT_TRUE(early);
    Bstr input(L"abc");
    BSTR given = input.get();
    LONG checksum = 0;
    EXPECT_EQ(S_OK, early->GetCRCFromStringAscii(&given, &checksum));
    EXPECT_EQ(0x352441C2, checksum);
    EXPECT_EQ(2 * raised, sink->events.size());
    connection.Disconnect();

    const Variant name = Text(L"C:\\no such file.dat");
    const auto inside = CreateObject<IDispatch>(__uuidof(CDatFile));
    ASSERT_EQ(S_OK, Create(__uuidof(CDatFile), object));
    const Outcome here = Call(inside.get(), L"Initialize", {name}), there = Call(object.get(), L"Initialize", {name});
    EXPECT_TRUE(FAILED(here.code));
    EXPECT_EQ(here.code, there.code);
    EXPECT_EQ(here.source + L": " + here.description, there.source + L": " + there.description);

    BSTR file = name.bstrVal;
    VARIANT_BOOL shown = VARIANT_FALSE;
    EXPECT_EQ(here.code, object.As<_CDatFile>()->Initialize(&file, &shown));
    ComPtr<IErrorInfo> words;
    EXPECT_EQ(Departs("GetErrorInfo") ? S_FALSE : S_OK, GetErrorInfo(0, words.Receive()));
}

bool SpeaksOfHandles(const Type& type) {
    const Type members = OwnMembers(type);
    bool found = false;
    for (UINT i = 0; i < AttributesOf(members)->cFuncs; ++i) {
        BSTR names[32] = {};
        UINT count = 0;
        ThrowIfFailed(members->GetNames(FunctionOf(members, i)->memid, names, ARRAYSIZE(names), &count));
        for (UINT n = 0; n < count; ++n) {
            CharLowerW(names[n]);
            for (const wchar_t* word : {L"hwnd", L"hdc", L"handle"}) found |= wcsstr(names[n], word) != nullptr;
            SysFreeString(names[n]);
        }
    }
    return found;
}

TEST(SurrogateChoice, LeavesOutEveryClassThatTakesOrGivesHandles) {
    for (const Type& type : TypesOf(LoadTypes(LibraryPath().c_str()))) {
        if (AttributesOf(type)->typekind != TKIND_COCLASS || !SpeaksOfHandles(Implemented(type, 0))) continue;
        EXPECT_FALSE(MakesSenseOutside(NameOf(type))) << NameOf(type);
    }
}

}  // namespace
}  // namespace velk::test
