#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <optional>
#include <set>

#include "frame/handles.h"
#include "support/activation.h"
#include "support/client.h"
#include "support/import_patch.h"
#include "support/late_bound.h"
#include "support/scratch_folder.h"
#include "tools/type_reader.h"

namespace velk::test {
namespace {

using Lines = std::set<std::wstring>;

// Every key and value below a key, one line each.
void AddLines(HKEY key, const std::wstring& path, Lines& lines) {
    lines.insert(path);
    static wchar_t name[1 << 14];
    static BYTE data[1 << 16];
    for (DWORD i = 0;; ++i) {
        DWORD length = ARRAYSIZE(name), size = sizeof(data), type = 0;
        if (RegEnumValueW(key, i, name, &length, nullptr, &type, data, &size)) break;
        lines.insert(path + L"|" + name + L"|" + std::to_wstring(type) + L"|" + std::wstring(data, data + size));
    }
    for (DWORD i = 0; RegEnumKeyW(key, i, name, ARRAYSIZE(name)) == ERROR_SUCCESS; ++i) {
        const std::wstring below = path + L"\\" + name;
        RegistryKey opened;
        if (!RegOpenKeyExW(key, name, 0, KEY_READ, opened.Receive())) AddLines(opened.get(), below, lines);
    }
}

Lines Dump() {
    Lines lines;
    for (const HKEY root : {HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER}) {
        RegistryKey key;
        // Made if it is missing: Windows gives every user this key, Wine does not.
        RegCreateKeyExW(root, L"Software\\Classes", 0, nullptr, 0, KEY_READ, nullptr, key.Receive(), nullptr);
        AddLines(key.get(), root == HKEY_LOCAL_MACHINE ? L"HKLM" : L"HKCU", lines);
    }
    return lines;
}

Lines Difference(const Lines& one, const Lines& other) {
    Lines difference;
    std::set_symmetric_difference(one.begin(), one.end(), other.begin(), other.end(),
                                  std::inserter(difference, difference.end()));
    return difference;
}

std::optional<std::wstring> ValueOf(HKEY root, const std::wstring& key, const wchar_t* name = nullptr) {
    wchar_t value[1024];
    DWORD size = sizeof(value);
    const LSTATUS status =
        RegGetValueW(root, (L"Software\\Classes\\" + key).c_str(), name, RRF_RT_REG_SZ, nullptr, value, &size);
    return status == ERROR_SUCCESS ? std::optional<std::wstring>(value) : std::nullopt;
}

HRESULT Register() { return Export<decltype(&DllRegisterServer)>("DllRegisterServer")(); }
HRESULT Unregister() { return Export<decltype(&DllUnregisterServer)>("DllUnregisterServer")(); }

// Makes the machine's part of the registry read-only for the library, as it is for users without administrative rights.
class MachineIsClosed {
    static LSTATUS WINAPI Open(HKEY root, LPCWSTR path, DWORD options, REGSAM access, PHKEY key) {
        const bool writes = (access & (KEY_WRITE & ~STANDARD_RIGHTS_WRITE)) != 0;
        if (root == HKEY_LOCAL_MACHINE && writes) return ERROR_ACCESS_DENIED;
        return RegOpenKeyExW(root, path, options, access, key);
    }
    static LSTATUS WINAPI Create(HKEY root, LPCWSTR path, DWORD reserved, LPWSTR type, DWORD options, REGSAM access,
                                 const SECURITY_ATTRIBUTES* security, PHKEY key, LPDWORD made) {
        if (root == HKEY_LOCAL_MACHINE) return ERROR_ACCESS_DENIED;
        return RegCreateKeyExW(root, path, reserved, type, options, access, const_cast<SECURITY_ATTRIBUTES*>(security),
                               key, made);
    }
    ImportPatch open_{Library(), "RegOpenKeyExW", reinterpret_cast<void*>(&Open)};
    ImportPatch create_{Library(), "RegCreateKeyExW", reinterpret_cast<void*>(&Create)};
};

class Registration : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        Unregister();  // an earlier run may have left it registered
        before_ = Dump();
    }
    static void TearDownTestSuite() { Unregister(); }
    static void ExpectAsBefore() { EXPECT_EQ(Lines(), Difference(before_, Dump())); }

    void ExpectClasses(HKEY root) const {
        for (const Type& type : TypesOf(types_)) {
            if (AttributesOf(type)->typekind == TKIND_COCLASS)
                ExpectClass(root, NameOf(type), AttributesOf(type)->guid);
        }
    }

