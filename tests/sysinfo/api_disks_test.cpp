// CAPIDisks as its clients see it.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "frame/text.h"
#include "support/client.h"
#include "support/late_bound.h"
#include "support/procedure_patch.h"
#include "support/report_recorder.h"
#include "sysinfo/prefix_drive.h"

namespace velk::test {
namespace {

const std::string kBlankBuffer(255, ' ');

template <class Function>
void* Address(Function* function) {
    return reinterpret_cast<void*>(function);
}

class Disks : public testing::Test {
  protected:
    VARIANT Read(const wchar_t* property, LONG position) {
        return Get(disks_.get(), property, {Arg(position)}).value.Detach();
    }
    std::wstring TextAt(const wchar_t* property, LONG position) {
        return TextOf(Get(disks_.get(), property, {Arg(position)}).value);
    }
    bool IsReady(LONG position) { return Call(disks_.get(), L"IsDriveReady", {Arg(position)}).value.boolVal != 0; }
    // -1 for a drive that is not there.
    LONG PositionOf(const std::wstring& root) {
        for (LONG i = 0; !TextAt(L"LogicalDrives", i).empty(); ++i) {
            if (TextAt(L"LogicalDrives", i) == root) return i;
        }
        return -1;
    }
    void ExpectUnreadable(LONG position) {
        for (const wchar_t* property : {L"DriveLabel", L"DriveSerialNumber", L"DriveFileSystemType"}) {
            EXPECT_EQ(L"", TextAt(property, position)) << property;
        }
        EXPECT_EQ(0, Read(L"DriveType", position).lVal);
        EXPECT_EQ(0, Read(L"DriveFlags", position).lVal);
        EXPECT_EQ(0, Read(L"DiskFreeSpace", position).dblVal);
        EXPECT_EQ(0, Read(L"DiskTotalSpace", position).dblVal);
        EXPECT_FALSE(IsReady(position));
    }

