#pragma once

#include <gtest/gtest.h>
#include <winioctl.h>

#include <cstring>
#include <string>

#include "frame/handles.h"
#include "support/scratch_folder.h"

namespace velk::test {

// A real drive of the Wine prefix, on a folder of its own with a label and a serial number, gone when the test ends.
// Wine's mount manager makes it, as its configuration program does.
class PrefixDrive {
  public:
    PrefixDrive(char letter, UINT type) : letter_(letter) {
        folder_.Write(L".windows-label", "FACTS");
        folder_.Write(L".windows-serial", "00A1B2C3");
        Define(type, UnixPath(folder_.path()));
    }
    PrefixDrive(const PrefixDrive&) = delete;
    PrefixDrive& operator=(const PrefixDrive&) = delete;
    ~PrefixDrive() { Remove(); }

    void Remove() {
        if (letter_) Define(DRIVE_NO_ROOT_DIR, "");
        letter_ = 0;
    }
    std::wstring root() const { return {static_cast<wchar_t>(letter_), L':', L'\\'}; }

  private:
    struct Request {
        ULONG size, type, fileSystem;
        DWORD serial;
        ULONGLONG device;
        WCHAR letter;
        USHORT mountPointOffset, deviceOffset, labelOffset;
    };

    static std::string UnixPath(const std::wstring& path) {
        using Convert = char*(CDECL*)(LPCWSTR);
        const auto convert = reinterpret_cast<Convert>(
            reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "wine_get_unix_file_name")));
        char* const converted = convert(path.c_str());
        const std::string result = converted;
        HeapFree(GetProcessHeap(), 0, converted);
        return result;
    }

    void Define(UINT type, const std::string& folder) const {
        constexpr DWORD kDefineUnixDrive = CTL_CODE('m', 32, METHOD_BUFFERED, FILE_READ_ACCESS | FILE_WRITE_ACCESS);
        Request request{};
        request.size = static_cast<ULONG>(sizeof request + folder.size() + 1);
        request.type = type;
        request.letter = static_cast<WCHAR>(letter_ - 'A' + 'a');
        if (!folder.empty()) request.mountPointOffset = sizeof request;
        std::string bytes(reinterpret_cast<const char*>(&request), sizeof request);
        bytes += folder + '\0';
        const FileHandle manager(CreateFileW(L"\\\\.\\MountPointManager", GENERIC_READ | GENERIC_WRITE,
                                             FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr));
        DWORD got = 0;
        EXPECT_TRUE(
            DeviceIoControl(manager.get(), kDefineUnixDrive, bytes.data(), request.size, nullptr, 0, &got, nullptr));
    }

    char letter_;
    ScratchFolder folder_;
};

}  // namespace velk::test
