// The library as the registry leads to it: what it writes there and takes back, and its objects in another apartment or
// process, used through the platform's proxies.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <set>
#include <thread>

#include "platform/handles.h"
#include "support/client.h"
#include "support/departures.h"
#include "support/fake.h"
#include "support/late_bound.h"
#include "support/test_window.h"
#include "support/value_object.h"
#include "tools/typelib/type_reader.h"
#include "velkdoctor/registrations.h"
#include "velkdoctor/surrogate.h"

namespace velk::test {
namespace {

using Lines = std::set<std::wstring>;

// Every key and value below a key, one line each, but for those that were there before; nor is looked into such a key.
void AddLines(HKEY key, const std::wstring& path, Lines& lines, const Lines& before) {
    static wchar_t name[1 << 14], data[1 << 15];
    const auto add = [&](const std::wstring& line) { return !before.contains(line) && lines.insert(line).second; };
    for (DWORD i = 0;; ++i) {
        DWORD length = ARRAYSIZE(name), size = sizeof(data);
        if (RegEnumValueW(key, i, name, &length, nullptr, nullptr, reinterpret_cast<BYTE*>(data), &size)) break;
        add(path + L"|" + name + L"|" + std::wstring(data, size / sizeof(wchar_t)));
    }
    for (DWORD i = 0; RegEnumKeyW(key, i, name, ARRAYSIZE(name)) == ERROR_SUCCESS; ++i) {
        const std::wstring below = path + L"\\" + name;
        RegistryKey opened;
        const bool isSearched = add(below) || path.size() == 4;
        if (isSearched && !RegOpenKeyExW(key, name, 0, KEY_READ, opened.Receive()))
            AddLines(opened.get(), below, lines, before);
    }
}

Lines Dump(const Lines& before = {}) {
    Lines lines;
    for (const auto& [root, name] : {std::pair(HKEY_LOCAL_MACHINE, L"HKLM"), {HKEY_CURRENT_USER, L"HKCU"}}) {
        RegistryKey key;  // made if it is missing
        RegCreateKeyExW(root, L"Software\\Classes", 0, nullptr, 0, KEY_READ, nullptr, key.Receive(), nullptr);
        AddLines(key.get(), name, lines, before);
    }
    return lines;
}

HRESULT Register() { return Export<decltype(&DllRegisterServer)>("DllRegisterServer")(); }
HRESULT Unregister() { return Export<decltype(&DllUnregisterServer)>("DllUnregisterServer")(); }

// As it is for users without administrative rights, who may only read the machine's part of the registry.
HRESULT RegisterWhileTheMachineIsClosed() {
    const Fake open("RegOpenKeyExW", &RegOpenKeyExW, [](HKEY root, auto path, auto options, REGSAM access, PHKEY key) {
        const bool closed = root == HKEY_LOCAL_MACHINE && (access & (KEY_WRITE & ~STANDARD_RIGHTS_WRITE)) != 0;
        return closed ? ERROR_ACCESS_DENIED : RegOpenKeyExW(root, path, options, access, key);
    });
    return Register();
}

class Registration : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        Unregister();  // an earlier run may have left it registered
        before_ = Dump();
    }
    static void TearDownTestSuite() {
        Lines changed;
        std::ranges::set_symmetric_difference(before_, Dump(), std::inserter(changed, changed.end()));
        EXPECT_EQ(Lines(), changed) << "also within what was there before";
    }
    ~Registration() override {
        Unregister();
        EXPECT_EQ(Lines(), Made());
    }
    static Lines Made() { return Dump(before_); }

    void ExpectClasses(const std::wstring& root) const {
        const Lines made = Made();
        const std::wstring library = GuidText(AttributesOf(types_)->guid);
        const auto expect = [&](const std::wstring& key, const std::wstring& value) {
            const auto is = [&, end = L"|" + value + L'\0'](const std::wstring& line) {
                const bool isKey = _wcsnicmp(line.c_str(), key.c_str(), key.size()) == 0;  // in the platform's own case
                return isKey && line.size() == key.size() + end.size() && line.ends_with(end);
            };
            EXPECT_TRUE(std::ranges::any_of(made, is)) << key << L": " << value;
        };
        const std::wstring path = LibraryPath(), width = sizeof(void*) == 4 ? L"win32" : L"win64";
        const std::wstring types =
            (Departs("RegisterTypeLibForUser") ? L"HKLM" : root) + L"\\TypeLib\\" + library + L"\\1.1";
        expect(types + L"|", L"Velk Support Functions");
        expect(types + L"\\HELPDIR|", path.substr(0, path.rfind(L'\\')));
        expect(types + L"\\0\\" + width + L"|", path);
        for (const Type& type : ClassesOf(types_)) {
            const std::wstring name = L"VelkSupport." + NameOf(type), guid = GuidText(AttributesOf(type)->guid);
            const std::wstring key = root + L"\\CLSID\\" + guid;
            expect(key + L"|", name);
            expect(key + L"\\InprocServer32|", path);
            expect(key + L"\\InprocServer32|ThreadingModel", L"Apartment");
            expect(key + L"\\ProgID|", name);
            expect(key + L"\\Programmable|", L"");
            expect(key + L"\\TypeLib|", library);
            expect(key + L"\\VERSION|", L"1.1");
            expect(root + L"\\" + name + L"|", name);
            expect(root + L"\\" + name + L"\\CLSID|", guid);
        }
    }

