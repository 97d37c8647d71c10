// CAPIDisks as its clients see it.
#include <cstring>
#include <string>

#include "support/facts.h"
#include "support/fake.h"
#include "support/procedure_patch.h"
#include "support/report_recorder.h"

namespace velk::test {
namespace {

const std::string kBlanks(255, ' ');

class Disks : public testing::Test {
  protected:
    std::wstring At(LONG position, const wchar_t* member) { return Fact(disks_.get(), member, {Arg(position)}); }
    double Bytes(const wchar_t* member) { return Get(disks_.get(), member, {Arg(LONG{0})}).value.dblVal; }
    LONG PositionOf(const wchar_t* root) {  // -1 for a drive that is not there
        for (LONG i = 0; !At(i, L"LogicalDrives").empty(); ++i) {
            if (At(i, L"LogicalDrives") == root) return i;
        }
        return -1;
    }
    std::wstring VolumeAt(LONG position) {
        return Facts(
            disks_.get(),
            {L"DriveLabel", L"DriveSerialNumber", L"DriveFileSystemType", L"DriveType", L"DriveFlags", L"IsDriveReady"},
            {Arg(position)});
    }
    void ExpectUnreadable(LONG position) {
        EXPECT_EQ(L"|||0|0|False|", VolumeAt(position));
        EXPECT_EQ(L"0|0|", Facts(disks_.get(), {L"DiskFreeSpace", L"DiskTotalSpace"}, {Arg(position)}));
    }

