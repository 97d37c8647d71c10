#include "platform/files.h"

#include <algorithm>

#include "platform/system_errors.h"
#include "platform/text.h"

namespace velk {
namespace {

constexpr DWORD kNotNormal = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_DIRECTORY;

RuntimeError OpenError(const std::wstring& path) noexcept {
    const DWORD error = GetLastError();
    if (path.find_first_of(L"*?") != path.npos) return RuntimeError(Error::BadFileName);
    // Opening a folder, or nothing at all, is refused in several ways; for the caller it is one fault.
    const DWORD attributes = GetFileAttributesW(path.c_str());
    const bool folder = attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    return path.empty() || folder ? RuntimeError(Error::PathFileAccess) : FromSystemError(error);
}

}  // namespace

bool FileExists(const std::wstring& path) noexcept {
    if (path.empty() || HasNul(path)) return false;
    const NoDiskPrompts quiet;
    WIN32_FIND_DATAW found;
    const FindHandle search(FindFirstFileW(path.c_str(), &found));
    if (!search) return false;
    while (found.dwFileAttributes & kNotNormal) {
        if (!FindNextFileW(search.get(), &found)) return false;
    }
    return true;
}

FileHandle OpenForReading(const std::wstring& path) {
    if (HasNul(path)) throw RuntimeError(Error::BadFileName);
    const NoDiskPrompts quiet;
    FileHandle file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                nullptr, OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
    if (!file) throw OpenError(path);
    return file;
}

std::uint64_t FileLength(const FileHandle& file) {
    LARGE_INTEGER length;
    if (!GetFileSizeEx(file.get(), &length)) throw FromSystemError(GetLastError());
    return static_cast<std::uint64_t>(length.QuadPart);
}

void SeekTo(const FileHandle& file, std::uint64_t position) noexcept {
    LARGE_INTEGER distance;
    distance.QuadPart = static_cast<LONGLONG>(position);
    SetFilePointerEx(file.get(), distance, nullptr, FILE_BEGIN);
}

std::size_t ReadBytes(const FileHandle& file, void* buffer, std::size_t count) {
    constexpr std::size_t kMost = 1u << 30;  // a single call counts in 32 bits
    std::size_t done = 0;
    while (done < count) {
        DWORD got = 0;
        const DWORD wanted = static_cast<DWORD>(std::min(count - done, kMost));
        if (!ReadFile(file.get(), static_cast<char*>(buffer) + done, wanted, &got, nullptr)) {
            throw FromSystemError(GetLastError());
        }
        if (got == 0) break;
        done += got;
    }
    return done;
}

// In pieces as long as they are ASCII: memory that is touched for the first time costs more than all the rest. From the
// first that is not the rest goes in one, since a piece may end within a character.
std::u16string GetFile(const std::wstring& path) {
    constexpr std::size_t kPiece = 0x10000;
    const FileHandle file = OpenForReading(path);
    const std::uint64_t length = FileLength(file);
    if (length > static_cast<std::uint64_t>(INT_MAX)) throw RuntimeError(Error::OutOfMemory);
    auto left = static_cast<std::size_t>(length);
    std::u16string text;
    text.reserve(left);
    for (std::string bytes; left > 0; left -= bytes.size()) {
        bytes.resize(std::min(left, kPiece));
        bytes.resize(ReadBytes(file, bytes.data(), bytes.size()));
        if (bytes.empty()) break;
        if (AppendAscii(&text, bytes)) continue;
        const std::size_t got = bytes.size();
        bytes.resize(left);
        bytes.resize(got + ReadBytes(file, bytes.data() + got, left - got));
        return text += FromAnsi(bytes);
    }
    return text;
}

}  // namespace velk
