// What is to be read out of the platform's answers about drives and volumes.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace velk {

// The root path at a position, counted from 0, in a list of NUL-ended root paths. `length` is the list's length as the
// platform gave it, without the NUL that ends the list; it can exceed the buffer, which then holds no list. Empty for a
// position that the list does not have.
std::string RootAt(std::string_view buffer, std::size_t length, int position);

// How many of the drives A to Z are in a mask of drives.
int CountDrives(std::uint32_t mask) noexcept;

// "A" for 0. Error 6 when the character's code does not fit an Integer, 5 when there is no such character.
char DriveLetter(std::int16_t number);

// Empty for an unknown type.
std::string_view DriveTypeText(std::int32_t type) noexcept;

// The capabilities' texts, joined by ", ".
std::string VolumeFlagsText(std::uint32_t flags);

}  // namespace velk
