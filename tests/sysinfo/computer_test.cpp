// CComputerInfo and CMemoryStatus with a platform that is steered. What the machine really is stands in host_facts.sh.
#include <gtest/gtest.h>

#include "support/client.h"
#include "support/import_patch.h"
#include "support/late_bound.h"

namespace velk::test {
namespace {

template <class Function>
void* Address(Function* function) {
    return reinterpret_cast<void*>(function);
}

struct Fact {
    const wchar_t* property;
    LONG value;
};

template <std::size_t kCount>
void ExpectFacts(IDispatch* object, const Fact (&facts)[kCount]) {
    for (const auto& [property, value] : facts) EXPECT_EQ(value, Get(object, property).value.lVal) << property;
}

SYSTEM_INFO answer;
void WINAPI SystemInfo(LPSYSTEM_INFO info) { *info = answer; }

TEST(ComputerInfo, ReadsTheSystemRecordWithItsSigns) {
    const auto computer = CreateObject<IDispatch>(__uuidof(::CComputerInfo));
    const ImportPatch patch(Library(), "GetSystemInfo", Address(&SystemInfo));
    answer.wProcessorArchitecture = 3;
    answer.dwPageSize = 8192;
    answer.lpMinimumApplicationAddress = reinterpret_cast<void*>(0x10000);
    answer.lpMaximumApplicationAddress = reinterpret_cast<void*>(0xFFFEFFFF);
    answer.dwActiveProcessorMask = 0x8000'0001;
    answer.dwNumberOfProcessors = 64;
    answer.dwProcessorType = 4000;
    answer.dwAllocationGranularity = 0x20000;
    answer.wProcessorLevel = 0x7FFF;
    answer.wProcessorRevision = 0x8001;
    ExpectFacts(computer.get(), {{L"ProcessorArchitecture", cmiPPC},
                                 {L"PageSize", 8192},
                                 {L"MinAppAddress", 0x10000},
                                 {L"MaxAppAddress", -65537},
                                 {L"ActiveProcessorMask", static_cast<LONG>(0x8000'0001)},
                                 {L"NumberOfProcessors", 64},
                                 {L"ProcessorType", cmiMIPSR4000},
                                 {L"AllocationGranularity", 0x20000},
                                 {L"ProcessorLevel", 32767},
                                 {L"ProcessorRevision", -32767}});
    answer.wProcessorArchitecture = 0xFFFF;
    answer.wProcessorLevel = 0xFFFF;
    ExpectFacts(computer.get(), {{L"ProcessorArchitecture", cmiUnknown}, {L"ProcessorLevel", -1}});
}

int slowMachine;
int WINAPI Metrics(int index) { return index == 73 ? slowMachine : 7; }
DWORD feature;
BOOL WINAPI HasFeature(DWORD asked) { return asked == feature; }

TEST(ComputerInfo, TellsHintsAndFeaturesApart) {
    const auto computer = CreateObject<IDispatch>(__uuidof(::CComputerInfo));
    const auto flag = [&](const wchar_t* name) { return Get(computer.get(), name).value.boolVal != VARIANT_FALSE; };
    const ImportPatch metrics(Library(), "GetSystemMetrics", Address(&Metrics));
    for (slowMachine = 0; slowMachine < 16; ++slowMachine) {
        EXPECT_EQ((slowMachine & 1) != 0, flag(L"SlowMachine")) << slowMachine;
        EXPECT_EQ((slowMachine & 2) != 0, flag(L"LowMemory")) << slowMachine;
        EXPECT_EQ((slowMachine & 4) != 0, flag(L"SlowGraphics")) << slowMachine;
    }
    slowMachine = 0x700;
    EXPECT_FALSE(flag(L"SlowMachine") || flag(L"LowMemory") || flag(L"SlowGraphics"));
    const ImportPatch features(Library(), "IsProcessorFeaturePresent", Address(&HasFeature));
    const wchar_t* const names[] = {L"FloatingPointError", L"FloatingPointEmulated", L"CompareExchangeDouble",
                                    L"MMXAvailable"};
    for (feature = 0; feature < 5; ++feature) {
        for (DWORD i = 0; i < 4; ++i) EXPECT_EQ(i == feature, flag(names[i])) << names[i];
    }
}

void WINAPI Status(LPMEMORYSTATUS status) {
    EXPECT_EQ(32u, status->dwLength);
    *status = {32, 99, 0xC000'0000, 1, 0xFFFF'FFFF, 0x8000'0000, 0x7FFE'0000, 2};
}

TEST(MemoryStatus, ReadsSizesFromTwoGigabytesAsNegative) {
    const auto memory = CreateObject<IDispatch>(__uuidof(::CMemoryStatus));
    const ImportPatch patch(Library(), "GlobalMemoryStatus", Address(&Status));
    ExpectFacts(memory.get(), {{L"MemoryLoad", 99},
                               {L"TotalPhysical", -1073741824},
                               {L"AvailablePhysical", 1},
                               {L"TotalPageFile", -1},
                               {L"AvailablePageFile", -2147483647 - 1},
                               {L"TotalVirtual", 0x7FFE'0000},
                               {L"AvailableVirtual", 2}});
}

}  // namespace
}  // namespace velk::test
