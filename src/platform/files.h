#pragma once

#include <cstdint>
#include <string>

#include "platform/handles.h"

namespace velk {

// An empty drive fails at once, instead of the system asking the user to insert a disk. For this thread only.
class NoDiskPrompts {
  public:
    NoDiskPrompts() noexcept { SetThreadErrorMode(SEM_FAILCRITICALERRORS | GetThreadErrorMode(), &before_); }
    NoDiskPrompts(const NoDiskPrompts&) = delete;
    NoDiskPrompts& operator=(const NoDiskPrompts&) = delete;
    ~NoDiskPrompts() { SetThreadErrorMode(before_, nullptr); }

  private:
    DWORD before_ = 0;
};

// Whether the name, or a pattern with wildcards, finds at least one normal file: no hidden or system file, no folder.
bool FileExists(const std::wstring& path) noexcept;

// Opens for reading and lets others go on reading and writing. Throws the run-time error of what went wrong.
FileHandle OpenForReading(const std::wstring& path);

std::uint64_t FileLength(const FileHandle& file);

void SeekTo(const FileHandle& file, std::uint64_t position) noexcept;

// Reads up to `count` bytes from the current position; returns fewer only at the end of the file.
std::size_t ReadBytes(const FileHandle& file, void* buffer, std::size_t count);

// The whole file as text, one character a byte by the system's ANSI code page.
std::u16string GetFile(const std::wstring& path);

}  // namespace velk
