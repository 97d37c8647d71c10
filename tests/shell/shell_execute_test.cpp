// CShellExecute with the real shell and a program that really runs. What the shell is handed, to the last flag, and
// what becomes of its answers, is in shell_execute.facts.
#include <filesystem>
#include <fstream>

#include "platform/text.h"
#include "support/client.h"
#include "support/departures.h"
#include "support/dialog_driver.h"
#include "support/facts.h"
#include "support/own_process.h"
#include "support/scoped_variable.h"
#include "support/scratch_folder.h"

namespace velk::test {
namespace {

class RealLaunch : public testing::Test {
  protected:
    Outcome Call(const wchar_t* name, std::initializer_list<VARIANT> arguments) {
        return test::Call(object_.get(), name, arguments);
    }
    LONG Verdict(const wchar_t* name, std::initializer_list<VARIANT> arguments) {
        return Call(name, arguments).value.lVal;
    }
    bool StillExecuting() { return Fact(object_.get(), L"StillExecuting") == L"True"; }

    ComPtr<IDispatch> object_ = CreateObject<IDispatch>(__uuidof(::CShellExecute));
    const ScratchFolder scratch_;
    const std::wstring program_ = BuiltFile(L"tests\\launched_program.exe");
    const std::wstring log_ = scratch_.Path(L"log");
    const ScopedVariable logName_{L"VELK_LAUNCH_LOG", log_.c_str()};
};

TEST_F(RealLaunch, IsWatchedFromItsStartToItsEnd) {
    const HANDLE go = CreateEventW(nullptr, TRUE, FALSE, L"velk-launch");
    ASSERT_EQ(-1, Verdict(L"LaunchProgram",
                          {Arg(0L), Text(program_), Text(L"one \"two three\""), Text(scratch_.path()), Arg(7L)}));
    const std::string wanted = "one|two three|" + ToAnsi(scratch_.path()) + "|7";
    std::string started;
    WaitUntil([&] {
        std::ifstream file{std::filesystem::path(log_)};
        return std::getline(file, started, '\n') && started.size() >= wanted.size();
    });
    EXPECT_EQ(wanted, started);
    for (int i = 0; i < 3; ++i) EXPECT_TRUE(StillExecuting());
    SetEvent(go);
    EXPECT_TRUE(WaitUntil([&] { return !StillExecuting(); }));
    CloseHandle(go);
}

TEST_F(RealLaunch, KeepsOneHandleOfEachProgramAndNoMore) {
    const auto launch = [&] {
        ASSERT_EQ(-1, Verdict(L"LaunchProgram", {Arg(0L), Text(program_)}));
        ASSERT_TRUE(WaitUntil([&] { return !StillExecuting(); }));
    };
    launch();  // the shell keeps something of its own at first
    const std::size_t before = OpenHandles();
    for (int i = 0; i < 5; ++i) launch();
    EXPECT_EQ(before + 5, OpenHandles());
    object_ = nullptr;
    EXPECT_EQ(before + 5, OpenHandles()) << "the release closes none";
}

TEST_F(RealLaunch, BadInputGetsTheShellsVerdictAndNoBox) {
    const std::wstring missing = scratch_.Path(L"none.exe"), unknown = scratch_.Write(L"file.velkunknown", "");
    for (const LONG owner : {0L, 0x7FFF0L}) {  // no owner, and one that does not exist
        EXPECT_EQ(seeSE_ERR_NOASSOC, Verdict(L"LaunchDocument", {Arg(owner), Text(unknown), Text(L"")}));
        for (const wchar_t* member : {L"LaunchProgram", L"Explore", L"LaunchFolder", L"LaunchURL", L"PrintDocument"}) {
            EXPECT_EQ(seeERROR_FILE_NOT_FOUND, Verdict(member, {Arg(owner), Text(missing)})) << member;
        }
        EXPECT_EQ(seeERROR_FILE_NOT_FOUND, Verdict(L"LaunchProgram", {Arg(owner), Text(std::wstring(600, L'x'))}));
        EXPECT_FALSE(StillExecuting());
    }
    EXPECT_EQ(Departs("ShellExecuteEx, long name"), OwnProcess(L"*DISABLED_GetsALongName").Ended() != 42);
}

TEST_F(RealLaunch, DISABLED_GetsALongName) {
    EXPECT_NE(-1, Verdict(L"LaunchProgram", {Arg(0L), Text(std::wstring(5000, L'x'))}));
    std::exit(42);
}

TEST_F(RealLaunch, ShowsProperties) {
    const Outcome shown = Call(L"ShowProperties", {Text(scratch_.Write(L"shown.txt", ""))});
    EXPECT_EQ(Departs("ShellExecuteEx, properties") ? -2147203464 : S_OK, shown.code);
}

}  // namespace
}  // namespace velk::test
