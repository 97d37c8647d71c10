#include "tools/typelib/library_file.h"

#include <vector>

#include "platform/handles.h"

namespace velk {

std::optional<WORD> MachineOf(const std::wstring& path) {
    const FileHandle file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr,
                                      OPEN_EXISTING, 0, nullptr));
    IMAGE_DOS_HEADER dos{};
    struct {
        DWORD signature;
        IMAGE_FILE_HEADER header;
    } pe{};
    DWORD read = 0;
    const auto get = [&](void* to, DWORD size) {
        return ReadFile(file.get(), to, size, &read, nullptr) && read == size;
    };
    if (!file || !get(&dos, sizeof dos) || dos.e_magic != IMAGE_DOS_SIGNATURE) return std::nullopt;
    SetFilePointer(file.get(), dos.e_lfanew, nullptr, FILE_BEGIN);
    if (!get(&pe, sizeof pe) || pe.signature != IMAGE_NT_SIGNATURE) return std::nullopt;
    return pe.header.Machine;
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
