#include "platform/files.h"

#include <gtest/gtest.h>

#include <sstream>

#include "frame/failure/failure.h"
#include "frame/module/library.h"
#include "platform/text.h"
#include "support/departures.h"
#include "support/fake.h"
#include "support/process_counts.h"
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
                                           {L"zz.mix", FILE_ATTRIBUTE_ARCHIVE}}) {
        EXPECT_TRUE(SetFileAttributesW(folder.Write(name, "").c_str(), attributes));
    }
    for (const wchar_t* name : {L"inner.dir", L"aa.mix"}) folder.MakeFolder(name);
    const std::wstring plain = folder.Path(L"plain.txt");
    const std::size_t handles = OpenHandles();
    std::wistringstream names(  // a folder is the first *.mix
        L"+plain.txt +p?ain.* +*.mix -hidden.bin -system.bin -inner.dir -inner.dir\\ -none.txt -none\\plain.txt -*.dir "
        L"-*.bin -inner.dir\\* -");
    for (std::wstring name; names >> name;) {
        EXPECT_EQ(name[0] == L'+', FileExists(folder.Path(name.substr(1)))) << name;
    }
    for (const std::wstring& path : {std::wstring(), std::wstring(L"Q:\\plain.txt"), plain + L'\0',
                                     plain + std::wstring(L"\0.x", 3), std::wstring(40000, L'n')}) {
        EXPECT_FALSE(FileExists(path)) << path.substr(0, 80);
    }
    EXPECT_EQ(handles, OpenHandles());
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
    const auto open = [&](const wchar_t* name, DWORD access, DWORD share) {
        return FileHandle(
            CreateFileW(folder.Write(name, "text").c_str(), access, share, nullptr, OPEN_EXISTING, 0, nullptr));
    };
    const FileHandle locked = open(L"locked.txt", GENERIC_READ, 0);
    const FileHandle shared = open(L"shared.txt", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE);
    const int noPath = Departs("CreateFile") ? 53 : 76;
    const std::size_t handles = OpenHandles();
    std::wistringstream errors(L"0 shared.txt 53 none.txt 76 none\\any.txt 70 locked.txt 52 *.txt 75 .");
    std::wstring name;
    for (int number; errors >> number >> name;) EXPECT_EQ(number, ErrorOf(folder.Path(name))) << name;
    EXPECT_EQ(noPath, ErrorOf(folder.Path(std::wstring(300, L'n'))));
    EXPECT_EQ(52, ErrorOf(folder.Path({L"shared.txt\0.x", 13})));
    EXPECT_EQ(noPath, ErrorOf(L"Q:\\plain.txt"));
    EXPECT_EQ(75, ErrorOf(L""));
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
