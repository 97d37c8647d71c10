// CComputerInfo and CMemoryStatus with a platform that is steered. What the machine really is stands in host_facts.sh.
#include "support/facts.h"
#include "support/fake.h"

namespace velk::test {
namespace {

TEST(ComputerInfo, ReadsTheSystemRecordWithItsSigns) {
    const auto computer = CreateObject<IDispatch>(__uuidof(::CComputerInfo));
    SYSTEM_INFO record{};
    const Fake system("GetSystemInfo", &GetSystemInfo, [&](LPSYSTEM_INFO info) { *info = record; });
    record.wProcessorArchitecture = 0xFFFF;
    record.dwPageSize = 8192;
    record.lpMinimumApplicationAddress = reinterpret_cast<void*>(0x10000);
    record.lpMaximumApplicationAddress = reinterpret_cast<void*>(0xFFFEFFFF);
    record.dwActiveProcessorMask = 0x8000'0001;
    record.dwNumberOfProcessors = 64;
    record.dwProcessorType = 4000;
    record.dwAllocationGranularity = 0x20000;
    record.wProcessorLevel = 0x7FFF;
    record.wProcessorRevision = 0x8001;
    EXPECT_EQ(L"-1|8192|65536|-65537|-2147483647|64|4000|131072|32767|-32767|",
              Facts(computer.get(), {L"ProcessorArchitecture", L"PageSize", L"MinAppAddress", L"MaxAppAddress",
                                     L"ActiveProcessorMask", L"NumberOfProcessors", L"ProcessorType",
                                     L"AllocationGranularity", L"ProcessorLevel", L"ProcessorRevision"}));
    record.lpMaximumApplicationAddress = reinterpret_cast<void*>(UINTPTR_MAX / 2);
    EXPECT_EQ(sizeof(void*) == 8 ? L"-1|" : L"2147483647|", Facts(computer.get(), {L"MaxAppAddress"}));
}

TEST(ComputerInfo, TellsHintsAndFeaturesApart) {
    const auto computer = CreateObject<IDispatch>(__uuidof(::CComputerInfo));
    int bits = 0;
    const Fake metrics("GetSystemMetrics", &GetSystemMetrics, [&](int index) { return index == 73 ? bits : 7; });
    for (const int metric : {0, 1, 2, 4, 6, 7, 8, 0x700}) {
        bits = metric;
        EXPECT_EQ(YesNo(bits & 1) + YesNo(bits & 2) + YesNo(bits & 4),
                  Facts(computer.get(), {L"SlowMachine", L"LowMemory", L"SlowGraphics"}));
    }
    DWORD feature = 0;
    const Fake features("IsProcessorFeaturePresent", &IsProcessorFeaturePresent,
                        [&](DWORD asked) { return asked == feature; });
    for (feature = 0; feature < 5; ++feature) {
        EXPECT_EQ(YesNo(feature == 0) + YesNo(feature == 1) + YesNo(feature == 2) + YesNo(feature == 3),
                  Facts(computer.get(),
                        {L"FloatingPointError", L"FloatingPointEmulated", L"CompareExchangeDouble", L"MMXAvailable"}));
    }
}

TEST(MemoryStatus, ReadsSizesFromTwoGigabytesAsNegative) {
    const auto memory = CreateObject<IDispatch>(__uuidof(::CMemoryStatus));
    const Fake status("GlobalMemoryStatus", &GlobalMemoryStatus, [](LPMEMORYSTATUS answer) {
        EXPECT_EQ(sizeof(MEMORYSTATUS), answer->dwLength);
        *answer = {sizeof(MEMORYSTATUS), 99, 0xC000'0000, 1, 0xFFFF'FFFF, 0x8000'0000, 0x7FFE'0000, 2};
    });
    EXPECT_EQ(L"99|-1073741824|1|-1|-2147483648|2147352576|2|",
              Facts(memory.get(), {L"MemoryLoad", L"TotalPhysical", L"AvailablePhysical", L"TotalPageFile",
                                   L"AvailablePageFile", L"TotalVirtual", L"AvailableVirtual"}));
}

}  // namespace
}  // namespace velk::test
