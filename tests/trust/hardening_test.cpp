// Where the library's platform libraries come from. (That it leaves its process alone, the walks see.)
#include "support/library_copy.h"
#include "support/own_process.h"
#include "support/scoped_variable.h"
#include "trust/harness.h"

namespace velk::test {
namespace {

TEST(Hardening, LoadingTheLibraryChangesNothingOfTheProcess) {
    const Snapshot before = ProcessState();
    const LibraryCopy copy;
    EXPECT_TRUE(copy.Create(__uuidof(CStack)));
    EXPECT_EQ(before, ProcessState());
}

const wchar_t* const kDecoys[] = {L"wininet.dll", L"winmm.dll", L"hhctrl.ocx"};

bool IsDecoy(HMODULE module) {
    wchar_t path[MAX_PATH] = L"";
    GetModuleFileNameW(module, path, MAX_PATH);
    return module && std::wstring_view(path).find(L"decoys") != std::wstring_view::npos;
}

// These two are run by the test below, in programs of their own between the decoys.
TEST(DISABLED_Decoys, AreFoundByWhoeverAsksForABareName) {
    for (const wchar_t* const name : kDecoys) EXPECT_TRUE(IsDecoy(LoadLibraryW(name))) << Narrow(name);
}

TEST(DISABLED_Decoys, AreNotWhatTheLibraryLoads) {
    const Surroundings surroundings(kMain);
    ForEachMember(kMain, [](const Class& one, const Member& member) {
        Subject subject(one);
        for (unsigned seed = 0; seed < 3; ++seed) Attempt(subject, member, seed);
    });
    const auto help = CreateObject<IDispatch>(__uuidof(CHtmlHelp));
    const ImportPatch engine(Library(), "HtmlHelpA", nullptr);  // which is loaded only for a file that is there
    const Variant file = Text(LibraryPath());
    EXPECT_EQ(S_OK, Let(help.get(), L"HelpFile", {file}).result);
    Call(help.get(), L"OpenContents");
    for (const wchar_t* const name : kDecoys) {
        EXPECT_NE(nullptr, GetModuleHandleW(name)) << "not asked for: the test says nothing";
        EXPECT_FALSE(IsDecoy(GetModuleHandleW(name)));
    }
}

TEST(Hardening, DecoysBesideTheClientAndInTheCurrentFolderAreNotLoaded) {
    const ScratchFolder folder;
    const std::wstring decoys = folder.MakeFolder(L"decoys"), beside = decoys + L"\\client.exe";
    const ScopedVariable built(kBuildFolder, BuildFolder().c_str());
    ASSERT_TRUE(CopyFileW(OwnProgram().c_str(), beside.c_str(), TRUE));
    for (const wchar_t* const name : kDecoys)
        ASSERT_TRUE(CopyFileW(BuiltFile(L"VelkSub.dll").c_str(), (decoys + L"\\" + name).c_str(), TRUE));
    const auto run = [&](const std::wstring& program, const wchar_t* test) {
        return OwnProcess(test, program, decoys.c_str()).Ended();
    };
    EXPECT_EQ(0u, run(beside, L"*AreFoundByWhoeverAsksForABareName"));
    EXPECT_EQ(0u, run(beside, L"*AreNotWhatTheLibraryLoads"));
    EXPECT_EQ(0u, run(OwnProgram(), L"*AreNotWhatTheLibraryLoads")) << "the current folder alone";
}

}  // namespace
}  // namespace velk::test
