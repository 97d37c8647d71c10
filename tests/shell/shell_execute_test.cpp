// CShellExecute: what a recorded shell is handed, to the last flag, and what its answers become; then the real shell
// and a program that really runs.
#include <filesystem>
#include <fstream>

#include "platform/text.h"
#include "support/client.h"
#include "support/departures.h"
#include "support/dialog_driver.h"
#include "support/facts.h"
#include "support/own_process.h"
#include "support/report_recorder.h"
#include "support/scoped_variable.h"
#include "support/scratch_folder.h"

#include <shellapi.h>

namespace velk::test {
namespace {

class Launch : public testing::Test {
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
};

// ---- A recorded shell ----

std::string orders;  // "owner verb|file|parameters|folder|show ", of the call with a record "size mask" before that
LONG instance;
HANDLE process;
void (*whileAtIt)() = nullptr;

void Record(HWND owner, std::initializer_list<LPCSTR> texts, int show) {
    orders += std::to_string(HandleToLong(owner)) + " ";
    for (const LPCSTR text : texts) orders += (text ? text : "null") + std::string("|");
    orders += std::to_string(show) + " ";
}
HINSTANCE WINAPI Plain(HWND owner, LPCSTR verb, LPCSTR file, LPCSTR parameters, LPCSTR folder, INT show) {
    Record(owner, {verb, file, parameters, folder}, show);
    return static_cast<HINSTANCE>(LongToHandle(instance));
}
BOOL WINAPI Extended(SHELLEXECUTEINFOA* order) {
    EXPECT_EQ(sizeof(void*) == 4 ? 60u : 112u, order->cbSize);
    orders += std::to_string(order->fMask) + " ";
    Record(order->hwnd, {order->lpVerb, order->lpFile, order->lpParameters, order->lpDirectory}, order->nShow);
    EXPECT_TRUE(!order->hInstApp && !order->lpIDList && !order->lpClass && !order->hkeyClass && !order->dwHotKey &&
                !order->hIcon && !order->hProcess);
    order->hInstApp = static_cast<HINSTANCE>(LongToHandle(instance));
    order->hProcess = process;
    if (whileAtIt) whileAtIt();
    return FALSE;  // which nobody looks at
}

class RecordedLaunch : public Launch {
  protected:
    RecordedLaunch() {
        orders.clear();
        instance = 42;
        process = nullptr;
        whileAtIt = nullptr;
    }
    // With the process itself as what was started, which runs.
    void StartSomething() {
        process = GetCurrentProcess();
        Call(L"LaunchProgram", {Arg(0L), Text(L"x")});
        EXPECT_TRUE(StillExecuting());
        orders.clear();
    }

