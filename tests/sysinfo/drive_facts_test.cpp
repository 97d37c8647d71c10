#include "sysinfo/drive_facts.h"

#include <gtest/gtest.h>

#include <vector>

#include "frame/whole_numbers.h"

namespace velk {
namespace {

using namespace std::string_literals;

TEST(DriveList, IsWalkedByPosition) {
    struct Case {
        std::string buffer;
        std::size_t length;
        std::vector<std::string> roots;
    };
    std::string all;
    std::vector<std::string> letters;
    for (char c = 'A'; c <= 'Z'; ++c) letters.push_back(std::string(1, c) + ":\\");
    for (const std::string& root : letters) all += root + '\0';
    const Case cases[] = {
        {std::string(255, ' '), 0, {}},
        {"C:\\\0\0   "s, 4, {"C:\\"}},
        {"A:\\\0C:\\\0D:\\\0\0  "s, 12, {"A:\\", "C:\\", "D:\\"}},
        {"A\0\\\\server\\share\\\0\0C:\0\0 "s, 22, {"A", "\\\\server\\share\\", "", "C:"}},
        {"C:\\\0D:\\\0\0"s, 4, {"C:\\"}},  // nothing behind the length counts
        {"C:\\\0D:\\\0\0"s, 9, {"C:\\", "D:\\", ""}},
        {"C:\\\0D:"s, 300, {"C:\\"}},  // a list that did not fit
        {std::string(255, ' '), 300, {}},
        {all + '\0', all.size(), letters},
    };
    for (const Case& c : cases) {
        const int count = static_cast<int>(c.roots.size());
        for (int i = 0; i < count; ++i) EXPECT_EQ(c.roots[i], RootAt(c.buffer, c.length, i)) << c.buffer << i;
        for (const int outside : {count, count + 1, -1, -32768, 32767}) {
            EXPECT_EQ("", RootAt(c.buffer, c.length, outside)) << c.buffer << outside;
        }
    }
}

TEST(DriveList, CountsLettersOnly) {
    EXPECT_EQ(0, CountDrives(0));
    EXPECT_EQ(3, CountDrives(0x0200'0005));
    EXPECT_EQ(26, CountDrives(0xFFFF'FFFF));
}

TEST(DriveLetter, IsTheCharacterBehindA) {
    EXPECT_EQ('A', DriveLetter(0));
    EXPECT_EQ('Z', DriveLetter(25));
    EXPECT_EQ('[', DriveLetter(26));
    EXPECT_EQ('\0', DriveLetter(-65));
    EXPECT_EQ('\xFF', DriveLetter(190));
    const std::pair<std::int16_t, int> errors[] = {{-66, 5}, {-32768, 5}, {191, 5}, {32702, 5}, {32703, 6}, {32767, 6}};
    for (const auto& [number, error] : errors) {
        try {
            DriveLetter(number);
            ADD_FAILURE() << number << " has no letter";
        } catch (const RuntimeError& raised) {
            EXPECT_EQ(error, raised.number()) << number;
        }
    }
}

TEST(DriveTexts, NameTypesAndCapabilities) {
    EXPECT_EQ("Unknown", DriveTypeText(0));
    EXPECT_EQ("CDROM", DriveTypeText(5));
    EXPECT_EQ("RAM Disk", DriveTypeText(6));
    for (const std::int32_t unknown : {7, -1, 0x7FFFFFFF}) EXPECT_EQ("", DriveTypeText(unknown)) << unknown;

    const std::pair<std::uint32_t, std::string> cases[] = {
        {0, ""},
        {3, "Supports case-sensitive searching, Permits case-sensitive names"},
        {0x7FE0, ""},  // flags without a text
        {0x8000, "Volume is compressed"},
        {65536, "Volume is compressed"},
        {0x8000'0000, "Volume is compressed"},
        {0xFFFF'FFFF,
         "Supports case-sensitive searching, Permits case-sensitive names, Uses Unicode file names, "
         "Uses persistent ACLs, Supports file-level compression, Volume is compressed"},
    };
    for (const auto& [flags, text] : cases) EXPECT_EQ(text, VolumeFlagsText(flags)) << flags;
}

}  // namespace
}  // namespace velk