    ComPtr<IDispatch> disks_ = CreateObject<IDispatch>(__uuidof(::CAPIDisks));
};

TEST_F(Disks, TellTheFactsOfRealDrivesThatComeAndGo) {
    LONG count = 0;
    for (std::wstring root; !(root = At(count, L"LogicalDrives")).empty(); ++count) {
        wchar_t label[64], fileSystem[64], told[200];
        DWORD serial = 0, flags = 0;
        if (!GetVolumeInformationW(root.c_str(), label, 64, &serial, nullptr, &flags, fileSystem, 64)) {
            ExpectUnreadable(count);
            continue;
        }
        swprintf(told, 200, L"%ls|%lX|%ls|%u|%lu|True|", label, serial, fileSystem, GetDriveTypeW(root.c_str()), flags);
        EXPECT_EQ(told, VolumeAt(count));
    }
    EXPECT_EQ(std::to_wstring(count), Fact(disks_.get(), L"GetDriveCount"));
    for (const LONG none : {count, -1L}) ExpectUnreadable(none);
    ASSERT_TRUE(DefineDosDeviceW(0, L"Q:", L"C:\\no such folder"));  // listed, but not readable: as an empty CD drive
    EXPECT_EQ(std::to_wstring(count + 1), Fact(disks_.get(), L"GetDriveCount"));
    ExpectUnreadable(PositionOf(L"Q:\\"));
    DefineDosDeviceW(DDD_REMOVE_DEFINITION, L"Q:", nullptr);
    EXPECT_EQ(-1, PositionOf(L"Q:\\"));
}

TEST_F(Disks, WalkListsOfAnySize) {
    std::string list;
    const Fake strings("GetLogicalDriveStringsA", &GetLogicalDriveStringsA, [&](DWORD size, LPSTR buffer) {
        EXPECT_EQ(kBlanks, std::string(buffer, size));
        std::memcpy(buffer, list.data(), list.size());
        return list.size() - 1;
    });
    for (const int count : {0, 1, 26}) {
        list.clear();
        for (int i = 0; i < count; ++i) list += std::string(1, static_cast<char>('A' + i)) + ":\\" + '\0';
        list += '\0';
        for (int i = 0; i < count; ++i) EXPECT_EQ(std::wstring(1, L'A' + i) + L":\\", At(i, L"LogicalDrives"));
        for (const LONG outside : {LONG{count}, LONG{-1}, LONG{32767}}) EXPECT_EQ(L"", At(outside, L"LogicalDrives"));
    }
}

BOOL succeeds;
ULONGLONG freeBytes, totalBytes;
BOOL WINAPI ExtendedSpace(LPCSTR root, PULARGE_INTEGER forCaller, PULARGE_INTEGER total, PULARGE_INTEGER) {
    EXPECT_STREQ("C:\\", root);
    EXPECT_TRUE(GetThreadErrorMode() & SEM_FAILCRITICALERRORS);
    if (!succeeds) return FALSE;
    forCaller->QuadPart = freeBytes;
    total->QuadPart = totalBytes;
    return TRUE;
}
TEST_F(Disks, GiveSpaceExactlyAndFailInTwoWays) {
    const Fake older("GetDiskFreeSpaceA", &GetDiskFreeSpaceA,
                     [](LPCSTR, LPDWORD sectors, LPDWORD bytes, LPDWORD freeClusters, LPDWORD clusters) {
                         *sectors = 64, *bytes = 4096, *freeClusters = 3, *clusters = 0xFFFF'FFFF;
                         return succeeds;
                     });
    const auto expect = [&](double free, double total) {
        EXPECT_EQ(free, Bytes(L"DiskFreeSpace"));
        EXPECT_EQ(total, Bytes(L"DiskTotalSpace"));
    };
    {
        const ProcedurePatch patch(Library(), "GetDiskFreeSpaceExA", Address(&ExtendedSpace));
        succeeds = TRUE;
        for (const ULONGLONG bytes : {4'294'967'295ULL, 5'497'558'138'881ULL, 9'007'199'254'740'991ULL}) {
            freeBytes = bytes / 3, totalBytes = bytes;
            expect(static_cast<double>(bytes / 3), static_cast<double>(bytes));
        }
        succeeds = FALSE;
        expect(0, 0);
    }
    {
        const ProcedurePatch missing(Library(), "GetDiskFreeSpaceExA", nullptr);
        expect(-1, -1);
        succeeds = TRUE;
        expect(786432, 4294967295.0 * 262144);
    }
    const Fake noLibrary("LoadLibraryExW", &LoadLibraryExW, [](LPCWSTR, HANDLE, DWORD) { return nullptr; });
    const Fake unload("FreeLibrary", &FreeLibrary, [](HMODULE none) { return none != nullptr; });
    expect(0, 0);
    EXPECT_EQ(2, unload.calls());
}

TEST_F(Disks, AreReadyByTheLastErrorAndNotByTheResult) {
    constexpr DWORD kUntouched = 0xFFFF'FFFF;
    BOOL readable = FALSE;
    DWORD lastError = 0;
    const Fake volume("GetVolumeInformationA", &GetVolumeInformationA,
                      [&](LPCSTR, LPSTR label, DWORD labelSize, LPDWORD serial, LPDWORD, LPDWORD flags,
                          LPSTR fileSystem, DWORD fileSystemSize) {
                          EXPECT_EQ(kBlanks + kBlanks,
                                    std::string(label, labelSize) + std::string(fileSystem, fileSystemSize));
                          EXPECT_TRUE(GetThreadErrorMode() & SEM_FAILCRITICALERRORS);
                          std::memcpy(label, "L\xE4sst\0cut", 9);
                          *fileSystem = '\0';
                          *serial = 0;
                          *flags = 0x8000'0001;
                          if (lastError != kUntouched) SetLastError(lastError);
                          return readable;
                      });
    for (const DWORD error : {DWORD{ERROR_SUCCESS}, DWORD{ERROR_NOT_READY}, kUntouched}) {
        lastError = error;
        for (readable = FALSE; readable <= TRUE; ++readable) {
            SetLastError(ERROR_ACCESS_DENIED);  // left by somebody before
            EXPECT_EQ((readable ? L"L\u00E4sst|0||3|-2147483647|" : L"|||0|0|") + YesNo(error != ERROR_NOT_READY),
                      VolumeAt(0));
        }
    }
}

TEST_F(Disks, WriteALabelAndSpellCodesOut) {
    ReportRecorder recorder(Library());
    std::string written;
    const Fake write("SetVolumeLabelA", &SetVolumeLabelA, [&](LPCSTR root, LPCSTR label) {
        EXPECT_TRUE(GetThreadErrorMode() & SEM_FAILCRITICALERRORS) << "no box asks for a disk";
        written += std::string(root) + label + "|";
        return FALSE;
    });
    for (const LONG position : {0L, 99L}) {
        EXPECT_EQ(S_OK, Call(disks_.get(), L"WriteVolumeLabel", {Arg(position), Text(L"L\u00E4sst")}).result);
    }
    EXPECT_EQ("C:\\L\xE4sst|L\xE4sst|", written);
    EXPECT_EQ(L"CDROM", At(5, L"DriveTypeToString"));
    EXPECT_EQ(L"Uses persistent ACLs", At(8, L"VolumeFlagsToString"));
    EXPECT_EQ(L"\u00E4", At(0xE4 - 'A', L"DriveLetterFromNumber")) << "by the ANSI code page";
    EXPECT_EQ(std::wstring(1, L'\0'), At(-65, L"DriveLetterFromNumber"));
    EXPECT_EQ(L"", recorder.Shown());
    EXPECT_EQ(L"", At(191, L"DriveLetterFromNumber"));
    EXPECT_EQ(L"DriveLetterFromNumber: Error: 5. Invalid procedure call or argument|", recorder.Shown());
}

}  // namespace
}  // namespace velk::test
