#include "tools/typelib/library_file.h"

#include <algorithm>
#include <vector>

#include "platform/handles.h"

namespace velk {

namespace {

// A file with the headers of a program or library, read in order.
class ProgramFile {
  public:
    explicit ProgramFile(const std::wstring& path)
        : file_(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING, 0,
                            nullptr)) {
        IMAGE_DOS_HEADER dos{};
        DWORD signature = 0;
        if (!file_ || !Read(dos) || dos.e_magic != IMAGE_DOS_SIGNATURE) return;
        SetFilePointer(file_.get(), dos.e_lfanew, nullptr, FILE_BEGIN);
        hasHeaders_ = Read(signature) && signature == IMAGE_NT_SIGNATURE && Read(header_);
    }

    bool HasHeaders() const { return hasHeaders_; }
    WORD Machine() const { return header_.Machine; }

    // Where the last section ends, in bytes.
    std::optional<ULONGLONG> Needed() {
        SetFilePointer(file_.get(), header_.SizeOfOptionalHeader, nullptr, FILE_CURRENT);
        ULONGLONG end = 0;
        for (WORD i = 0; i < header_.NumberOfSections; ++i) {
            IMAGE_SECTION_HEADER section{};
            if (!Read(section)) return std::nullopt;
            end = std::max(end, ULONGLONG{section.PointerToRawData} + section.SizeOfRawData);
        }
        return end;
    }

    ULONGLONG Size() const {
        LARGE_INTEGER size{};
        GetFileSizeEx(file_.get(), &size);
        return static_cast<ULONGLONG>(size.QuadPart);
    }

  private:
    template <class T>
    bool Read(T& into) {
        DWORD read = 0;
        return ReadFile(file_.get(), &into, sizeof into, &read, nullptr) && read == sizeof into;
    }

    const FileHandle file_;
    IMAGE_FILE_HEADER header_{};
    bool hasHeaders_ = false;
};

}  // namespace

std::optional<WORD> MachineOf(const std::wstring& path) {
    const ProgramFile file(path);
    return file.HasHeaders() ? std::optional(file.Machine()) : std::nullopt;
}

bool IsWhole(const std::wstring& path) {
    ProgramFile file(path);
    const std::optional<ULONGLONG> needed = file.HasHeaders() ? file.Needed() : std::nullopt;
    return needed && file.Size() >= *needed;
}

std::optional<Version> VersionOf(const std::wstring& path) {
    std::vector<BYTE> block(GetFileVersionInfoSizeW(path.c_str(), nullptr));
    VS_FIXEDFILEINFO* fixed = nullptr;
    UINT size = 0;
    if (block.empty() || !GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(block.size()), block.data()) ||
        !VerQueryValueW(block.data(), L"\\", reinterpret_cast<void**>(&fixed), &size))
        return std::nullopt;
    return Version{fixed->dwFileVersionMS} << 32 | fixed->dwFileVersionLS;
}

std::wstring VersionText(Version version) {
    const auto part = [version](int shift) { return std::to_wstring(version >> shift & 0xFFFF); };
    return part(48) + L"." + part(32) + L"." + part(16) + L"." + part(0);
}

}  // namespace velk