    void ExpectClass(HKEY root, const std::wstring& name, REFCLSID clsid) const {
        const std::wstring progId = L"VelkSupport." + name;
        const std::wstring key = L"CLSID\\" + GuidText(clsid);
        EXPECT_EQ(progId, ValueOf(root, key));
        EXPECT_EQ(LibraryPath(), ValueOf(root, key + L"\\InprocServer32"));
        EXPECT_EQ(L"Apartment", ValueOf(root, key + L"\\InprocServer32", L"ThreadingModel"));
        EXPECT_EQ(progId, ValueOf(root, key + L"\\ProgID"));
        EXPECT_EQ(L"", ValueOf(root, key + L"\\Programmable"));
        EXPECT_EQ(GuidText(AttributesOf(types_)->guid), ValueOf(root, key + L"\\TypeLib"));
        EXPECT_EQ(L"1.1", ValueOf(root, key + L"\\VERSION"));
        EXPECT_EQ(progId, ValueOf(root, progId));
        EXPECT_EQ(GuidText(clsid), ValueOf(root, progId + L"\\CLSID"));
    }

    void ExpectTypeLibrary(HKEY root) const {
        const std::wstring library = GuidText(AttributesOf(types_)->guid);
        EXPECT_EQ(L"Velk Support Functions", ValueOf(root, L"TypeLib\\" + library + L"\\1.1"));
        const wchar_t* const width = sizeof(void*) == 4 ? L"\\1.1\\0\\win32" : L"\\1.1\\0\\win64";
        const std::wstring path = ValueOf(root, L"TypeLib\\" + library + width).value_or(L"");
        EXPECT_TRUE(path.ends_with(LibraryPath())) << path;
    }

    static inline Lines before_;
    const TypeLib types_ = LoadTypes(LibraryPath().c_str());
};

void ExpectCreatableByName() {
    CLSID clsid;
    ComPtr<IDispatch> object;
    ASSERT_EQ(S_OK, CLSIDFromProgID(L"VelkSupport.CCRC32", &clsid));
    ASSERT_EQ(S_OK, CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, object.ReceiveVoid()));
    const Variant text = Text(L"");
    EXPECT_EQ(0, Call(object.get(), L"GetCRCFromString", {text}).value.lVal);
}

TEST_F(Registration, WritesWhatIsNeededForTheMachineAndRemovesIt) {
    EXPECT_EQ(S_OK, Unregister()) << "nothing is registered";
    ASSERT_EQ(S_OK, Register());
    ASSERT_EQ(S_OK, Register()) << "a second time";
    ExpectClasses(HKEY_LOCAL_MACHINE);
    ExpectTypeLibrary(HKEY_LOCAL_MACHINE);
    ExpectCreatableByName();
    EXPECT_EQ(S_OK, Unregister());
    ExpectAsBefore();
}

TEST_F(Registration, IsForTheUserWhenTheMachineIsClosed) {
    {
        const MachineIsClosed closed;
        ASSERT_EQ(S_OK, Register());
        ExpectClasses(HKEY_CURRENT_USER);
        // Wine registers type libraries for the machine even when asked to do it for the user.
        ExpectTypeLibrary(HKEY_LOCAL_MACHINE);
        // Wine looks for classes only in the machine's part.
        CLSID clsid;
        EXPECT_EQ(CO_E_CLASSSTRING, CLSIDFromProgID(L"VelkSupport.CCRC32", &clsid));
        EXPECT_EQ(S_OK, Unregister());
    }
    ExpectAsBefore();
}

TEST_F(Registration, ForTheMachineAndTheUserGoesAtOnce) {
    ASSERT_EQ(S_OK, Register());
    {
        const MachineIsClosed closed;
        ASSERT_EQ(S_OK, Register());
    }
    EXPECT_EQ(S_OK, Unregister());
    ExpectAsBefore();
}

int valuesLeft = 0;

LSTATUS WINAPI SetValueUntilFull(HKEY key, LPCWSTR name, DWORD reserved, DWORD type, const BYTE* data, DWORD size) {
    return valuesLeft-- > 0 ? RegSetValueExW(key, name, reserved, type, data, size) : ERROR_REGISTRY_IO_FAILED;
}

HRESULT WINAPI RefuseTypeLibrary(ITypeLib*, OLECHAR*, OLECHAR*) { return TYPE_E_REGISTRYACCESS; }

TEST_F(Registration, ThatFailsHalfWayLeavesNothing) {
    for (const int values : {5, 13}) {  // each class takes nine
        valuesLeft = values;
        const ImportPatch patch(Library(), "RegSetValueExW", reinterpret_cast<void*>(&SetValueUntilFull));
        EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_REGISTRY_IO_FAILED), Register()) << values;
        ExpectAsBefore();
    }
    const ImportPatch patch(Library(), "RegisterTypeLib", reinterpret_cast<void*>(&RefuseTypeLibrary));
    EXPECT_EQ(SELFREG_E_TYPELIB, Register());
    ExpectAsBefore();
}

// Use without registration: a program that carries the library and its manifest.
std::wstring CopyInto(const ScratchFolder& folder, const std::wstring& name) {
    const std::wstring copy = folder.Path(name);
    EXPECT_TRUE(CopyFileW(BuiltFile(name.c_str()).c_str(), copy.c_str(), TRUE)) << name;
    return copy;
}

TEST(Activation, TheManifestReplacesRegistration) {
    Unregister();
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
