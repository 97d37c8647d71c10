#pragma once

#include <cstdint>
#include <string>

#include "frame/handles.h"

namespace velk {

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
