// CHtmlHelp: how it comes by its engine, and opening a real compiled help file where the build could make one. What it
// tells the engine is in html_help.facts.
#include <filesystem>

#include "support/fake.h"
#include "support/late_bound.h"
#include "support/library_copy.h"
#include "support/test_window.h"

namespace velk::test {
namespace {

TEST(CompiledHelp, LooksForTheEngineUntilItIsThere) {
    const LibraryCopy copy;
    const ScratchFolder folder;
    const auto help = copy.Create(__uuidof(::CHtmlHelp));
    HMODULE engine = nullptr;
    std::wstring loaded;
    const auto find = [&](LPCWSTR path, HANDLE, DWORD flags) {
        EXPECT_EQ(DWORD{LOAD_WITH_ALTERED_SEARCH_PATH}, flags);
        loaded += path;
        return engine;
    };
    const Fake load("LoadLibraryExW", &LoadLibraryExW, find, copy.module());
    Let(help.get(), L"HelpFile", {Text(folder.Write(L"a.chm", ""))});
    for (int i = 0; i < 3; ++i, engine = GetModuleHandleW(nullptr))
        EXPECT_EQ(L"File not found: hhctrl.ocx", Call(help.get(), L"OpenContents").description);
    wchar_t system[MAX_PATH];
    GetSystemDirectoryW(system, MAX_PATH);
    const std::wstring path = std::wstring(system) + L"\\hhctrl.ocx";
    EXPECT_EQ(path + path, loaded) << "when it is needed, once more after a failure, and then it is kept";
}

TEST(CompiledHelp, OpensARealHelpFile) {
    const std::wstring real = BuiltFile(L"tests\\help\\scale.chm");
    if (!std::filesystem::exists(real)) {
        GTEST_SKIP() << "no help file: chmcmd (package fp-utils) was not there when this was built";
    }
    const auto help = CreateObject<IDispatch>(__uuidof(::CHtmlHelp));
    const auto helpWindow = [] { return FindWindowA("HH Parent", nullptr); };
    Let(help.get(), L"HelpFile", {Text(real)});
    EXPECT_EQ(nullptr, helpWindow());
    EXPECT_EQ(S_OK, Call(help.get(), L"OpenContents").result);
    char title[100] = "";
    GetWindowTextA(helpWindow(), title, sizeof title);
    EXPECT_STREQ("Scale help", title);
    EXPECT_EQ(S_OK, Call(help.get(), L"OpenContext", {Arg(1001L)}).result);
    EXPECT_EQ(S_OK, Call(help.get(), L"OpenTopic", {Text(L"zero.htm")}).result);
    for (const wchar_t* member : {L"OpenFinder", L"OpenSearch"}) EXPECT_EQ(S_OK, Call(help.get(), member).result);
    PumpMessages();
    DestroyWindow(helpWindow());
    Let(help.get(), L"ParentHWND", {Arg(0x7FFF0L)});
    EXPECT_EQ(S_OK, Call(help.get(), L"OpenContents").result) << "an owner that does not exist is the engine's affair";
    PumpMessages();
}

}  // namespace
}  // namespace velk::test
