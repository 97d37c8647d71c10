// The small calculations behind the system's answers: identifiers and drives.
#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "fuzz/replay.h"
#include "sysinfo/drive_facts.h"
#include "sysinfo/identifier_text.h"
#include "sysinfo/identifier_text_model.h"

namespace velk {
namespace {

using namespace std::string_literals;

TEST(IdentifierText, HasNoPaddingAndAnUndividedLastField) {
    test::Replay(&test::IdentifierTextModel, test::corpus::identifier_text, 1000, 20);
    EXPECT_EQ("{0-0-0-00000000}", IdentifierText(0, 0, 0, std::array<std::uint8_t, 8>()));
}

TEST(DriveList, IsWalkedByPosition) {
    struct Case {
        std::string buffer;
        std::size_t length;
        std::vector<std::string> roots;
    };
    const Case cases[] = {
        {std::string(255, ' '), 0, {}},
        {"A:\\\0C:\\\0D:\\\0\0  "s, 12, {"A:\\", "C:\\", "D:\\"}},
        {"A\0\\\\server\\share\\\0\0C:\0\0 "s, 22, {"A", "\\\\server\\share\\", "", "C:"}},  // of any length
        {"C:\\\0"s, 3, {}},
        {"C:\\\0D:\\\0\0"s, 4, {"C:\\"}},  // nothing behind the list counts
        {"C:\\\0D:"s, 300, {"C:\\"}},      // a list that did not fit
        {std::string(255, ' '), 300, {}},
    };
    for (const Case& c : cases) {
        const int count = static_cast<int>(c.roots.size());
        for (int i = 0; i < count; ++i) EXPECT_EQ(c.roots[i], RootAt(c.buffer, c.length, i)) << c.buffer << i;
        for (const int outside : {count, -1, -32768, 32767}) EXPECT_EQ("", RootAt(c.buffer, c.length, outside));
    }
}

TEST(DriveList, CountsTheLettersOnly) {
    for (const auto& [mask, count] : {std::pair{0U, 0}, {0x2000001U, 2}, {~0U, 26}})
        EXPECT_EQ(count, CountDrives(mask));
}

TEST(DriveLetter, IsTheCharacterBehindA) {
    for (const auto& [number, letter] : {std::pair{0, 'A'}, {25, 'Z'}, {-65, '\0'}, {190, '\xFF'}}) {
        EXPECT_EQ(letter, DriveLetter(static_cast<std::int16_t>(number)));
    }
    for (const auto& [number, error] : {std::pair{-66, 5}, {191, 5}, {32702, 5}, {32703, 6}}) {
        try {
            ADD_FAILURE() << number << " has the letter " << DriveLetter(static_cast<std::int16_t>(number));
        } catch (const RuntimeError& raised) {
            EXPECT_EQ(error, raised.number()) << number;
        }
    }
}

TEST(DriveTexts, NameTheTypesAndJoinCapabilities) {
    const std::string_view types[] = {"Unknown", "No root", "Removable", "Fixed", "Remote", "CDROM", "RAM Disk"};
    for (int type = 0; type <= 6; ++type) EXPECT_EQ(types[type], DriveTypeText(type));
    for (const int type : {7, -1, 0x7FFFFFFF}) EXPECT_EQ("", DriveTypeText(type));
    EXPECT_EQ("", VolumeFlagsText(0x7FE0));
    EXPECT_EQ("Supports case-sensitive searching", VolumeFlagsText(1));
    for (const std::uint32_t bit : {0x8000U, 0x10000U, 0x80000000U})
        EXPECT_EQ("Volume is compressed", VolumeFlagsText(bit));
    EXPECT_EQ(
        "Permits case-sensitive names, Uses Unicode file names, Uses persistent ACLs, Supports file-level compression, "
        "Volume is compressed",
        VolumeFlagsText(0xFFFF'FFFE));
}

}  // namespace
}  // namespace velk
