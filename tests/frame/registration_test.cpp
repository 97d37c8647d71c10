#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <set>

#include "platform/handles.h"
#include "support/activation.h"
#include "support/departures.h"
#include "support/fake.h"
#include "support/late_bound.h"
#include "tools/typelib/type_reader.h"
#include "velkdoctor/registrations.h"

namespace velk::test {
namespace {

using Lines = std::set<std::wstring>;

// Every key and value below a key, one line each; those within keys that were there before only when asked for all.
void AddLines(HKEY key, const std::wstring& path, Lines& lines, const Lines& before) {
    static wchar_t name[1 << 14], data[1 << 15];
    for (DWORD i = 0;; ++i) {
        DWORD length = ARRAYSIZE(name), size = sizeof(data);
        if (RegEnumValueW(key, i, name, &length, nullptr, nullptr, reinterpret_cast<BYTE*>(data), &size)) break;
        lines.insert(path + L"|" + name + L"|" + std::wstring(data, size / sizeof(wchar_t)));
    }
    for (DWORD i = 0; RegEnumKeyW(key, i, name, ARRAYSIZE(name)) == ERROR_SUCCESS; ++i) {
        const std::wstring below = path + L"\\" + name;
        lines.insert(below);
        RegistryKey opened;
        const bool isKnown = path.size() > 4 && before.contains(below);
        if (!isKnown && !RegOpenKeyExW(key, name, 0, KEY_READ, opened.Receive()))
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
        Unregister();
        Lines changed;
        std::ranges::set_symmetric_difference(before_, Dump(), std::inserter(changed, changed.end()));
        EXPECT_EQ(Lines(), changed) << "also within what was there before";
    }
    static Lines Made() {
        const Lines now = Dump(before_);
        Lines made;
        std::ranges::set_difference(now, before_, std::inserter(made, made.end()));
        return made;
    }

    static void ExpectClasses(const std::wstring& root) {
        const TypeLib types = LoadTypes(LibraryPath().c_str());
        const Lines made = Made();
        const std::wstring library = GuidText(AttributesOf(types)->guid);
        const auto expect = [&](const std::wstring& key, const std::wstring& value) {
            EXPECT_TRUE(made.contains(key + L"|" + value + L'\0')) << key;
        };
        for (const auto& wanted : {std::pair(L"\\1.1|", std::wstring(L"Velk Support Functions")),
                                   {sizeof(void*) == 4 ? L"\\1.1\\0\\win32|" : L"\\1.1\\0\\win64|", LibraryPath()}}) {
            EXPECT_TRUE(std::ranges::any_of(made, [&](const std::wstring& line) {
                return (line.starts_with(root) || Departs("RegisterTypeLibForUser")) &&
                       line.ends_with(library + wanted.first + L"|" + wanted.second + L'\0');
            })) << wanted.first;
        }
        for (const Type& type : ClassesOf(types)) {
            const std::wstring name = L"VelkSupport." + NameOf(type), guid = GuidText(AttributesOf(type)->guid);
            const std::wstring key = root + L"\\CLSID\\" + guid;
            expect(key + L"|", name);
            expect(key + L"\\InprocServer32|", LibraryPath());
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
};

// What creating it by name answers, and with what it begins to work.
HRESULT CreateByName() {
    CLSID clsid;
    ComPtr<IDispatch> object;
    HRESULT result = CLSIDFromProgID(L"VelkSupport.CCRC32", &clsid);
    if (FAILED(result)) return result;
    result = CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, object.ReceiveVoid());
    const Variant text = Text(L"abc");
    EXPECT_TRUE(!object || Call(object.get(), L"GetCRCFromStringAscii", {text}).value.lVal == 0x352441C2);
    return result;
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
    for (int time = 0; time < 2; ++time) ASSERT_EQ(S_OK, Register());
    ExpectClasses(L"HKLM");
    EXPECT_EQ(S_OK, CreateByName());
    ASSERT_EQ(S_OK, RegisterWhileTheMachineIsClosed());
    EXPECT_EQ(S_OK, Unregister());
    EXPECT_EQ(Lines(), Made());
    const auto active = Activated(BuiltFile(L"VelkSupport.manifest"));
    EXPECT_EQ(S_OK, CreateByName()) << "as a program does that carries the library and its manifest";
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
    EXPECT_EQ(S_OK, Unregister());
}

}  // namespace
}  // namespace velk::test
