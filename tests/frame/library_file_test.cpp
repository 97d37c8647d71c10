// The built libraries as files, and what their type libraries promise.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <set>

#include "support/client.h"
#include "tools/type_reader.h"

namespace velk::test {
namespace {

class Image {
  public:
    explicit Image(const std::wstring& path) {
        std::ifstream file(path.c_str(), std::ios::binary);
        bytes_.assign(std::istreambuf_iterator<char>(file), {});
    }

    const std::string& bytes() const { return bytes_; }
    const IMAGE_NT_HEADERS& headers() const {
        return *At<IMAGE_NT_HEADERS>(
            static_cast<DWORD>(reinterpret_cast<const IMAGE_DOS_HEADER*>(&bytes_[0])->e_lfanew));
    }
    const IMAGE_DATA_DIRECTORY& Directory(int which) const { return headers().OptionalHeader.DataDirectory[which]; }

    // What the loader would place at this address.
    template <class T>
    const T* Mapped(DWORD address) const {
        const IMAGE_SECTION_HEADER* section = IMAGE_FIRST_SECTION(&headers());
        while (address - section->VirtualAddress >= section->SizeOfRawData) ++section;
        return At<T>(address - section->VirtualAddress + section->PointerToRawData);
    }

  private:
    template <class T>
    const T* At(DWORD offset) const {
        return reinterpret_cast<const T*>(&bytes_.at(offset));
    }

