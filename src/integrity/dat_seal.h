// The part of a parameter file's text that its seal covers.
#pragma once

#include <string_view>

namespace velk {

// Starts at the first "[BEGIN]"; the position (from 1) of the last "[END]" is its length, clipped at the end
// of the text. Deliberately the length: only with "[BEGIN]" at the very start does the region stop at
// "[END]", with a later one it reaches further. Empty without "[END]"; RuntimeError(Error::InvalidProcedureCall)
// without "[BEGIN]".
std::u16string_view SealedRegion(std::u16string_view text);

}  // namespace velk
