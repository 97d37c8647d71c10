#include "platform/files.h"

#include <gtest/gtest.h>

#include "frame/failure/failure.h"
#include "frame/module/library.h"
#include "platform/text.h"
#include "support/departures.h"
#include "support/fake.h"
#include "support/scratch_folder.h"

namespace velk::test {
namespace {

// The run-time error that reading the file ends with; 0 when it ends well.
int ErrorOf(const std::wstring& path) {
    try {
        GetFile(path);
        return 0;
    } catch (const RuntimeError& error) {
        return error.number();
    }
}

TEST(Files, FileExistsFindsNormalFilesOnly) {
    const ScratchFolder folder;
    for (const auto& [name, attributes] : {std::pair(L"plain.txt", FILE_ATTRIBUTE_NORMAL),
                                           {L"hidden.bin", FILE_ATTRIBUTE_HIDDEN},
                                           {L"system.bin", FILE_ATTRIBUTE_SYSTEM},
                                           {L"only.dat", FILE_ATTRIBUTE_READONLY},
                                           {L"zz.mix", FILE_ATTRIBUTE_NORMAL}}) {
        EXPECT_TRUE(SetFileAttributesW(folder.Write(name, "").c_str(), attributes));
    }
    folder.MakeFolder(L"inner.dir");
    folder.MakeFolder(L"aa.mix");
    const std::wstring plain = folder.Path(L"plain.txt"), readOnly = folder.Path(L"only.dat");
    const std::size_t handles = OpenHandles();
    for (const wchar_t* name : {L"plain.txt", L"only.dat", L"p?ain.*", L"*.mix"}) {  // a folder is the first *.mix
        EXPECT_TRUE(FileExists(folder.Path(name))) << name;
    }
    for (const wchar_t* name : {L"hidden.bin", L"system.bin", L"inner.dir", L"inner.dir\\", L"none.txt",
                                L"none\\plain.txt", L"*.dir", L"*.bin", L"inner.dir\\*", L""}) {
        EXPECT_FALSE(FileExists(folder.Path(name))) << name;
    }
    for (const std::wstring& path : {std::wstring(), std::wstring(L"Q:\\plain.txt"), std::wstring(L"7:\\plain.txt"),
                                     plain + L'\0', plain + std::wstring(L"\0.x", 3), std::wstring(40000, L'n')}) {
        EXPECT_FALSE(FileExists(path)) << path.substr(0, 80);
    }
    EXPECT_EQ(handles, OpenHandles());
    SetFileAttributesW(readOnly.c_str(), FILE_ATTRIBUTE_NORMAL);  // so that it can be deleted
}

TEST(Files, AnEmptyDriveAsksNobodyForADisk) {
    const auto refuse = [](auto...) {
        EXPECT_EQ(DWORD{SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX}, GetThreadErrorMode());
        SetLastError(ERROR_NOT_READY);
        return INVALID_HANDLE_VALUE;
    };
    DWORD before = 0;
    SetThreadErrorMode(SEM_NOOPENFILEERRORBOX, &before);
    {
        const HMODULE here = GetModuleHandleW(nullptr);
        const Fake find("FindFirstFileW", &FindFirstFileW, refuse, here);
        const Fake open("CreateFileW", &CreateFileW, refuse, here);
        EXPECT_FALSE(FileExists(L"A:\\any.txt"));
        EXPECT_EQ(71, ErrorOf(L"A:\\any.txt"));
        EXPECT_EQ(2, find.calls() + open.calls());
    }
    EXPECT_EQ(DWORD{SEM_NOOPENFILEERRORBOX}, GetThreadErrorMode()) << "put back";
    SetThreadErrorMode(before, nullptr);
}

TEST(Files, GetFileReadsEveryByteAsACharacter) {
    const ScratchFolder folder;
    std::string every(300000, '\0');
    for (std::size_t i = 0; i < every.size(); ++i) every[i] = static_cast<char>(i);
    for (const std::string& bytes : {std::string(), every}) {
        EXPECT_EQ(bytes, ToAnsi(Wide(GetFile(folder.Write(L"bytes", bytes)))));
    }
    int reads = 0;
    const auto shrink = [&](HANDLE, LPVOID, DWORD, LPDWORD got, LPOVERLAPPED) { return *got = reads++ ? 0 : 2, TRUE; };
    const Fake read("ReadFile", &ReadFile, shrink, GetModuleHandleW(nullptr));
    EXPECT_EQ(2u, GetFile(folder.Path(L"bytes")).size()) << "a file that got shorter meanwhile";
}

TEST(Files, GetFileFailsWithTheErrorOfWhatWentWrong) {
    const ScratchFolder folder;
    const std::wstring plain = folder.Write(L"plain.txt", "text");
    const std::wstring locked = folder.Write(L"locked.txt", "text");
    const std::wstring shared = folder.Write(L"shared.txt", "text");
    const FileHandle lock(CreateFileW(locked.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    const FileHandle share(CreateFileW(shared.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                       nullptr, OPEN_EXISTING, 0, nullptr));
    const int noPath = Departs("CreateFile") ? 53 : 76;
    const std::pair<std::wstring, int> cases[] = {
        {plain, 0},
        {shared, 0},
        {folder.Path(L"none.txt"), 53},
        {folder.Path(L"none\\plain.txt"), 76},
        {L"Q:\\plain.txt", noPath},
        {folder.Path(std::wstring(300, L'n')), noPath},
        {folder.path(), 75},
        {L"", 75},
        {locked, 70},
        {folder.Path(L"*.txt"), 52},
        {plain + std::wstring(L"\0.x", 3), 52},
    };
    const std::size_t handles = OpenHandles();
    for (const auto& [path, error] : cases) EXPECT_EQ(error, ErrorOf(path)) << path;
    EXPECT_EQ(handles, OpenHandles());
}

TEST(Library, MayLieInADeepFolder) {
    const std::wstring path = L"C:\\" + std::wstring(700, L'f') + L"\\Velk.Sprt.dll";
    const auto name = [&](HMODULE, LPWSTR place, DWORD size) {
        const auto length = static_cast<DWORD>(path.copy(place, size));
        if (length < size) place[length] = L'\0';
        return length;
    };
    const Fake fake("GetModuleFileNameW", &GetModuleFileNameW, name, GetModuleHandleW(nullptr));
    EXPECT_EQ(path, library::FilePath());
    EXPECT_EQ(L"Velk.Sprt", library::FileBaseName());
}

}  // namespace
}  // namespace velk::test