    static inline Lines before_;
    const TypeLib types_ = LoadTypes(LibraryPath().c_str());
};

// What creating it by name answers; below, objects work elsewhere.
HRESULT CreateByName() {
    CLSID clsid;
    ComPtr<IDispatch> object;
    const HRESULT found = CLSIDFromProgID(L"VelkSupport.CCRC32", &clsid);
    if (FAILED(found)) return found;
    return CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, object.ReceiveVoid());
}

TEST_F(Registration, WritesWhatIsNeededForTheMachineOrElseTheUserAndRemovesBoth) {
    EXPECT_EQ(S_OK, Unregister()) << "nothing is registered";
    EXPECT_EQ(CO_E_CLASSSTRING, CreateByName());
    ASSERT_EQ(S_OK, RegisterWhileTheMachineIsClosed());
    ExpectClasses(L"HKCU");
    const bool isSeen = !IsElevated() && !Departs("CLSIDFromProgID");
    EXPECT_EQ(isSeen ? S_OK : CO_E_CLASSSTRING, CreateByName());
    EXPECT_EQ(S_OK, Unregister());
    EXPECT_EQ(Lines(), Made());
    for (int time = 0; time < 2; ++time) {  // as if it had been in another folder
        const std::wstring types = kClassesKey + (L"TypeLib\\" + GuidText(AttributesOf(types_)->guid));
        WriteText(HKEY_LOCAL_MACHINE, types + L"\\1.1\\HELPDIR", nullptr, L"C:\\another folder");
        ASSERT_EQ(S_OK, Register());
    }
    ExpectClasses(L"HKLM");
    EXPECT_EQ(S_OK, CreateByName());
    ASSERT_EQ(S_OK, RegisterWhileTheMachineIsClosed());
    EXPECT_EQ(S_OK, Unregister());
}

TEST_F(Registration, ThatFailsHalfWayLeavesNothing) {
    for (int left : {5, 13}) {  // each class takes nine
        const Fake set("RegSetValueExW", &RegSetValueExW,
                       [&](auto... rest) { return left-- > 0 ? RegSetValueExW(rest...) : ERROR_REGISTRY_IO_FAILED; });
        EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_REGISTRY_IO_FAILED), Register());
        EXPECT_EQ(Lines(), Made());
    }
    for (const bool before : {false, true}) {
        EXPECT_EQ(S_OK, before ? Register() : S_OK);
        const Fake types("RegisterTypeLib", &RegisterTypeLib, [](auto...) { return TYPE_E_REGISTRYACCESS; });
        EXPECT_EQ(SELFREG_E_TYPELIB, Register());
        EXPECT_EQ(before ? S_OK : CO_E_CLASSSTRING, CreateByName()) << "what was registered before stays";
        EXPECT_EQ(before, !Made().empty());
    }
}

// ---- Other apartments and processes ----

// A thread without an apartment of its own gets objects of an apartment that the platform makes for them; another
// process is the platform's surrogate.
class Elsewhere : public Registration, public testing::WithParamInterface<CLSCTX> {
  protected:
    void SetUp() override {
        if (IsProcess() && sizeof(void*) == 8 && Departs("DllSurrogate")) GTEST_SKIP() << "there is a 32-bit one only";
        KnownLibrary library{};
        library.guid = AttributesOf(types_)->guid;
        for (const Type& type : ClassesOf(types_))
            library.classes.push_back({NameOf(type), {}, AttributesOf(type)->guid, {}});
        EXPECT_EQ(S_OK, Register());
        // One that an earlier test used may be about to end.
        EXPECT_TRUE(!IsProcess() || WaitUntil([] { return !Create(__uuidof(CDatFile)); })) << "off by default";
        const Lines registered = Made();
        for (const bool on : {true, false, true}) {
            EXPECT_EQ(0, SwitchSurrogate(library, on).status);
            EXPECT_EQ(on, Made() != registered);
        }
        EXPECT_EQ(S_OK, Register()) << "again, which keeps the setting";
    }

    static bool IsProcess() { return GetParam() == CLSCTX_LOCAL_SERVER; }
    static ComPtr<IDispatch> Create(REFCLSID clsid) {
        ComPtr<IDispatch> object;
        CoCreateInstance(clsid, nullptr, GetParam(), IID_IDispatch, object.ReceiveVoid());
        return object;
    }
    static void Run(const std::function<void()>& body) {
        if (IsProcess()) return body();
        std::thread([&] {
            EXPECT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_MULTITHREADED));
            body();
            CoUninitialize();
        }).join();
    }
};

