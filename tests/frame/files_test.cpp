#include "frame/files.h"

#include <gtest/gtest.h>

#include "frame/failure.h"
#include "frame/text.h"
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

std::wstring WithAttributes(std::wstring path, DWORD attributes) {
    EXPECT_TRUE(SetFileAttributesW(path.c_str(), attributes));
    EXPECT_EQ(attributes, GetFileAttributesW(path.c_str()) & attributes);
    return path;
}

TEST(Files, FileExistsFindsNormalFilesOnly) {
    const ScratchFolder folder;
    const std::wstring plain = folder.Write(L"plain.txt", "");
    const std::wstring hidden = WithAttributes(folder.Write(L"hidden.bin", ""), FILE_ATTRIBUTE_HIDDEN);
    const std::wstring system = WithAttributes(folder.Write(L"system.bin", ""), FILE_ATTRIBUTE_SYSTEM);
    const std::wstring readOnly = WithAttributes(folder.Write(L"only.dat", ""), FILE_ATTRIBUTE_READONLY);
    const std::wstring inner = folder.MakeFolder(L"inner.dir");
    folder.Write(L"zz.mix", "");
    folder.MakeFolder(L"aa.mix");
    const std::pair<std::wstring, bool> cases[] = {
        {plain, true},
        {readOnly, true},
        {hidden, false},
        {system, false},
        {inner, false},
        {inner + L"\\", false},
        {L"", false},
        {folder.Path(L"none.txt"), false},
        {folder.Path(L"none\\plain.txt"), false},
        {folder.Path(L"p?ain.*"), true},
        {folder.Path(L"*.mix"), true},  // a folder is found first
        {folder.Path(L"*.dir"), false},
        {folder.Path(L"*.bin"), false},
        {folder.Path(L"*.none"), false},
        {inner + L"\\*", false},
        {L"Q:\\plain.txt", false},
        {L"7:\\plain.txt", false},
        {plain + L'\0', false},
        {plain + std::wstring(L"\0.x", 3), false},
        {folder.Path(std::wstring(300, L'n')), false},
        {std::wstring(40000, L'n'), false},
    };
    const std::size_t handles = OpenHandles();
    for (const auto& [path, exists] : cases) EXPECT_EQ(exists, FileExists(path)) << path.substr(0, 80);
    EXPECT_EQ(handles, OpenHandles());
    SetFileAttributesW(readOnly.c_str(), FILE_ATTRIBUTE_NORMAL);  // so that it can be deleted
}

TEST(Files, GetFileReadsEveryByteAsACharacter) {
    const ScratchFolder folder;
    std::string every;
    for (int byte = 0; byte < 256; ++byte) every += static_cast<char>(byte);
    std::string large;
    while (large.size() < 300000) large += every;
    for (const std::string& bytes : {std::string(), every, large}) {
        const std::u16string text = GetFile(folder.Write(L"bytes", bytes));
        EXPECT_EQ(bytes.size(), text.size());
        EXPECT_EQ(bytes, ToAnsi(Wide(text)));
    }
}

TEST(Files, GetFileFailsWithTheErrorOfWhatWentWrong) {
    const ScratchFolder folder;
    const std::wstring plain = folder.Write(L"plain.txt", "text");
    const std::wstring locked = folder.Write(L"locked.txt", "text");
    const std::wstring shared = folder.Write(L"shared.txt", "text");
    const FileHandle lock(CreateFileW(locked.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    const FileHandle share(CreateFileW(shared.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                       nullptr, OPEN_EXISTING, 0, nullptr));
    const std::pair<std::wstring, int> cases[] = {
        {plain, 0},
        {shared, 0},
        {folder.Path(L"none.txt"), 53},
        {folder.Path(L"none\\plain.txt"), 76},
        {L"Q:\\plain.txt", 53},                      // Wine only: Windows misses the path, 76
        {folder.Path(std::wstring(300, L'n')), 53},  // Wine only: Windows refuses the name
        {folder.path(), 75},
        {L"", 75},
        {locked, 70},
        {folder.Path(L"*.txt"), 52},
        {folder.Path(L"none\\plain?txt"), 52},
        {plain + std::wstring(L"\0.x", 3), 52},
    };
    const std::size_t handles = OpenHandles();
    for (const auto& [path, error] : cases) EXPECT_EQ(error, ErrorOf(path)) << path;
    EXPECT_EQ(handles, OpenHandles());
}

}  // namespace
}  // namespace velk::test
