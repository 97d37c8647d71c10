#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <set>

#include "platform/handles.h"
#include "support/activation.h"
#include "support/client.h"
#include "support/departures.h"
#include "support/import_patch.h"
#include "support/late_bound.h"
#include "support/scratch_folder.h"
#include "tools/typelib/type_reader.h"
#include "velkdoctor/registrations.h"

namespace velk::test {
namespace {

using Lines = std::set<std::wstring>;

// Every key and value below a key, one line each.
void AddLines(HKEY key, const std::wstring& path, Lines& lines) {
    lines.insert(path);
    static wchar_t name[1 << 14], data[1 << 15];
    for (DWORD i = 0;; ++i) {
        DWORD length = ARRAYSIZE(name), size = sizeof(data);
        if (RegEnumValueW(key, i, name, &length, nullptr, nullptr, reinterpret_cast<BYTE*>(data), &size)) break;
        lines.insert(path + L"|" + name + L"|" + std::wstring(data, size / sizeof(wchar_t)));
    }
    for (DWORD i = 0; RegEnumKeyW(key, i, name, ARRAYSIZE(name)) == ERROR_SUCCESS; ++i) {
        const std::wstring below = path + L"\\" + name;
        RegistryKey opened;
        if (!RegOpenKeyExW(key, name, 0, KEY_READ, opened.Receive())) AddLines(opened.get(), below, lines);
    }
}

Lines Dump() {
    Lines lines;
    for (const auto& [root, name] : {std::pair(HKEY_LOCAL_MACHINE, L"HKLM"), {HKEY_CURRENT_USER, L"HKCU"}}) {
        RegistryKey key;
        // Made if it is missing.
        RegCreateKeyExW(root, L"Software\\Classes", 0, nullptr, 0, KEY_READ, nullptr, key.Receive(), nullptr);
        AddLines(key.get(), name, lines);
    }
    return lines;
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
    static Lines Changed() {
        const Lines now = Dump();
        Lines changed;
        std::ranges::set_symmetric_difference(before_, now, std::inserter(changed, changed.end()));
        return changed;
    }

    void ExpectClasses(const std::wstring& root) const {
        const Lines made = Changed();
        const auto expect = [&](const std::wstring& key, const std::wstring& value, const wchar_t* name = L"") {
            const std::wstring line = root + L"\\" + key + L"|" + name + L"|" + value + L'\0';
            EXPECT_TRUE(made.contains(line)) << line;
        };
        const std::wstring library = GuidText(AttributesOf(types_)->guid);
        for (const Type& type : TypesOf(types_)) {
            if (AttributesOf(type)->typekind != TKIND_COCLASS) continue;
            const std::wstring progId = L"VelkSupport." + NameOf(type), guid = GuidText(AttributesOf(type)->guid);
            const std::wstring key = L"CLSID\\" + guid;
            expect(key, progId);
            expect(key + L"\\InprocServer32", LibraryPath());
            expect(key + L"\\InprocServer32", L"Apartment", L"ThreadingModel");
            expect(key + L"\\ProgID", progId);
            expect(key + L"\\Programmable", L"");
            expect(key + L"\\TypeLib", library);
            expect(key + L"\\VERSION", L"1.1");
            expect(progId, progId);
            expect(progId + L"\\CLSID", guid);
        }
        const std::wstring rootOfTypes = Departs("RegisterTypeLibForUser") ? L"HKLM" : root;
        const auto expectTypes = [&](const std::wstring& key, const std::wstring& value) {
            EXPECT_TRUE(std::ranges::any_of(made, [&](const std::wstring& line) {
                return line.starts_with(rootOfTypes) && line.find(library + key) != line.npos &&
                       line.ends_with(value + L'\0');
            })) << value;
        };
        expectTypes(L"\\1.1||", L"Velk Support Functions");
        expectTypes(sizeof(void*) == 4 ? L"\\1.1\\0\\win32||" : L"\\1.1\\0\\win64||", LibraryPath());
    }

    static inline Lines before_;
    const TypeLib types_ = LoadTypes(LibraryPath().c_str());
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
    {
        const MachineIsClosed closed;
        ASSERT_EQ(S_OK, Register());
        ExpectClasses(L"HKCU");
        const bool isSeen = !IsElevated() && !Departs("CLSIDFromProgID");
        EXPECT_EQ(isSeen ? S_OK : CO_E_CLASSSTRING, CreateByName());
        EXPECT_EQ(S_OK, Unregister());
    }
    EXPECT_EQ(Lines(), Changed());
    for (int time = 0; time < 2; ++time) ASSERT_EQ(S_OK, Register());
    ExpectClasses(L"HKLM");
    EXPECT_EQ(S_OK, CreateByName());
    {
        const MachineIsClosed closed;
        ASSERT_EQ(S_OK, Register());
    }
    EXPECT_EQ(S_OK, Unregister());
    EXPECT_EQ(Lines(), Changed());
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
        EXPECT_EQ(Lines(), Changed());
    }
    const ImportPatch patch(Library(), "RegisterTypeLib", reinterpret_cast<void*>(&RefuseTypeLibrary));
    EXPECT_EQ(SELFREG_E_TYPELIB, Register());
    EXPECT_EQ(Lines(), Changed());
    {
        const ImportPatch mended(Library(), "RegisterTypeLib", reinterpret_cast<void*>(&RegisterTypeLib));
        Register();
    }
    EXPECT_EQ(SELFREG_E_TYPELIB, Register());
    EXPECT_EQ(S_OK, CreateByName()) << "what was registered before stays";
    EXPECT_EQ(S_OK, Unregister());
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
    ASSERT_EQ(CO_E_CLASSSTRING, CreateByName());
    {
        const Activation active(manifest);
        EXPECT_EQ(S_OK, CreateByName());
        EXPECT_NE(nullptr, GetModuleHandleW(library.c_str())) << "another library answered";
    }
    CoFreeUnusedLibrariesEx(0, 0);
    EXPECT_EQ(nullptr, GetModuleHandleW(library.c_str()));
    EXPECT_EQ(CO_E_CLASSSTRING, CreateByName());
}

}  // namespace
}  // namespace velk::test