INSTANTIATE_TEST_SUITE_P(Both, Elsewhere, testing::Values(CLSCTX_INPROC_SERVER, CLSCTX_LOCAL_SERVER),
                         [](const auto& given) { return given.param == CLSCTX_LOCAL_SERVER ? "Process" : "Thread"; });

// A result, a failure that raises, one that is told in a component's failure; and one early bound.
TEST_P(Elsewhere, MembersAnswerAsTheyDoWithoutAProxy) {
    const struct {
        CLSID clsid;
        std::vector<std::pair<const wchar_t*, const wchar_t*>> calls;  // members, and an argument
    } cases[] = {
        {__uuidof(CLinkedList), {{L"Add", L"a"}, {L"Add", L""}, {L"Count", nullptr}, {L"Item", L"1"}, {L"Item", L"9"}}},
        {__uuidof(CDatFile), {{L"Initialize", L"C:\\none.dat"}, {L"GetHumanReadable", nullptr}}},
        {__uuidof(CStack), {{L"Push", nullptr}, {L"Push", L"a"}, {L"Pop", nullptr}, {L"Pop", L"too many"}}}};
    Run([&] {
        for (const auto& one : cases) {
            const auto here = CreateObject<IDispatch>(one.clsid), there = Create(one.clsid);
            ASSERT_TRUE(there.As<IClientSecurity>()) << "no proxy";
            for (const auto& [member, argument] : one.calls) {
                Variant given = Text(argument ? argument : L"");
                const auto call = [&given, member = member, argument = argument](IDispatch* object) {
                    return argument ? Call(object, member, {Arg(&given)}) : Call(object, member);
                };
                Outcome direct = call(here.get()), remote = call(there.get());
                EXPECT_EQ(VARCMP_EQ, VarCmp(&direct.value, &remote.value, 0, 0));
                EXPECT_EQ(std::tuple(direct.result, direct.code, direct.source, direct.description),
                          std::tuple(remote.result, remote.code, remote.source, remote.description))
                    << member;
            }
        }
        const Bstr name(L"C:\\no such file.dat");
        BSTR file = name.get();
        VARIANT_BOOL shown = VARIANT_FALSE;
        ComPtr<IErrorInfo> words;
        const auto dat = Create(__uuidof(CDatFile)).As<_CDatFile>();
        ASSERT_TRUE(dat);
        EXPECT_EQ(static_cast<HRESULT>(0x80042714), dat->Initialize(&file, &shown));
        EXPECT_EQ(Departs("GetErrorInfo") ? S_FALSE : S_OK, GetErrorInfo(0, words.Receive()));
    });
}

APTTYPE Apartment() {
    APTTYPE type{};
    APTTYPEQUALIFIER qualifier{};
    EXPECT_EQ(S_OK, CoGetApartmentType(&type, &qualifier));
    return type;
}

// With a sink that calls the source from inside the event, and fails.
TEST_P(Elsewhere, EventsArriveInTheSinksApartment) {
    Run([&] {
        const auto sink = ValueObject::Make(Missing());
        std::vector<float> progress;
        {
            const auto crc = Create(__uuidof(CCRC32));
            const Variant digits = Text(L"123456789");
            const auto sum = [&] { return Call(crc.get(), L"GetCRCFromStringAscii", {digits}).value.lVal; };
            const auto connection = Connected(crc.get(), __uuidof(__CCRC32), sink.get());
            ASSERT_TRUE(connection);
            const APTTYPE own = Apartment();
            sink->onRead = [&, inside = false](DISPPARAMS* given) mutable {
                progress.push_back(*given->rgvarg->pfltVal);
                EXPECT_EQ(own, Apartment());
                if (!std::exchange(inside, true)) {
                    EXPECT_EQ(-873187034, sum());
                }
            };
            EXPECT_EQ(-873187034, sum());
            ASSERT_EQ(20u, progress.size());
            EXPECT_EQ(0.0, progress.front());
            EXPECT_EQ(1.0, progress.back());
        }
        EXPECT_TRUE(WaitUntil([&] { return PumpMessages(), sink->count() == 1; }));
    });
}

#ifndef NDEBUG
// Only a debug build looks.
TEST(Apartments, AnObjectIsNotUsedOnAnotherThreadWithoutAProxy) {
    const auto list = CreateObject<IDispatch>(__uuidof(CLinkedList));
    HRESULT code = S_OK;
    std::thread([&] { code = Call(list.get(), L"Count").code; }).join();
    EXPECT_EQ(RPC_E_WRONG_THREAD, code);
    EXPECT_EQ(S_OK, Get(list.get(), L"Count").result);
}
#endif

}  // namespace
}  // namespace velk::test
