#include "sysinfo/drive_facts.h"

#include <bit>
#include <iterator>

#include "platform/whole_numbers.h"

namespace velk {
namespace {

constexpr std::string_view kTypeTexts[] = {
    "Unknown", "No root", "Removable", "Fixed", "Remote", "CDROM", "RAM Disk",
};

struct FlagText {
    std::uint32_t mask;
    std::string_view text;
};

constexpr FlagText kFlagTexts[] = {
    {1, "Supports case-sensitive searching"},
    {2, "Permits case-sensitive names"},
    {4, "Uses Unicode file names"},
    {8, "Uses persistent ACLs"},
    {16, "Supports file-level compression"},
    {0xFFFF8000, "Volume is compressed"},  // deliberate: every flag from 0x8000 up counts
};

constexpr std::uint32_t kLetters = (1u << 26) - 1;

}  // namespace

std::string RootAt(std::string_view buffer, std::size_t length, int position) {
    std::size_t start = 0;
    for (int i = 0;; ++i) {
        const std::size_t end = buffer.find('\0', start);
        if (end == std::string_view::npos || end >= length) return {};
        if (i == position) return std::string(buffer.substr(start, end - start));
        start = end + 1;
    }
}

int CountDrives(std::uint32_t mask) noexcept { return std::popcount(mask & kLetters); }

char DriveLetter(std::int16_t number) {
    const std::int16_t code = ToInteger(number + 'A');
    if (code < 0 || code > 255) throw RuntimeError(Error::InvalidProcedureCall);
    return static_cast<char>(code);
}

std::string_view DriveTypeText(std::int32_t type) noexcept {
    const bool known = type >= 0 && type < static_cast<std::int32_t>(std::size(kTypeTexts));
    return known ? kTypeTexts[type] : std::string_view();
}

std::string VolumeFlagsText(std::uint32_t flags) {
    std::string joined;
    for (const auto& [mask, text] : kFlagTexts) {
        if ((flags & mask) == 0) continue;
        if (!joined.empty()) joined += ", ";
        joined += text;
    }
    return joined;
}

}  // namespace velk