    const ScopedVariable noSwitch_{L"VELKSPRT_REPORTS", nullptr};
    const ImportPatch plain_{Library(), "ShellExecuteA", Address(&Plain)};
    const ImportPatch extended_{Library(), "ShellExecuteExA", Address(&Extended)};
};

TEST_F(RecordedLaunch, HandsTheShellExactlyThis) {
    const VARIANT owner = Arg(77L), show = Arg(7L);
    Variant name = Text(L"c\u00E4sar"), in = Text(L"C:\\in"), with = Text(L"/a b");
    const VARIANT file = Arg(&name), folder = Arg(&in), parameters = Arg(&with);
    const struct {
        const wchar_t* member;
        std::initializer_list<VARIANT> arguments;
        std::string order;  // in Windows-1252, the prefix's code page
    } kCases[] = {
        {L"Explore", {owner, file}, "77 explore|c\xE4sar|null|null|10 "},
        {L"Explore", {owner, file, Arg(0L)}, "77 explore|c\xE4sar|null|null|0 "},
        {L"LaunchFolder", {owner, file, show}, "77 open|c\xE4sar|null|null|7 "},
        {L"LaunchURL", {owner, file, show}, "77 null|c\xE4sar|null|null|7 "},
        {L"LaunchEmail", {owner, file, show}, "77 null|mailto:c\xE4sar|null|null|7 "},
        {L"PrintDocument", {owner, file}, "77 print|c\xE4sar|null|null|0 "},
        {L"LaunchDocument", {owner, file, folder}, "576 77 Open|c\xE4sar||C:\\in|10 "},
        {L"LaunchDocument", {owner, file, folder, show}, "576 77 Open|c\xE4sar||C:\\in|7 "},
        {L"LaunchProgram", {owner, file}, "576 77 Open|c\xE4sar|||10 "},
        {L"LaunchProgram", {owner, file, parameters, folder, show}, "576 77 Open|c\xE4sar|/a b|C:\\in|7 "},
    };
    for (const auto& one : kCases) {
        EXPECT_EQ(-1, Verdict(one.member, one.arguments)) << one.member;
        EXPECT_EQ(one.order, std::exchange(orders, "")) << one.member;
    }
    const ScopedVariable withoutDesktop(L"VELKSPRT_REPORTS", L"debugger");
    Call(L"LaunchProgram", {owner, file});
    EXPECT_EQ("1600 77 Open|c\xE4sar|||10 ", orders) << "the shell is told to show no boxes";
}

TEST_F(RecordedLaunch, TheShellsAnswerBecomesTheResult) {
    for (const LONG answer : {0L, 2L, 31L, 7L, 32L, -9L, 33L, 0x7FFFFFFFL}) {
        instance = answer;
        for (const wchar_t* member : {L"LaunchURL", L"LaunchProgram"}) {
            EXPECT_EQ(answer > 32 ? -1 : answer, Verdict(member, {Arg(0L), Text(L"x")})) << answer;
        }
        EXPECT_FALSE(StillExecuting()) << "there is no process handle";
    }
}

TEST_F(RecordedLaunch, OnlyTheTwoLaunchesWithARecordAreWatched) {
    EXPECT_FALSE(StillExecuting());
    for (const wchar_t* member : {L"Explore", L"LaunchEmail", L"LaunchFolder", L"LaunchURL", L"PrintDocument"}) {
        StartSomething();
        Call(member, {Arg(0L), Text(L"x")});
        EXPECT_FALSE(StillExecuting()) << member;
    }
    StartSomething();
    EXPECT_EQ(S_OK, Call(L"ShowProperties", {Text(scratch_.Write(L"shown.txt", ""))}).result);
    EXPECT_TRUE(StillExecuting()) << "ShowProperties leaves it alone";
    instance = 0;
    Call(L"LaunchDocument", {Arg(0L), Text(L"x"), Text(L"")});
    EXPECT_FALSE(StillExecuting()) << "no instance, whatever the handle";
}

TEST_F(RecordedLaunch, ShowPropertiesRaisesItsTwoErrorsAndShowsNone) {
    ReportRecorder recorder(Library());
    const auto show = [&](const std::wstring& path, LONG owner) {
        const Outcome outcome = Call(L"ShowProperties", {Text(path), owner ? Arg(owner) : Missing()});
        return std::to_wstring(outcome.code) + L" " + outcome.source + L": " + outcome.description;
    };
    for (const std::wstring& none :
         {scratch_.MakeFolder(L"folder"), scratch_.Path(L"none"), std::wstring(L"a\0b", 3)}) {
        EXPECT_EQ(L"-2146828235 VelkSupport: File not found", show(none, 0));
    }
    EXPECT_EQ("", orders);
    const std::wstring path = scratch_.Write(L"shown.txt", "");
    instance = 33;
    EXPECT_EQ(L"0 : ", show(path, 0));
    instance = 32;
    EXPECT_EQ(L"-2147203464 VelkSprt.CShellExecute: Can not show properties", show(path, 777));
    const std::string sheet = " properties|" + ToAnsi(path) + "|||0 ";
    EXPECT_EQ("1100 " + std::to_string(HandleToLong(GetDesktopWindow())) + sheet + "1100 777" + sheet, orders);
    EXPECT_EQ(L"", recorder.Shown());
}

TEST_F(RecordedLaunch, ATextWithANulIsShownAndNotHandedOver) {
    ReportRecorder recorder(Library());
    Variant text = Text(std::wstring_view(L"notepad\0.exe", 12)), name = Text(L"x");
    const VARIANT nul = Arg(&text), file = Arg(&name), none = Arg(0L);
    const struct {
        const wchar_t* member;
        std::initializer_list<VARIANT> arguments;
    } kCases[] = {
        {L"Explore", {none, nul}},
        {L"LaunchDocument", {none, nul, file}},
        {L"LaunchDocument", {none, file, nul}},
        {L"LaunchEmail", {none, nul}},
        {L"LaunchFolder", {none, nul}},
        {L"LaunchProgram", {none, nul}},
        {L"LaunchProgram", {none, file, nul}},
        {L"LaunchProgram", {none, file, file, nul}},
        {L"LaunchURL", {none, nul}},
        {L"PrintDocument", {none, nul}},
    };
    for (const auto& [member, arguments] : kCases) {
        StartSomething();
        EXPECT_EQ(seeOUT_OF_MEMORY, Verdict(member, arguments));
        EXPECT_EQ(member + std::wstring(L": Error: 5. Invalid procedure call or argument|"), recorder.Shown());
        EXPECT_EQ("", orders);
        EXPECT_FALSE(StillExecuting()) << "it was forgotten first";
    }
}

_CShellExecute* held;

// As a compiled client that leaves optional arguments out.
TEST_F(RecordedLaunch, LivesThroughALaunchInWhichItsClientDropsIt) {
    const Variant file = Text(scratch_.Write(L"shown.txt", ""));
    whileAtIt = [] { held->Release(); };
    LONG owner = 0;
    BSTR path = file.bstrVal;
    EnumShellExecuteErrors verdict = seeERROR_BAD_FORMAT;
    held = std::exchange(object_, nullptr).As<_CShellExecute>().Detach();
    EXPECT_EQ(S_OK, held->LaunchProgram(&owner, &path, nullptr, nullptr, nullptr, &verdict));
    EXPECT_EQ(seeNoError, verdict);
    held = CreateObject<_CShellExecute>(__uuidof(::CShellExecute)).Detach();
    instance = 0;
    EXPECT_EQ(-2147203464, held->ShowProperties(&path, nullptr));
    SetErrorInfo(0, nullptr);
    EXPECT_TRUE(CanUnload());
}

// ---- The real shell ----

class RealLaunch : public Launch {
  protected:
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
