// CMMTimer as its clients see it.
#include <gtest/gtest.h>

#include <string>

#include "support/client.h"
#include "support/procedure_patch.h"
#include "support/report_recorder.h"
#include "support/facts.h"

namespace velk::test {
namespace {

DWORD now;
DWORD WINAPI Clock() { return now; }

// On a clock of the test's own, in milliseconds.
class Timer : public testing::Test {
  protected:
    Timer() { timer_->put_ScaleFactor(1); }
    double At(DWORD time) {
        now = time;
        double elapsed = -1;
        EXPECT_EQ(S_OK, timer_->get_ElapsedTime(&elapsed));
        return elapsed;
    }
    void StartAt(DWORD time) {
        now = time;
        EXPECT_EQ(S_OK, timer_->StartTimer());
    }
    // The titles of the overflows that were shown since the last call.
    std::wstring Overflows() {
        std::wstring titles;
        for (; seen_ < recorder_.reports().size(); ++seen_) {
            EXPECT_EQ(L"Error: 6. Overflow", recorder_.reports()[seen_].text);
            titles += recorder_.reports()[seen_].title + L" ";
        }
        return titles;
    }

    ProcedurePatch clock_{Library(), "timeGetTime", Address(&Clock)};
    ComPtr<_CMMTimer> timer_ = CreateObject<_CMMTimer>(__uuidof(::CMMTimer));
    ReportRecorder recorder_{Library()};
    std::size_t seen_ = 0;
};

TEST_F(Timer, StartsStopsAndResumes) {
    EXPECT_EQ(0, At(5000));
    StartAt(5000);
    EXPECT_EQ(1500, At(6500));
    timer_->StopTimer();
    EXPECT_EQ(1500, At(9000));
    timer_->StopTimer();
    EXPECT_EQ(1500, At(9500)) << "a second stop adds nothing";
    timer_->ResumeTimer();
    EXPECT_EQ(2000, At(10000));
    timer_->ResumeTimer();
    EXPECT_EQ(1600, At(10100)) << "the run so far is lost";
    for (const auto& [given, kept] : {std::pair<LONG, LONG>{0, 1}, {-5, 1}, {60000, 60000}, {8, 8}}) {
        LONG factor = 0;
        timer_->put_ScaleFactor(given);
        timer_->get_ScaleFactor(&factor);
        EXPECT_EQ(kept, factor);
        EXPECT_EQ(1600.0 / kept, At(10100));
    }
    StartAt(10100);
    EXPECT_EQ(2, At(10116)) << "from 0 again";
    EXPECT_EQ(L"", Overflows());
}

TEST_F(Timer, CountsAcrossTheWrapAndShowsOverflows) {
    StartAt(0xFFFF'FF00);
    EXPECT_EQ(512, At(0x100));
    StartAt(0);
    EXPECT_EQ(0, At(1000)) << "a start at 0 counts as no run";
    StartAt(0x7FFF'FFFF);
    EXPECT_EQ(L"", Overflows());
    EXPECT_EQ(0, At(0x8000'0000));
    timer_->StopTimer();
    EXPECT_EQ(0, At(0x8000'0001)) << "stopped all the same";
    EXPECT_EQ(L"GetCurrentElapsedTime GetCurrentElapsedTime ", Overflows());

    StartAt(1);
    now = 0x7FFF'FFFF;
    timer_->StopTimer();
    now = 1;
    timer_->ResumeTimer();
    EXPECT_EQ(0x7FFF'FFFF, At(2));
    EXPECT_EQ(0, At(3));
    timer_->StopTimer();
    EXPECT_EQ(L"ElapsedTime StopTimer ", Overflows());
    EXPECT_EQ(0x7FFF'FFFE, At(4)) << "the run is lost, what was kept stays";
}

TEST(TimerWithoutAClock, SaysSo) {
    const ProcedurePatch missing(Library(), "timeGetTime", nullptr);
    const ReportRecorder recorder(Library());
    EXPECT_EQ(S_OK, Call(CreateObject<IDispatch>(__uuidof(::CMMTimer)).get(), L"StartTimer").result);
    ASSERT_EQ(1u, recorder.reports().size());
    EXPECT_EQ(L"StartTimer: Error: 53. File not found",
              recorder.reports()[0].title + L": " + recorder.reports()[0].text);
}

}  // namespace
}  // namespace velk::test
