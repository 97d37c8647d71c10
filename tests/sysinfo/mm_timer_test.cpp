// CMMTimer as its clients see it.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/client.h"
#include "support/procedure_patch.h"
#include "support/report_recorder.h"

namespace velk::test {
namespace {

DWORD now;
DWORD WINAPI Clock() { return now; }

double Elapsed(_CMMTimer* timer) {
    double elapsed = -1;
    EXPECT_EQ(S_OK, timer->get_ElapsedTime(&elapsed));
    return elapsed;
}

// On a clock of the test's own. Milliseconds throughout.
class SteeredTimer : public testing::Test {
  protected:
    SteeredTimer() { timer_->put_ScaleFactor(1); }
    double At(DWORD time) {
        now = time;
        return Elapsed(timer_.get());
    }
    std::wstring Reports() {
        std::wstring all;
        for (; seen_ < recorder_.reports().size(); ++seen_) {
            all += recorder_.reports()[seen_].title + L": " + recorder_.reports()[seen_].text + L"\n";
        }
        return all;
    }

    ProcedurePatch clock_{Library(), "timeGetTime", reinterpret_cast<void*>(&Clock)};
    ComPtr<_CMMTimer> timer_ = CreateObject<_CMMTimer>(__uuidof(::CMMTimer));
    ReportRecorder recorder_{Library()};
    std::size_t seen_ = 0;
};

TEST_F(SteeredTimer, StartsStopsAndResumes) {
    EXPECT_EQ(0, At(5000));
    timer_->StartTimer();
    EXPECT_EQ(1500, At(6500));
    timer_->StopTimer();
    EXPECT_EQ(1500, At(9000));
    timer_->StopTimer();
    EXPECT_EQ(1500, At(9500)) << "a second stop adds nothing";
    timer_->ResumeTimer();
    EXPECT_EQ(2000, At(10000));
    timer_->ResumeTimer();
    EXPECT_EQ(1500, At(10000)) << "the run so far is lost";
    EXPECT_EQ(1600, At(10100));
    timer_->StartTimer();
    EXPECT_EQ(25, At(10125));
    EXPECT_EQ(L"", Reports());
}

TEST_F(SteeredTimer, CountsAcrossTheWrapAndShowsAnOverflow) {
    now = 0xFFFF'FF00;
    timer_->StartTimer();
    EXPECT_EQ(512, At(0x100));
    now = 0;
    timer_->StartTimer();
    EXPECT_EQ(0, At(1000)) << "a start at 0 counts as no run";

    now = 0x7FFF'FFFF;
    timer_->StartTimer();
    EXPECT_EQ(L"", Reports());
    EXPECT_EQ(0, At(0x8000'0000));
    EXPECT_EQ(L"GetCurrentElapsedTime: Error: 6. Overflow\n", Reports());
    timer_->StopTimer();
    EXPECT_EQ(L"GetCurrentElapsedTime: Error: 6. Overflow\n", Reports());
    EXPECT_EQ(0, At(0x8000'0001)) << "stopped all the same";
    EXPECT_EQ(L"", Reports());
}

TEST_F(SteeredTimer, ShowsASumThatDoesNotFit) {
    now = 1;
    timer_->StartTimer();
    now = 0x7FFF'FFFF;
    timer_->StopTimer();
    now = 1;
    timer_->ResumeTimer();
    EXPECT_EQ(0x7FFF'FFFF, At(2));
    EXPECT_EQ(L"", Reports());
    EXPECT_EQ(0, At(3));
    EXPECT_EQ(L"ElapsedTime: Error: 6. Overflow\n", Reports());
    timer_->StopTimer();
    EXPECT_EQ(L"StopTimer: Error: 6. Overflow\n", Reports());
    EXPECT_EQ(0x7FFF'FFFE, At(4)) << "the run is lost, what was kept stays";
}

TEST_F(SteeredTimer, DividesByItsScaleFactor) {
    now = 1;
    timer_->StartTimer();
    const std::pair<LONG, LONG> factors[] = {
        {0, 1}, {-5, 1}, {60000, 60000}, {-2147483647 - 1, 60000}, {8, 8}, {0x7FFFFFFF, 0x7FFFFFFF}};
    for (const auto& [given, kept] : factors) {
        LONG factor = 0;
        EXPECT_EQ(S_OK, timer_->put_ScaleFactor(given));
        EXPECT_EQ(S_OK, timer_->get_ScaleFactor(&factor));
        EXPECT_EQ(kept, factor);
        EXPECT_EQ(30000.0 / kept, At(30001));
    }
    EXPECT_EQ(L"", Reports());
}

TEST(Timer, MeasuresRealTimeInSeconds) {
    const auto timer = CreateObject<_CMMTimer>(__uuidof(::CMMTimer));
    EXPECT_EQ(0, Elapsed(timer.get()));
    LARGE_INTEGER frequency, start, end;
    QueryPerformanceFrequency(&frequency);
    QueryPerformanceCounter(&start);
    timer->StartTimer();
    Sleep(60);
    double shown = Elapsed(timer.get());
    EXPECT_LT(0, shown);
    while (Elapsed(timer.get()) == shown) Sleep(1);
    timer->StopTimer();
    QueryPerformanceCounter(&end);
    const double real = static_cast<double>(end.QuadPart - start.QuadPart) / static_cast<double>(frequency.QuadPart);
    shown = Elapsed(timer.get());
    EXPECT_NEAR(real, shown, 0.02);
    Sleep(20);
    EXPECT_EQ(shown, Elapsed(timer.get()));
}

TEST(Timer, ShowsThatThePlatformHasNoClock) {
    const ProcedurePatch missing(Library(), "timeGetTime", nullptr);
    const auto timer = CreateObject<_CMMTimer>(__uuidof(::CMMTimer));
    const ReportRecorder recorder(Library());
    EXPECT_EQ(S_OK, timer->StartTimer());
    ASSERT_EQ(1u, recorder.reports().size());
    EXPECT_EQ(L"StartTimer", recorder.reports()[0].title);
    EXPECT_EQ(L"Error: 53. File not found", recorder.reports()[0].text);
    EXPECT_EQ(0, Elapsed(timer.get()));
}

}  // namespace
}  // namespace velk::test
