// CComputerInfo and CMemoryStatus with a platform that is steered. What the machine really is stands in host_facts.sh.
#include "support/client.h"
#include "support/import_patch.h"
#include "sysinfo/facts.h"

namespace velk::test {
namespace {

SYSTEM_INFO record;
void WINAPI SystemInfo(LPSYSTEM_INFO info) { *info = record; }
int metric;
int WINAPI Metrics(int index) { return index == 73 ? metric : 7; }
DWORD feature;
BOOL WINAPI HasFeature(DWORD asked) { return asked == feature; }

TEST(ComputerInfo, ReadsTheSystemRecordWithItsSigns) {
    const auto computer = CreateObject<IDispatch>(__uuidof(::CComputerInfo));
    const ImportPatch patch(Library(), "GetSystemInfo", Address(&SystemInfo));
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
    ExpectFacts(computer.get(), {{L"ProcessorArchitecture", L"-1"},
                                 {L"PageSize", L"8192"},
                                 {L"MinAppAddress", L"65536"},
                                 {L"MaxAppAddress", L"-65537"},
                                 {L"ActiveProcessorMask", L"-2147483647"},
                                 {L"NumberOfProcessors", L"64"},
                                 {L"ProcessorType", L"4000"},
                                 {L"AllocationGranularity", L"131072"},
                                 {L"ProcessorLevel", L"32767"},
                                 {L"ProcessorRevision", L"-32767"}});
}

TEST(ComputerInfo, TellsHintsAndFeaturesApart) {
    const auto computer = CreateObject<IDispatch>(__uuidof(::CComputerInfo));
    const auto yes = [](bool value) { return value ? L"True" : L"False"; };
    const ImportPatch metrics(Library(), "GetSystemMetrics", Address(&Metrics));
    for (const int bits : {0, 1, 2, 4, 6, 7, 8, 0x700}) {
        metric = bits;
        ExpectFacts(computer.get(),
                    {{L"SlowMachine", yes(bits & 1)}, {L"LowMemory", yes(bits & 2)}, {L"SlowGraphics", yes(bits & 4)}});
    }
    const ImportPatch features(Library(), "IsProcessorFeaturePresent", Address(&HasFeature));
    for (feature = 0; feature < 5; ++feature) {
        ExpectFacts(computer.get(), {{L"FloatingPointError", yes(feature == 0)},
                                     {L"FloatingPointEmulated", yes(feature == 1)},
                                     {L"CompareExchangeDouble", yes(feature == 2)},
                                     {L"MMXAvailable", yes(feature == 3)}});
    }
}

void WINAPI Status(LPMEMORYSTATUS status) {
    EXPECT_EQ(32u, status->dwLength);
    *status = {32, 99, 0xC000'0000, 1, 0xFFFF'FFFF, 0x8000'0000, 0x7FFE'0000, 2};
}

TEST(MemoryStatus, ReadsSizesFromTwoGigabytesAsNegative) {
    const auto memory = CreateObject<IDispatch>(__uuidof(::CMemoryStatus));
    const ImportPatch patch(Library(), "GlobalMemoryStatus", Address(&Status));
    ExpectFacts(memory.get(), {{L"MemoryLoad", L"99"},
                               {L"TotalPhysical", L"-1073741824"},
                               {L"AvailablePhysical", L"1"},
                               {L"TotalPageFile", L"-1"},
                               {L"AvailablePageFile", L"-2147483648"},
                               {L"TotalVirtual", L"2147352576"},
                               {L"AvailableVirtual", L"2"}});
}

}  // namespace
}  // namespace velk::test
