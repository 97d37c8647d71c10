// CMMTimer as its clients see it, on a clock of the test's own.
#include "support/client.h"
#include "support/facts.h"
#include "support/procedure_patch.h"
#include "support/report_recorder.h"

namespace velk::test {
namespace {

DWORD now;
DWORD WINAPI Clock() { return now; }

TEST(Timer, MeasuresItsRunsAndShowsOverflows) {
    const ProcedurePatch clock(Library(), "timeGetTime", Address(&Clock));
    ReportRecorder recorder(Library());
    const auto timer = CreateObject<IDispatch>(__uuidof(::CMMTimer));
    EXPECT_EQ(L"1000", Fact(timer.get(), L"ScaleFactor"));
    EXPECT_EQ(S_OK, Let(timer.get(), L"ScaleFactor", {Arg(1L)}).result);
    struct Step {
        const wchar_t* member;
        DWORD time;
        double elapsed;                 // after the call
        const wchar_t* overflow = L"";  // in which procedure, while the call or the reading ran
    };
    for (const Step& step : {
             Step{L"ScaleFactor", 5000, 0},  // no run yet
             {L"StartTimer", 5000, 0},
             {L"ScaleFactor", 6500, 1500},
             {L"StopTimer", 6600, 1600},
             {L"StopTimer", 9500, 1600},  // a second stop adds nothing
             {L"ResumeTimer", 10000, 1600},
             {L"ScaleFactor", 10400, 2000},
             {L"ResumeTimer", 10500, 1600},  // the run so far is lost
             {L"StartTimer", 10600, 0},      // from 0 again
             {L"StartTimer", 0xFFFF'FF00, 0},
             {L"ScaleFactor", 0x100, 512},
             {L"StartTimer", 0, 0},
             {L"ScaleFactor", 1000, 0},  // a start at 0 counts as no run
             {L"StartTimer", 0x7FFF'FFFF, 0},
             {L"ScaleFactor", 0x8000'0000, 0, L"GetCurrentElapsedTime"},
             {L"StopTimer", 0x8000'0000, 0, L"GetCurrentElapsedTime"},  // stopped all the same
             {L"StartTimer", 1, 0},
             {L"StopTimer", 0x7FFF'FFFF, 0x7FFF'FFFE},
             {L"ResumeTimer", 1, 0x7FFF'FFFE},
             {L"ScaleFactor", 2, 0x7FFF'FFFF},
             {L"ScaleFactor", 3, 0, L"ElapsedTime"},
             {L"StopTimer", 3, 0x7FFF'FFFE, L"StopTimer"},  // the run is lost, what was kept stays
         }) {
        now = step.time;
        EXPECT_EQ(S_OK, Call(timer.get(), step.member).result);
        EXPECT_EQ(step.elapsed, Get(timer.get(), L"ElapsedTime").value.dblVal) << step.member << step.time;
        EXPECT_EQ(*step.overflow ? step.overflow + std::wstring(L": Error: 6. Overflow|") : L"", recorder.Shown());
    }
    for (const auto& [given, kept] : {std::pair{0L, 1L}, {-5L, 1L}, {60000L, 60000L}, {8L, 8L}}) {
        EXPECT_EQ(S_OK, Let(timer.get(), L"ScaleFactor", {Arg(given)}).result);
        EXPECT_EQ(double{0x7FFF'FFFE} / kept, Get(timer.get(), L"ElapsedTime").value.dblVal) << given;
    }
}

TEST(Timer, SaysThatThereIsNoClock) {
    const ProcedurePatch missing(Library(), "timeGetTime", nullptr);
    ReportRecorder recorder(Library());
    EXPECT_EQ(S_OK, Call(CreateObject<IDispatch>(__uuidof(::CMMTimer)).get(), L"StartTimer").result);
    EXPECT_EQ(L"StartTimer: Error: 53. File not found|", recorder.Shown());
}

}  // namespace
}  // namespace velk::test
