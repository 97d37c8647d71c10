// The built libraries as files, and what their type libraries promise.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <set>

#include "support/client.h"
#include "tools/typelib/type_reader.h"

namespace velk::test {
namespace {

class LibraryFile : public testing::TestWithParam<const wchar_t*> {
  protected:
    ~LibraryFile() override { FreeLibrary(module_); }

    template <class T>
    const T* At(DWORD address) const {
        return reinterpret_cast<const T*>(reinterpret_cast<const std::byte*>(module_) + address);
    }
    const IMAGE_DATA_DIRECTORY& Directory(int which) const { return headers_->OptionalHeader.DataDirectory[which]; }

    const std::wstring path_ = BuiltFile(GetParam());
    const HMODULE module_ = LoadLibraryW(path_.c_str());
    const IMAGE_NT_HEADERS* const headers_ =
        At<IMAGE_NT_HEADERS>(static_cast<DWORD>(At<IMAGE_DOS_HEADER>(0)->e_lfanew));
    const IMAGE_EXPORT_DIRECTORY* const exports_ =
        At<IMAGE_EXPORT_DIRECTORY>(Directory(IMAGE_DIRECTORY_ENTRY_EXPORT).VirtualAddress);
};

INSTANTIATE_TEST_SUITE_P(Both, LibraryFile, testing::Values(L"VelkSprt.dll", L"VelkSub.dll"));

TEST_P(LibraryFile, IsARelocatableHardenedLibraryWithoutTimeStamps) {
    const IMAGE_FILE_HEADER& file = headers_->FileHeader;
    EXPECT_EQ(sizeof(void*) == 4 ? IMAGE_FILE_MACHINE_I386 : IMAGE_FILE_MACHINE_AMD64, file.Machine);
    EXPECT_TRUE(file.Characteristics & IMAGE_FILE_DLL);
    EXPECT_FALSE(file.Characteristics & IMAGE_FILE_RELOCS_STRIPPED);
    EXPECT_GT(Directory(IMAGE_DIRECTORY_ENTRY_BASERELOC).Size, 0u);
    EXPECT_TRUE(headers_->OptionalHeader.DllCharacteristics & IMAGE_DLLCHARACTERISTICS_DYNAMIC_BASE);
    EXPECT_TRUE(headers_->OptionalHeader.DllCharacteristics & IMAGE_DLLCHARACTERISTICS_NX_COMPAT);
    EXPECT_EQ(0u, file.TimeDateStamp);
    EXPECT_EQ(0u, exports_->TimeDateStamp);
    EXPECT_EQ(0u, Directory(IMAGE_DIRECTORY_ENTRY_DEBUG).Size);
}

TEST_P(LibraryFile, ExportsTheFourEntryPointsUndecorated) {
    std::set<std::string> names;
    for (DWORD i = 0; i < exports_->NumberOfNames; ++i) {
        names.insert(At<char>(At<DWORD>(exports_->AddressOfNames)[i]));
    }
    const std::set<std::string> expected{"DllCanUnloadNow", "DllGetClassObject", "DllRegisterServer",
                                         "DllUnregisterServer"};
    EXPECT_EQ(expected, names);
    EXPECT_EQ(4u, exports_->NumberOfFunctions);
}

TEST_P(LibraryFile, ImportsOnlySystemLibraries) {
    const std::set<std::string> system{"kernel32.dll", "user32.dll",   "gdi32.dll",    "advapi32.dll", "ole32.dll",
                                       "oleaut32.dll", "shell32.dll",  "comdlg32.dll", "winmm.dll",    "wininet.dll",
                                       "comctl32.dll", "winspool.drv", "version.dll",  "msvcrt.dll"};
    const auto* library = At<IMAGE_IMPORT_DESCRIPTOR>(Directory(IMAGE_DIRECTORY_ENTRY_IMPORT).VirtualAddress);
    for (; library->Name; ++library) {
        std::string name = At<char>(library->Name);
        std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return std::tolower(c); });
        EXPECT_EQ(1u, system.count(name)) << name;
    }
}

TEST(MainLibraryFile, StatesItsVersion) {
    std::vector<std::byte> resource(GetFileVersionInfoSizeW(LibraryPath().c_str(), nullptr));
    ASSERT_TRUE(GetFileVersionInfoW(LibraryPath().c_str(), 0, static_cast<DWORD>(resource.size()), resource.data()));
    void* value = nullptr;
    UINT size = 0;
    ASSERT_TRUE(VerQueryValueW(resource.data(), L"\\", &value, &size));
    const auto* fixed = static_cast<VS_FIXEDFILEINFO*>(value);
    EXPECT_EQ(MAKELONG(1, 1), fixed->dwFileVersionMS);
    EXPECT_EQ(MAKELONG(1, 0), fixed->dwFileVersionLS);
    ASSERT_TRUE(VerQueryValueW(resource.data(), L"\\StringFileInfo\\040904B0\\FileDescription", &value, &size));
    EXPECT_STREQ(L"Velk Support Functions", static_cast<wchar_t*>(value));
}

// The constants of enumerations are left out: the type-library compiler gives them none.
TEST_P(LibraryFile, HasAHelpTextForEveryTypeAndMember) {
    for (const Type& type : TypesOf(LoadTypes(path_.c_str()))) {
        const Documentation about = DocumentationOf(type, MEMBERID_NIL);
        EXPECT_FALSE(about.help.empty()) << about.name;
        const Type own = OwnMembers(type);
        for (UINT i = 0; i < AttributesOf(own)->cFuncs; ++i) {
            const Documentation member = DocumentationOf(own, FunctionOf(own, i)->memid);
            EXPECT_FALSE(member.help.empty()) << about.name << L"." << member.name;
        }
    }
}

void ExpectNamesCoclass(const ComPtr<IUnknown>& object, const Type& coclass) {
    const auto provider = object.As<IProvideClassInfo2>();
    ASSERT_TRUE(provider);
    Type named;
    ASSERT_EQ(S_OK, provider->GetClassInfo(named.Receive()));
    EXPECT_EQ(AttributesOf(coclass)->guid, AttributesOf(named)->guid);
    for (UINT i = 0; i < AttributesOf(named)->cImplTypes; ++i) {
        const GUID iid = AttributesOf(Implemented(named, i))->guid;
        INT flags = 0;
        named->GetImplTypeFlags(i, &flags);
        GUID source{};
        if (flags & IMPLTYPEFLAG_FSOURCE) {
            EXPECT_EQ(S_OK, provider->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &source));
            EXPECT_EQ(iid, source);
        } else {
            EXPECT_TRUE(object.As<IUnknown>(iid));
        }
    }
}

TEST(MainLibraryFile, EveryClassIsCreatableAndKnowsItsCoclass) {
    for (const Type& type : TypesOf(LoadTypes(LibraryPath().c_str()))) {
        if (AttributesOf(type)->typekind != TKIND_COCLASS) continue;
        SCOPED_TRACE(NameOf(type));
        const ComPtr<IUnknown> object = CreateUnknown(AttributesOf(type)->guid);
        ASSERT_TRUE(object);
        ExpectNamesCoclass(object, type);
    }
}

}  // namespace
}  // namespace velk::test
