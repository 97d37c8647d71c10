#pragma once

#include <gtest/gtest.h>
#include <winioctl.h>

#include <string>

#include "frame/handles.h"
#include "support/scratch_folder.h"

namespace velk::test {

// Drive Q of the Wine prefix, on a folder of its own with a label and a serial number, gone when the test ends.
// Wine's mount manager makes it, as its configuration program does.
class PrefixDrive {
  public:
    explicit PrefixDrive(ULONG type) {
        folder_.Write(L".windows-label", "FACTS");
        folder_.Write(L".windows-serial", "00A1B2C3");
        using Convert = char*(CDECL*)(LPCWSTR);
        const auto convert = reinterpret_cast<Convert>(
            reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "wine_get_unix_file_name")));
        Define(type, convert(folder_.path().c_str()));  // a few bytes that stay until the tests end
    }
    PrefixDrive(const PrefixDrive&) = delete;
    PrefixDrive& operator=(const PrefixDrive&) = delete;
    ~PrefixDrive() { Define(DRIVE_NO_ROOT_DIR, ""); }

  private:
    struct Request {
        ULONG size, type, fileSystem;
        DWORD serial;
        ULONGLONG device;
        WCHAR letter;
        USHORT folderOffset, deviceOffset, labelOffset;
    };

    static void Define(ULONG type, const std::string& folder) {
        Request request{};
        request.size = static_cast<ULONG>(sizeof request + folder.size() + 1);
        request.type = type;
        request.letter = 'q';
        if (!folder.empty()) request.folderOffset = sizeof request;
        std::string bytes(reinterpret_cast<const char*>(&request), sizeof request);
        bytes += folder + '\0';
        const FileHandle manager(CreateFileW(L"\\\\.\\MountPointManager", GENERIC_READ | GENERIC_WRITE,
                                             FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr));
        constexpr DWORD kDefine = CTL_CODE('m', 32, METHOD_BUFFERED, FILE_READ_ACCESS | FILE_WRITE_ACCESS);
        DWORD got = 0;
        EXPECT_TRUE(DeviceIoControl(manager.get(), kDefine, bytes.data(), request.size, nullptr, 0, &got, nullptr));
    }

    ScratchFolder folder_;
};

}  // namespace velk::test
