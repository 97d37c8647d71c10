// What the library leaves alone in its process, and where its platform libraries come from.
#include <gtest/gtest.h>

#include <clocale>
#include <cstring>

#include "support/library_copy.h"
#include "support/own_process.h"
#include "support/procedure_patch.h"
#include "support/scoped_variable.h"
#include "trust/attempt.h"

namespace velk::test {
namespace {

template <class Read>
std::wstring TextFrom(Read read) {
    wchar_t text[32768] = L"";
    read(static_cast<DWORD>(ARRAYSIZE(text)), text);
    return text;
}

// What belongs to the process and its other code.
struct ProcessState {
    WORD controlWord = 0;
    unsigned mxcsr = 0;
    std::string locale = setlocale(LC_ALL, nullptr);
    LCID threadLocale = GetThreadLocale();
    UINT errorMode = GetErrorMode();
    std::wstring folder = TextFrom(&GetCurrentDirectoryW);
    std::wstring libraryFolder = TextFrom(&GetDllDirectoryW);
    std::wstring searchPath = TextFrom([](DWORD size, wchar_t* text) { GetEnvironmentVariableW(L"PATH", text, size); });
    int priority = GetThreadPriority(GetCurrentThread());

    ProcessState() {
        constexpr unsigned kControl = 0xFFC0;  // the other bits tell what happened
        asm volatile("fnstcw %0" : "=m"(controlWord));
        asm volatile("stmxcsr %0" : "=m"(mxcsr));
        mxcsr &= kControl;
    }
    bool operator==(const ProcessState&) const = default;
};

TEST(Hardening, NeitherLoadingNorAnyMemberChangesWhatBelongsToTheProcess) {
    const ProcessState before;
    {
        const LibraryCopy copy;
        EXPECT_TRUE(copy.Create(__uuidof(CStack)));
        EXPECT_TRUE(before == ProcessState());
    }
    for (const wchar_t* const library : {kMain, kHooks}) {
        const Surroundings surroundings(library);
        ForEachMember(library, [&](const Class& one, const Member& member) {
            for (unsigned seed = 0; seed < 4; ++seed) Attempt(one, member, seed).Make();
            EXPECT_TRUE(before == ProcessState());
        });
    }
}

const wchar_t* const kDecoys[] = {L"wininet.dll", L"winmm.dll", L"hhctrl.ocx"};

bool IsDecoy(HMODULE module) {
    const std::wstring path = TextFrom([&](DWORD size, wchar_t* text) { GetModuleFileNameW(module, text, size); });
    return module && path.find(L"decoys") != path.npos;
}

HWND WINAPI ShowNoHelp(HWND, LPCSTR, UINT, DWORD_PTR) { return nullptr; }

// The help engine is loaded only for a file that is there.
void OpenHelp() {
    const ProcedurePatch engine(Library(), "HtmlHelpA", reinterpret_cast<void*>(&ShowNoHelp));
    const auto help = CreateObject<IDispatch>(__uuidof(CHtmlHelp));
    const Variant file = Text(LibraryPath().c_str());
    EXPECT_EQ(S_OK, Let(help.get(), L"HelpFile", {file}).result);
    Call(help.get(), L"OpenContents");
}

// These two are run by the test below, in programs of their own between the decoys.
TEST(DISABLED_Decoys, AreFoundByWhoeverAsksForABareName) {
    for (const wchar_t* const name : kDecoys) EXPECT_TRUE(IsDecoy(LoadLibraryW(name))) << std::wstring(name).c_str();
}

TEST(DISABLED_Decoys, AreNotWhatTheLibraryLoads) {
    {
        const Surroundings surroundings(kMain);
        AttemptEach(kMain, 3);
    }
    OpenHelp();
    for (const wchar_t* const name : kDecoys) {
        EXPECT_NE(nullptr, GetModuleHandleW(name)) << "not asked for: the test says nothing";
        EXPECT_FALSE(IsDecoy(GetModuleHandleW(name)));
    }
}

TEST(Hardening, DecoysBesideTheClientAndInTheCurrentFolderAreNotLoaded) {
    const ScratchFolder folder;
    const std::wstring decoys = folder.MakeFolder(L"decoys");
    const ScopedVariable built(kBuildFolder, BuildFolder().c_str());
    ASSERT_TRUE(CopyFileW(OwnProgram().c_str(), (decoys + L"\\client.exe").c_str(), TRUE));
    for (const wchar_t* const name : kDecoys) {
        ASSERT_TRUE(CopyFileW(BuiltFile(L"VelkSub.dll").c_str(), (decoys + L"\\" + name).c_str(), TRUE));
    }
    const std::wstring beside = decoys + L"\\client.exe";
    const auto run = [&](const std::wstring& program, const wchar_t* test) {
        return OwnProcess(test, program, decoys.c_str()).Ended();
    };
    EXPECT_EQ(0u, run(beside, L"*AreFoundByWhoeverAsksForABareName"));
    EXPECT_EQ(0u, run(beside, L"*AreNotWhatTheLibraryLoads"));
    EXPECT_EQ(0u, run(OwnProgram(), L"*AreNotWhatTheLibraryLoads")) << "the current folder alone";
}

}  // namespace
}  // namespace velk::test
