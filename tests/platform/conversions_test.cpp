// Texts, numbers, colours and errors as the platform has them and as clients do.
#include <gtest/gtest.h>

#include <map>

#include "frame/failure/failure.h"
#include "platform/colour.h"
#include "platform/numbers.h"
#include "platform/text.h"

namespace velk {
namespace {

using namespace std::literals;

TEST(Colour, ANegativeOneIsASystemColourAndAPaletteTranslates) {
    for (const int index : {COLOR_WINDOW, COLOR_BTNFACE, COLOR_HIGHLIGHT, COLOR_WINDOWTEXT}) {
        const LONG colour = static_cast<LONG>(0x80000000 | static_cast<DWORD>(index));
        EXPECT_EQ(static_cast<LONG>(GetSysColor(index)), TranslateVBColor(colour));
        EXPECT_EQ(static_cast<LONG>(GetSysColor(index)), TranslateColor(colour));
    }
    for (const LONG plain : {0L, 0xFFL, 0x01000000L, 0x02ABCDEFL, 0x7FFFFFFFL}) {
        EXPECT_EQ(plain, TranslateVBColor(plain));
    }
    struct {
        LOGPALETTE palette{0x300, 2, {{1, 2, 3, 0}}};
        PALETTEENTRY second{10, 20, 30, 0};
    } description;
    const HPALETTE palette = CreatePalette(&description.palette);
    EXPECT_EQ(0x02123456, TranslateColor(0x00123456, palette));  // now means the nearest entry of the palette
    EXPECT_EQ(-1, TranslateColor(0x01000002, palette));          // beyond its last entry
    DeleteObject(palette);
}

TEST(Numbers, LongFromTextConvertsAndChecks) {
    ASSERT_EQ(LCID{MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US)}, GetUserDefaultLCID());
    EXPECT_EQ(2, LongFromText(L"2.5"));
    EXPECT_EQ(1000, LongFromText(L"1,000"));
    for (const auto& [text, number] :
         {std::pair(L"2147483648"sv, 6), {L"", 13}, {L"12abc", 13}, {L"12\0"sv, 13}, {L"12\0junk"sv, 13}}) {
        try {
            ADD_FAILURE() << LongFromText(text);
        } catch (const RuntimeError& error) {
            EXPECT_EQ(number, error.number()) << testing::PrintToString(text);
        }
    }
}

TEST(Text, AnsiConversionsKeepEveryCharacterThatTheCodePageHas) {
    ASSERT_EQ(1252u, GetACP());
    for (const auto& [wide, bytes] :
         {std::pair(L""sv, ""sv), {L"a\0b"sv, "a\0b"sv}, {L"\u20AC \u00FC\u00FF", "\x80 \xFC\xFF"}}) {
        EXPECT_EQ(bytes, ToAnsi(wide));
        EXPECT_EQ(Utf16(wide), FromAnsi(bytes));
    }
    EXPECT_EQ("?", ToAnsi(L"\u0416"));
    EXPECT_EQ(L"\u20ACuro", View(FromAnsiBuffer("\x80uro\0rest"sv).get()));
    EXPECT_EQ("abc", TrimNulls("abc"));
    EXPECT_EQ("", TrimNulls("\0abc"sv));
}

// What a caller may branch on must not depend on which of the platform's near synonyms a call failed with.
TEST(RuntimeError, StandsForFailedCalls) {
    const std::map<int, std::vector<HRESULT>> errors = {
        {5, {ERROR_INVALID_PARAMETER, E_FAIL}},
        {6, {DISP_E_OVERFLOW}},
        {7, {ERROR_NOT_ENOUGH_MEMORY, ERROR_OUTOFMEMORY, E_OUTOFMEMORY}},
        {9, {DISP_E_BADINDEX}},
        {11, {DISP_E_DIVBYZERO}},
        {13, {DISP_E_TYPEMISMATCH, DISP_E_BADVARTYPE}},
        {52, {ERROR_INVALID_NAME, ERROR_FILENAME_EXCED_RANGE, ERROR_BUFFER_OVERFLOW}},
        {53, {ERROR_FILE_NOT_FOUND}},
        {57, {ERROR_CRC, ERROR_SEEK, ERROR_READ_FAULT, ERROR_WRITE_FAULT, ERROR_GEN_FAILURE, ERROR_IO_DEVICE}},
        {61, {ERROR_DISK_FULL, ERROR_HANDLE_DISK_FULL}},
        {70, {ERROR_ACCESS_DENIED, ERROR_SHARING_VIOLATION, ERROR_LOCK_VIOLATION, ERROR_WRITE_PROTECT, E_ACCESSDENIED}},
        {71, {ERROR_NOT_READY}},
        {75, {ERROR_DIRECTORY, ERROR_SUCCESS, ERROR_ALREADY_EXISTS}},
        {76, {ERROR_PATH_NOT_FOUND, ERROR_BAD_PATHNAME, ERROR_INVALID_DRIVE, ERROR_BAD_NETPATH, ERROR_BAD_NET_NAME}},
        {429, {REGDB_E_CLASSNOTREG}}};
    for (const auto& [number, meant] : errors) {
        for (const HRESULT one : meant)
            EXPECT_EQ(number, (one < 0 ? FromComError(one) : FromSystemError(static_cast<DWORD>(one))).number()) << one;
    }
}

}  // namespace
}  // namespace velk
