// The texts that the file dialog takes and gives: buffers of a fixed size, and parts that are separated by NULs.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace velk::file_dialog {

// "A|a|B|b" as A NUL a NUL B NUL b NUL NUL. What lies between the separators is taken as it is.
std::u16string FilterList(std::u16string_view filter);

// The text followed by NULs up to `size` characters; error 5 when it is longer than that.
std::u16string Padded(std::u16string_view text, std::int16_t size);

// The text before the first two NULs in a row, with a blank for each NUL in it: several chosen files become the folder
// and the names, separated by blanks. Deliberate: a pair that ends the buffer does not count, and without a pair
// nothing is left, so that a buffer which the dialog filled to its last characters comes back empty.
std::u16string TrimNulls(std::u16string_view buffer);

// A dialog that writes a name over a longer one leaves that one's end behind it. Such an end, which is as it was
// `before`, becomes NULs. Several chosen names are left alone, also the ones that stood there already.
void DropRemains(std::string& buffer, std::string_view before);

}  // namespace velk::file_dialog
