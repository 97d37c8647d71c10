// A real compiled help file, where the build could make one. What CHtmlHelp tells the engine is in html_help.facts.
#include <filesystem>

#include "support/client.h"
#include "support/late_bound.h"
#include "support/test_window.h"

namespace velk::test {
namespace {

TEST(CompiledHelp, IsShownByTheEngine) {
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
    PumpMessages();
    DestroyWindow(helpWindow());
    Let(help.get(), L"ParentHWND", {Arg(0x7FFF0L)});
    EXPECT_EQ(S_OK, Call(help.get(), L"OpenContents").result) << "an owner that does not exist is the engine's affair";
    PumpMessages();
}

}  // namespace
}  // namespace velk::test
