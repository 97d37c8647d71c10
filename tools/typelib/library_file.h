// What a DLL's file says about itself, whatever its width.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/platform.h"

namespace velk {

// IMAGE_FILE_MACHINE_...; nothing when the file is no program or library.
std::optional<WORD> MachineOf(const std::wstring& path);

// Whether a program or library has all the bytes that its headers speak of; a transfer that broke off leaves fewer.
bool IsWhole(const std::wstring& path);

inline bool Is32Bit(WORD machine) noexcept { return machine == IMAGE_FILE_MACHINE_I386; }

// The four parts of a file version, 16 bits each, so that versions compare as numbers do.
using Version = std::uint64_t;

std::optional<Version> VersionOf(const std::wstring& path);
std::wstring VersionText(Version version);

}  // namespace velk
