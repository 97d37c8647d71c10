// COSInfo as its clients see it. What the machine really is stands in host_facts.sh; here the platform's answers are
// steered, and settings are checked by the call that would make them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "frame/handles.h"
#include "support/client.h"
#include "support/facts.h"
#include "support/gdi_objects.h"
#include "support/import_patch.h"
#include "support/report_recorder.h"

namespace velk::test {
namespace {

class OSInfo : public testing::Test {
  protected:
    std::wstring Read(const wchar_t* member) { return Fact(info_.get(), member); }

    ComPtr<IDispatch> info_ = CreateObject<IDispatch>(__uuidof(::COSInfo));
};

bool succeeds;  // whether the fake calls fill their buffers
char blank;     // what these are to be filled with before

template <int kSize>
int Fill(char* buffer, DWORD size) {
    EXPECT_EQ(DWORD{kSize}, size);
    EXPECT_EQ(std::string(kSize, blank), std::string(buffer, kSize));
    if (succeeds) std::memcpy(buffer, "n\xE4me\0junk", 10);
    return succeeds;
}
BOOL WINAPI FillName(LPSTR buffer, LPDWORD size) { return Fill<100>(buffer, *size); }
UINT WINAPI FillFolder(LPSTR buffer, UINT size) { return static_cast<UINT>(Fill<260>(buffer, size)); }
DWORD WINAPI FillTempPath(DWORD size, LPSTR buffer) { return static_cast<DWORD>(Fill<255>(buffer, size)); }
BOOL WINAPI FillProfile(LPHW_PROFILE_INFOA profile) { return Fill<80>(profile->szHwProfileName, 80); }
int WINAPI FillLocale(LCID locale, LCTYPE item, LPSTR buffer, int size) {
    EXPECT_EQ(std::pair(GetUserDefaultLCID(), LCTYPE{4097}), std::pair(locale, item));
    return Fill<100>(buffer, static_cast<DWORD>(size));
}

TEST_F(OSInfo, CutsFixedBuffersAtTheFirstNul) {
    struct Case {
        const wchar_t* property;
        const char* function;
        void* replacement;
        std::size_t blanks;  // which a refused call leaves
    };
    const Case cases[] = {{L"ComputerName", "GetComputerNameA", Address(&FillName), 0},
                          {L"UserName", "GetUserNameA", Address(&FillName), 0},
                          {L"SystemDirectory", "GetSystemDirectoryA", Address(&FillFolder), 0},
                          {L"WindowsDirectory", "GetWindowsDirectoryA", Address(&FillFolder), 0},
                          {L"CurrentHardwareProfile", "GetCurrentHwProfileA", Address(&FillProfile), 0},
                          {L"TempPath", "GetTempPathA", Address(&FillTempPath), 255},
                          {L"Language", "GetLocaleInfoA", Address(&FillLocale), 100}};
    for (const Case& c : cases) {
        const ImportPatch patch(Library(), c.function, c.replacement);
        blank = c.blanks ? ' ' : '\0';
        succeeds = true;
        EXPECT_EQ(L"n\u00E4me", Read(c.property)) << c.function;
        succeeds = false;
        EXPECT_EQ(std::wstring(c.blanks, L' '), Read(c.property)) << c.function;
    }
}

std::string asked;  // "action parameter update", with a "?" when it has a place for the answer
LONG setting;
RECT workArea;
BOOL WINAPI Parameters(UINT action, UINT parameter, PVOID place, UINT update) {
    asked =
        std::to_string(action) + " " + std::to_string(parameter) + " " + std::to_string(update) + (place ? "?" : "");
    if (place)
        std::memcpy(place, action == SPI_GETWORKAREA ? &workArea : static_cast<void*>(&setting), action == 48 ? 16 : 4);
    return FALSE;
}
std::string newName;
BOOL WINAPI TakeName(LPCSTR name) {
    newName = name;
    return FALSE;
}

TEST_F(OSInfo, ReadsAndChangesSettingsByTheDocumentedCalls) {
    const ImportPatch parameters(Library(), "SystemParametersInfoA", Address(&Parameters));
    struct Setting {
        const wchar_t* name;
        VARIANT value;
        LONG stored;
        const wchar_t* shown;
        const char *get, *let;
    };
    for (const Setting& one : {Setting{L"Beep", Arg(true), 1, L"True", "1 0 0?", "2 1 2"},
                               {L"Beep", Arg(false), 0, L"False", "1 0 0?", "2 0 2"},
                               {L"ScreenSaverActive", Arg(true), 1, L"True", "16 0 0?", "17 1 2"},
                               {L"ScreenSaverActive", Arg(false), 0, L"False", "16 0 0?", "17 0 2"},
                               {L"ScreenSaverTimeout", Arg(600L), 600, L"600", "14 0 0?", "15 600 2"}}) {
        setting = one.stored;
        EXPECT_EQ(one.shown, Read(one.name));
        EXPECT_EQ(one.get, asked);
        EXPECT_EQ(S_OK, Let(info_.get(), one.name, {one.value}).result);
        EXPECT_EQ(one.let, asked);
    }
    const ImportPatch naming(Library(), "SetComputerNameA", Address(&TakeName));
    EXPECT_EQ(S_OK, Let(info_.get(), L"ComputerName", {Text(L"w\u00E4ge")}).result);
    EXPECT_EQ("w\xE4ge", newName);
}

TEST_F(OSInfo, GivesTheWorkAreaToAScriptsVariables) {
    ReportRecorder recorder(Library());
    const ImportPatch patch(Library(), "SystemParametersInfoA", Address(&Parameters));
    Variant left, top, width, height;
    struct Case {
        RECT area;
        std::vector<SHORT> given;
        const wchar_t* shown = L"";
    };
    for (const Case& c : {Case{{-1920, 30, -320, 1230}, {-1920, 30, 1600, 1200}},
                          {{-40000, 10, 0x7FFFFFFF, 20},  // what fits is still given
                           {-1920, 10, 1600, 10},
                           L"GetWorkArea: Error: 6. Overflow|GetWorkArea: Error: 6. Overflow|"}}) {
        workArea = c.area;
        EXPECT_EQ(S_OK, Call(info_.get(), L"GetWorkArea", {Arg(&left), Arg(&top), Arg(&width), Arg(&height)}).result);
        EXPECT_EQ(c.given, (std::vector{left.iVal, top.iVal, width.iVal, height.iVal}));
        EXPECT_TRUE(left.vt == VT_I2 && top.vt == VT_I2 && width.vt == VT_I2 && height.vt == VT_I2);
        EXPECT_EQ(c.shown, recorder.Shown());
    }
}

int bitsPerPixel, planes, dotsPerInch;
int WINAPI Capability(HDC context, int index) {
    EXPECT_NE(nullptr, context);
    return index == 12 ? bitsPerPixel : index == 14 ? planes : index == 88 ? dotsPerInch : -1;
}

TEST_F(OSInfo, CountsColoursAndKnowsLargeFonts) {
    ReportRecorder recorder(Library());
    Read(L"DisplayColors");  // the platform keeps the first contexts it lends
    const int before = GdiObjects();
    const ImportPatch patch(Library(), "GetDeviceCaps", Address(&Capability));
    struct Case {
        int bits, planes;
        const wchar_t* colours;
    };
    for (const Case& c : {Case{1, 1, L"2"},
                          {8, 1, L"256"},
                          {16, 1, L"65536"},
                          {24, 1, L"16777216"},
                          {30, 1, L"1073741824"},
                          {32, 1, L"-1"},
                          {8, 4, L"-1"},
                          {31, 1, L"0"},
                          {16, 3, L"0"}}) {
        bitsPerPixel = c.bits, planes = c.planes;
        EXPECT_EQ(c.colours, Read(L"DisplayColors")) << c.bits;
        EXPECT_EQ(*c.colours == L'0' ? L"DisplayColors: Error: 6. Overflow|" : L"", recorder.Shown());
    }
    for (const int dots : {96, 120, 144}) {
        dotsPerInch = dots;
        EXPECT_EQ(dots == 120 ? L"True" : L"False", Read(L"LargeFonts"));
    }
    EXPECT_EQ(before, GdiObjects()) << "each context was given back";
}

OSVERSIONINFOA version;
BOOL WINAPI Version(LPOSVERSIONINFOA answer) {
    EXPECT_EQ(148u, answer->dwOSVersionInfoSize);
    *answer = version;
    return TRUE;
}
DWORD WINAPI Ticks() { return 0x8000'0000; }

TEST_F(OSInfo, TellsVersionUpTimeAndIdentifiersInItsOwnForm) {
    const ImportPatch versions(Library(), "GetVersionExA", Address(&Version));
    for (const auto& [build, shown] :
         {std::pair{67111248UL, L"2384"}, {19045UL, L"19045"}, {0xFFFF'FFFFUL, L"32767"}}) {
        version = {148, 6, 2, build, 1, "Service Pack 2\0junk"};
        EXPECT_EQ(
            std::wstring(L"6|2|1|Service Pack 2|") + shown + L"|",
            Facts(info_.get(), {L"OSMajorVersion", L"OSMinorVersion", L"WindowsType", L"OSAdditional", L"OSBuild"}));
    }
    std::memset(version.szCSDVersion, 'x', 128);
    EXPECT_EQ(std::wstring(128, L'x'), Read(L"OSAdditional")) << "a text that fills its field";
    const ImportPatch clock(Library(), "GetTickCount", Address(&Ticks));
    EXPECT_EQ(L"-35791", Read(L"WindowsUpTime"));
    const std::wstring first = Read(L"GUID"), second = Read(L"GUID");
    EXPECT_NE(first, second);
    EXPECT_EQ(3, std::count(first.begin(), first.end(), L'-'));
}

TEST_F(OSInfo, NamesATemporaryFileWithoutMakingIt) {
    for (const wchar_t* prefix : {L"abc", L"abcd"}) {
        const std::wstring path = Fact(info_.get(), L"TempFile", {Text(prefix)});
        EXPECT_EQ(Read(L"TempPath") + L"abc1.tmp", path);
        EXPECT_EQ(INVALID_FILE_ATTRIBUTES, GetFileAttributesW(path.c_str()));
    }
}

TEST_F(OSInfo, ReadsTheRegisteredDefaults) {
    using namespace std::string_literals;
    constexpr const wchar_t* kKey = L"Software\\Microsoft\\MS Setup (ACME)";
    struct Case {
        DWORD type;
        std::string bytes;
        std::wstring text;
    };
    const Case cases[] = {
        {REG_SZ, "two\0parts\0"s, L"two"},       {REG_SZ, "no \xE4nd"s, L"no \u00E4nd"}, {REG_SZ, ""s, L""},
        {REG_DWORD, "\xFF\xFF\xFF\xFF"s, L"-1"}, {REG_BINARY, "A\0B\0c"s, L"AB"},        {REG_BINARY, ""s, L""},
        {REG_EXPAND_SZ, "text\0"s, L""}};
    for (const auto& [property, name] :
         {std::pair{L"DefaultCompanyName", "DefCompany"}, {L"DefaultUserName", "DefName"}}) {
        RegDeleteTreeW(HKEY_CURRENT_USER, kKey);
        EXPECT_EQ(L"", Read(property)) << "no such key";
        RegistryKey key;
        ASSERT_EQ(0, RegCreateKeyW(HKEY_CURRENT_USER, (std::wstring(kKey) + L"\\User Info").c_str(), key.Receive()));
        EXPECT_EQ(L"", Read(property)) << "no such value";
        for (const Case& c : cases) {
            const auto* const bytes = reinterpret_cast<const BYTE*>(c.bytes.data());
            RegSetValueExA(key.get(), name, 0, c.type, bytes, static_cast<DWORD>(c.bytes.size()));
            EXPECT_EQ(c.text, Read(property)) << c.type << c.bytes;
        }
    }
    RegDeleteTreeW(HKEY_CURRENT_USER, kKey);
}

}  // namespace
}  // namespace velk::test