    std::string bytes_;
};

class LibraryFile : public testing::TestWithParam<const wchar_t*> {};
INSTANTIATE_TEST_SUITE_P(Both, LibraryFile, testing::Values(L"VelkSprt.dll", L"VelkSub.dll"));

TEST_P(LibraryFile, IsARelocatableHardenedLibraryWithoutTimeStamps) {
    const Image image(BuiltFile(GetParam()));
    const IMAGE_FILE_HEADER& file = image.headers().FileHeader;
    EXPECT_EQ(sizeof(void*) == 4 ? IMAGE_FILE_MACHINE_I386 : IMAGE_FILE_MACHINE_AMD64, file.Machine);
    EXPECT_TRUE(file.Characteristics & IMAGE_FILE_DLL);
    EXPECT_FALSE(file.Characteristics & IMAGE_FILE_RELOCS_STRIPPED);
    EXPECT_GT(image.Directory(IMAGE_DIRECTORY_ENTRY_BASERELOC).Size, 0u);
    const WORD hardening = image.headers().OptionalHeader.DllCharacteristics;
    EXPECT_TRUE(hardening & IMAGE_DLLCHARACTERISTICS_DYNAMIC_BASE);
    EXPECT_TRUE(hardening & IMAGE_DLLCHARACTERISTICS_NX_COMPAT);
    EXPECT_EQ(0u, file.TimeDateStamp);
    const DWORD exports = image.Directory(IMAGE_DIRECTORY_ENTRY_EXPORT).VirtualAddress;
    EXPECT_EQ(0u, image.Mapped<IMAGE_EXPORT_DIRECTORY>(exports)->TimeDateStamp);
    EXPECT_EQ(0u, image.Directory(IMAGE_DIRECTORY_ENTRY_DEBUG).Size);
}

TEST_P(LibraryFile, ExportsTheFourEntryPointsUndecorated) {
    const Image image(BuiltFile(GetParam()));
    const auto* exports =
        image.Mapped<IMAGE_EXPORT_DIRECTORY>(image.Directory(IMAGE_DIRECTORY_ENTRY_EXPORT).VirtualAddress);
    std::set<std::string> names;
    for (DWORD i = 0; i < exports->NumberOfNames; ++i) {
        names.insert(image.Mapped<char>(image.Mapped<DWORD>(exports->AddressOfNames)[i]));
    }
    const std::set<std::string> expected{"DllCanUnloadNow", "DllGetClassObject", "DllRegisterServer",
                                         "DllUnregisterServer"};
    EXPECT_EQ(expected, names);
    EXPECT_EQ(4u, exports->NumberOfFunctions);
}

TEST_P(LibraryFile, ImportsOnlySystemLibraries) {
    const std::set<std::string> system{"kernel32.dll", "user32.dll",   "gdi32.dll",    "advapi32.dll", "ole32.dll",
                                       "oleaut32.dll", "shell32.dll",  "comdlg32.dll", "winmm.dll",    "wininet.dll",
                                       "comctl32.dll", "winspool.drv", "version.dll",  "msvcrt.dll"};
    const Image image(BuiltFile(GetParam()));
    const auto* library =
        image.Mapped<IMAGE_IMPORT_DESCRIPTOR>(image.Directory(IMAGE_DIRECTORY_ENTRY_IMPORT).VirtualAddress);
    for (; library->Name; ++library) {
        std::string name = image.Mapped<char>(library->Name);
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

#ifdef NDEBUG  // debug information names its sources

TEST_P(LibraryFile, DoesNotTellWhereItWasBuilt) {
    const Image image(BuiltFile(GetParam()));
    const std::string library = VELKSPRT_DLL;
    for (const std::string& folder : {std::string(VELK_SOURCE_DIR "/"), library.substr(0, library.rfind('/') + 1)}) {
        std::string wide;
        for (const char c : folder) wide += {c, '\0'};
        EXPECT_EQ(std::string::npos, image.bytes().find(folder)) << folder;
        EXPECT_EQ(std::string::npos, image.bytes().find(wide)) << folder;
    }
}

#endif

// The constants of enumerations are left out: the type-library compiler gives them none.
TEST_P(LibraryFile, HasAHelpTextForEveryTypeAndMember) {
    for (const Type& type : TypesOf(LoadTypes(BuiltFile(GetParam()).c_str()))) {
        const Documentation about = DocumentationOf(type, MEMBERID_NIL);
        EXPECT_FALSE(about.help.empty()) << about.name;
        const Type own = OwnMembers(type);
        for (UINT i = 0; i < AttributesOf(own)->cFuncs; ++i) {
            const Documentation member = DocumentationOf(own, FunctionOf(own, i)->memid);
            EXPECT_FALSE(member.help.empty()) << about.name << L"." << member.name;
        }
    }
}

void ExpectNamesCoclass(IUnknown* object, const GUID& clsid, const std::wstring& name) {
    const auto provider = ComPtr<IUnknown>(object).As<IProvideClassInfo2>();
    ASSERT_TRUE(provider) << name;
    Type named;
    ASSERT_EQ(S_OK, provider->GetClassInfo(named.Receive())) << name;
    EXPECT_EQ(clsid, AttributesOf(named)->guid) << name;
    for (UINT i = 0; i < AttributesOf(named)->cImplTypes; ++i) {
        const GUID iid = AttributesOf(Implemented(named, i))->guid;
        INT flags = 0;
        named->GetImplTypeFlags(i, &flags);
        GUID source{};
        if (flags & IMPLTYPEFLAG_FSOURCE) {
            EXPECT_EQ(S_OK, provider->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &source)) << name;
            EXPECT_EQ(iid, source) << name;
        } else {
            EXPECT_TRUE(ComPtr<IUnknown>(object).As<IUnknown>(iid)) << name;
        }
    }
}

TEST(MainLibraryFile, EveryClassIsCreatableAndKnowsItsCoclass) {
    for (const Type& type : TypesOf(LoadTypes(LibraryPath().c_str()))) {
        if (AttributesOf(type)->typekind != TKIND_COCLASS) continue;
        const GUID clsid = AttributesOf(type)->guid;
        const ComPtr<IUnknown> object = CreateUnknown(clsid);
        ASSERT_TRUE(object) << NameOf(type);
        ExpectNamesCoclass(object.get(), clsid, NameOf(type));
    }
}

}  // namespace
}  // namespace velk::test
