// What is asked of the platform at its limits. What each failure of a file means is in crc32.facts and dat_file.facts.
#include <gtest/gtest.h>

#include "frame/module/library.h"
#include "platform/memory.h"
#include "platform/system_library.h"
#include "support/fake.h"

namespace velk::test {
namespace {

const HMODULE own = GetModuleHandleW(nullptr);

TEST(Paths, OfTheLibraryMayBeLong) {
    const std::wstring path = L"C:\\" + std::wstring(700, L'f') + L"\\Velk.Sprt.dll";
    const auto name = [&](HMODULE, LPWSTR place, DWORD size) {
        const auto length = static_cast<DWORD>(path.copy(place, size));
        if (length < size) place[length] = L'\0';
        return length;
    };
    const Fake fake("GetModuleFileNameW", &GetModuleFileNameW, name, own);
    EXPECT_EQ(path, library::FilePath());
    EXPECT_EQ(L"Velk.Sprt", library::FileBaseName());
}

// A file of the same name beside the client or in the current folder is never loaded: nothing else loads any.
TEST(Paths, OfPlatformLibrariesAreWhole) {
    std::wstring loaded;
    const auto load = [&](LPCWSTR path, HANDLE, DWORD how) {
        return loaded += path, how == LOAD_WITH_ALTERED_SEARCH_PATH ? own : nullptr;
    };
    const Fake loads("LoadLibraryExW", &LoadLibraryExW, load, own);
    for (const UINT length : {0, 4, MAX_PATH}) {
        const auto folder = [&](LPWSTR place, UINT) { return std::wstring_view(L"Q:\\s").copy(place, 4), length; };
        const Fake system("GetSystemDirectoryW", &GetSystemDirectoryW, folder, own);
        EXPECT_EQ(length == 4 ? own : nullptr, LoadSystemLibrary(L"x.dll"));
    }
    EXPECT_EQ(L"Q:\\s\\x.dll", loaded);
}

TEST(Memory, IsReadableWhereItIsCommitted) {
    int here = 0;
    EXPECT_TRUE(IsReadable(&here, sizeof here));
    EXPECT_FALSE(IsReadable(nullptr, 1));
}

}  // namespace
}  // namespace velk::test
