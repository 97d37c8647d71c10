// Paths at the platform's limits. What each failure of a file means is in crc32.facts and dat_file.facts.
#include <gtest/gtest.h>

#include "frame/module/library.h"
#include "support/departures.h"
#include "support/fake.h"
#include "support/late_bound.h"
#include "support/report_recorder.h"

namespace velk::test {
namespace {

TEST(Paths, OfTheLibraryMayBeLong) {
    const std::wstring path = L"C:\\" + std::wstring(700, L'f') + L"\\Velk.Sprt.dll";
    const auto name = [&](HMODULE, LPWSTR place, DWORD size) {
        const auto length = static_cast<DWORD>(path.copy(place, size));
        if (length < size) place[length] = L'\0';
        return length;
    };
    const Fake fake("GetModuleFileNameW", &GetModuleFileNameW, name, GetModuleHandleW(nullptr));
    EXPECT_EQ(path, library::FilePath());
    EXPECT_EQ(L"Velk.Sprt", library::FileBaseName());
}

TEST(Paths, ThatLeadNowhereAreFailures) {
    ReportRecorder recorder(Library());
    const auto checksum = CreateObject<IDispatch>(__uuidof(::CCRC32));
    for (const std::wstring& path : {std::wstring(L"Q:\\plain.txt"), L"C:\\" + std::wstring(300, L'n')}) {
        Let(checksum.get(), L"InputFileName", {Text(path)});
        Call(checksum.get(), L"GetCRCFromFile");
        EXPECT_EQ(Departs("CreateFile") ? L"GetCRCFromFile: Error: 53. File not found|"
                                        : L"GetCRCFromFile: Error: 76. Path not found|",
                  recorder.Shown());
    }
}

}  // namespace
}  // namespace velk::test