    ComPtr<IDispatch> disks_ = CreateObject<IDispatch>(__uuidof(::CAPIDisks));
};

TEST_F(Disks, TellsTheFactsOfARealDriveOfEachType) {
    for (const LONG type : {DRIVE_REMOVABLE, DRIVE_FIXED, DRIVE_REMOTE, DRIVE_CDROM, DRIVE_RAMDISK}) {
        const PrefixDrive drive('Q', static_cast<UINT>(type));
        const LONG position = PositionOf(drive.root());
        ASSERT_GT(position, 0);
        EXPECT_EQ(type, Read(L"DriveType", position).lVal);
        EXPECT_EQ(L"FACTS", TextAt(L"DriveLabel", position));
        EXPECT_EQ(L"A1B2C3", TextAt(L"DriveSerialNumber", position));
        wchar_t fileSystem[64];
        DWORD flags = 0;
        GetVolumeInformationW(drive.root().c_str(), nullptr, 0, nullptr, nullptr, &flags, fileSystem, 64);
        EXPECT_EQ(static_cast<LONG>(flags), Read(L"DriveFlags", position).lVal);
        EXPECT_EQ(fileSystem, TextAt(L"DriveFileSystemType", position));
        EXPECT_TRUE(IsReady(position));
        EXPECT_GT(Read(L"DiskTotalSpace", position).dblVal, Read(L"DiskFreeSpace", position).dblVal);
    }
}

TEST_F(Disks, FollowsDrivesThatComeAndGo) {
    PrefixDrive drive('Q', DRIVE_FIXED);
    const LONG position = PositionOf(L"Q:\\");
    const SHORT count = Call(disks_.get(), L"GetDriveCount").value.iVal;
    EXPECT_EQ(L"", TextAt(L"LogicalDrives", count));
    drive.Remove();
    EXPECT_EQ(-1, PositionOf(L"Q:\\"));
    EXPECT_NE(L"FACTS", TextAt(L"DriveLabel", position)) << "the position is now another drive's";
    EXPECT_EQ(count - 1, Call(disks_.get(), L"GetDriveCount").value.iVal);
    ExpectUnreadable(count);
    ExpectUnreadable(-1);
}

// A drive in the list whose volume cannot be read, as an empty CD drive's.
TEST_F(Disks, HasNoFactsOfADriveThatIsNotReady) {
    ASSERT_TRUE(DefineDosDeviceW(0, L"Q:", L"C:\\no such folder"));
    ExpectUnreadable(PositionOf(L"Q:\\"));
    DefineDosDeviceW(DDD_REMOVE_DEFINITION, L"Q:", nullptr);
    EXPECT_EQ(-1, PositionOf(L"Q:\\"));
}

// A list of drives of the tests' own.
std::string list;
DWORD WINAPI FillList(DWORD size, LPSTR buffer) {
    EXPECT_EQ(255u, size);
    EXPECT_EQ(kBlankBuffer, std::string(buffer, size));
    std::memcpy(buffer, list.data(), list.size());
    return static_cast<DWORD>(list.size() - 1);
}

TEST_F(Disks, WalksListsOfAnySize) {
    const ImportPatch patch(Library(), "GetLogicalDriveStringsA", Address(&FillList));
    for (const int count : {0, 1, 26}) {
        list.clear();
        for (int i = 0; i < count; ++i) list += std::string(1, static_cast<char>('A' + i)) + ":\\" + '\0';
        list += '\0';
        for (int i = 0; i < count; ++i) EXPECT_EQ(std::wstring(1, L'A' + i) + L":\\", TextAt(L"LogicalDrives", i));
        for (const int outside : {count, -1, 32767}) EXPECT_EQ(L"", TextAt(L"LogicalDrives", outside)) << outside;
    }
}

struct SpaceAnswer {
    BOOL succeeds;
    ULONGLONG freeForCaller, total;
} space;
std::string askedRoot;

BOOL WINAPI ExtendedSpace(LPCSTR root, PULARGE_INTEGER freeForCaller, PULARGE_INTEGER total, PULARGE_INTEGER free) {
    askedRoot = root;
    if (!space.succeeds) return FALSE;
    freeForCaller->QuadPart = space.freeForCaller;
    total->QuadPart = space.total;
    if (free) free->QuadPart = 1;
    return TRUE;
}

BOOL WINAPI OlderSpace(LPCSTR root, LPDWORD sectors, LPDWORD bytes, LPDWORD freeClusters, LPDWORD clusters) {
    askedRoot = root;
    *sectors = 64;
    *bytes = 4096;
    *freeClusters = 3;
    *clusters = 0xFFFF'FFFF;
    return space.succeeds;
}

TEST_F(Disks, GivesTerabytesExactly) {
    const ProcedurePatch patch(Library(), "GetDiskFreeSpaceExA", Address(&ExtendedSpace));
    for (const ULONGLONG bytes :
         {0ULL, 4'294'967'295ULL, 5'497'558'138'881ULL, 1'000'000'000'000'000ULL, 9'007'199'254'740'991ULL}) {
        space = {TRUE, bytes / 3, bytes};
        EXPECT_EQ(static_cast<double>(bytes / 3), Read(L"DiskFreeSpace", 0).dblVal);
        EXPECT_EQ(static_cast<double>(bytes), Read(L"DiskTotalSpace", 0).dblVal);
        EXPECT_EQ("C:\\", askedRoot);
    }
    space.succeeds = FALSE;
    EXPECT_EQ(0, Read(L"DiskFreeSpace", 0).dblVal);
    EXPECT_EQ(0, Read(L"DiskTotalSpace", 0).dblVal);
}

HMODULE WINAPI LoadNothing(LPCWSTR, HANDLE, DWORD) { return nullptr; }

TEST_F(Disks, AsksTheOlderWayWhereTheNewerIsMissing) {
    const ImportPatch older(Library(), "GetDiskFreeSpaceA", Address(&OlderSpace));
    {
        const ProcedurePatch missing(Library(), "GetDiskFreeSpaceExA", nullptr);
        askedRoot.clear();
        space.succeeds = TRUE;
        EXPECT_EQ(786432.0, Read(L"DiskFreeSpace", 0).dblVal);
        EXPECT_EQ(4294967295.0 * 262144, Read(L"DiskTotalSpace", 0).dblVal);
        EXPECT_EQ("C:\\", askedRoot);
        space.succeeds = FALSE;
        EXPECT_EQ(-1, Read(L"DiskFreeSpace", 0).dblVal);
        EXPECT_EQ(-1, Read(L"DiskTotalSpace", 0).dblVal);
    }
    const ImportPatch noLibrary(Library(), "LoadLibraryExW", Address(&LoadNothing));
    EXPECT_EQ(0, Read(L"DiskTotalSpace", 0).dblVal);
}

struct VolumeAnswer {
    BOOL result;
    bool setsError;
    DWORD error;
} volume;

BOOL WINAPI VolumeInformation(LPCSTR, LPSTR label, DWORD labelSize, LPDWORD serial, LPDWORD length, LPDWORD flags,
                              LPSTR fileSystem, DWORD fileSystemSize) {
    EXPECT_EQ(255u, labelSize);
    EXPECT_EQ(255u, fileSystemSize);
    EXPECT_EQ(kBlankBuffer, std::string(label, labelSize));
    EXPECT_EQ(kBlankBuffer, std::string(fileSystem, fileSystemSize));
    EXPECT_NE(nullptr, length);
    std::memcpy(label, "L\xE4sst\0cut", 9);
    fileSystem[0] = '\0';
    *serial = 0;
    *flags = 0x8000'0001;
    if (volume.setsError) SetLastError(volume.error);
    return volume.result;
}

TEST_F(Disks, IsReadyByTheLastErrorAndNotByTheResult) {
    const ImportPatch patch(Library(), "GetVolumeInformationA", Address(&VolumeInformation));
    const std::pair<VolumeAnswer, bool> cases[] = {
        {{TRUE, true, ERROR_SUCCESS}, true},
        {{FALSE, true, ERROR_SUCCESS}, true},
        {{TRUE, true, ERROR_NOT_READY}, false},
        {{FALSE, true, ERROR_NOT_READY}, false},
        {{TRUE, false, 0}, true},  // nor by what somebody left before
    };
    for (const auto& [answer, ready] : cases) {
        volume = answer;
        SetLastError(ERROR_ACCESS_DENIED);
        EXPECT_EQ(ready, IsReady(0)) << answer.result << answer.error;
        EXPECT_EQ(answer.result ? L"L\u00E4sst" : L"", TextAt(L"DriveLabel", 0));
        EXPECT_EQ(answer.result ? L"0" : L"", TextAt(L"DriveSerialNumber", 0));
        EXPECT_EQ(L"", TextAt(L"DriveFileSystemType", 0));
        EXPECT_EQ(answer.result ? static_cast<LONG>(0x8000'0001) : 0, Read(L"DriveFlags", 0).lVal);
        EXPECT_EQ(answer.result ? DRIVE_FIXED : 0u, Read(L"DriveType", 0).ulVal);
    }
}

std::string writtenLabel;
BOOL WINAPI WriteLabel(LPCSTR root, LPCSTR label) {
    writtenLabel = std::string(root) + label;
    return FALSE;
}

TEST_F(Disks, WritesALabelAndReportsNothing) {
    const ImportPatch patch(Library(), "SetVolumeLabelA", Address(&WriteLabel));
    const ReportRecorder recorder(Library());
    Variant label = Text(L"L\u00E4sst");
    for (const auto& [position, written] : {std::pair<LONG, std::string>{0, "C:\\L\xE4sst"}, {99, "L\xE4sst"}}) {
        EXPECT_EQ(S_OK, Call(disks_.get(), L"WriteVolumeLabel", {Arg(position), Arg(&label)}).result);
        EXPECT_EQ(written, writtenLabel);
    }
    EXPECT_TRUE(recorder.reports().empty());
}

TEST_F(Disks, SpellsCodesOutAndShowsWhatCannotBe) {
    const ReportRecorder recorder(Library());
    const auto letter = [&](LONG number) {
        return TextOf(Call(disks_.get(), L"DriveLetterFromNumber", {Arg(number)}).value);
    };
    EXPECT_EQ(L"C", letter(2));
    EXPECT_EQ(L"\u00E4", letter(0xE4 - 'A')) << "beyond ASCII by the ANSI code page";
    EXPECT_EQ(std::wstring(1, L'\0'), letter(-65));
    EXPECT_EQ(L"Fixed", TextOf(Call(disks_.get(), L"DriveTypeToString", {Arg(LONG{3})}).value));
    EXPECT_EQ(L"Uses persistent ACLs, Volume is compressed",
              TextOf(Call(disks_.get(), L"VolumeFlagsToString", {Arg(static_cast<LONG>(0x8000'0008))}).value));
    EXPECT_TRUE(recorder.reports().empty());
    EXPECT_EQ(L"", letter(191));
    EXPECT_EQ(L"", letter(32703));
    ASSERT_EQ(2u, recorder.reports().size());
    EXPECT_EQ(L"DriveLetterFromNumber", recorder.reports()[0].title);
    EXPECT_EQ(L"Error: 5. Invalid procedure call or argument", recorder.reports()[0].text);
    EXPECT_EQ(L"Error: 6. Overflow", recorder.reports()[1].text);
}

}  // namespace
}  // namespace velk::test
