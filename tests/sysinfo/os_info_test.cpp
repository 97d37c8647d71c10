// COSInfo as its clients see it. What the machine really is stands in host_facts.sh; here the platform's answers are
// steered, and settings are checked by the call that would make them.
#include <algorithm>
#include <cstring>
#include <tuple>
#include <vector>

#include "support/facts.h"
#include "support/fake.h"
#include "support/gdi_objects.h"
#include "support/report_recorder.h"

namespace velk::test {
namespace {

class OSInfo : public testing::Test {
  protected:
    std::wstring Read(const wchar_t* member) { return Fact(info_.get(), member); }

    ComPtr<IDispatch> info_ = CreateObject<IDispatch>(__uuidof(::COSInfo));
};

// The answers of calls that fill a text of a fixed size, or refuse.
bool succeeds;

int Fill(char* buffer, DWORD size, char blank = '\0') {
    EXPECT_EQ(std::string(size, blank), std::string(buffer, size));
    if (succeeds) std::memcpy(buffer, "n\xE4me\0junk", 10);
    return static_cast<int>(size);
}

TEST_F(OSInfo, CutsFixedBuffersAtTheFirstNul) {
    const auto fillName = [](LPSTR name, LPDWORD size) { return Fill(name, *size) == 100 && succeeds; };
    const auto fillUser = [](LPSTR name, LPDWORD size) { return Fill(name, *size) == 100 && succeeds; };
    const Fake computer("GetComputerNameA", &GetComputerNameA, fillName);
    const Fake user("GetUserNameA", &GetUserNameA, fillUser);
    const Fake system("GetSystemDirectoryA", &GetSystemDirectoryA, [](LPSTR text, UINT size) {
        EXPECT_EQ(260, Fill(text, size));
        return 0;
    });
    const Fake windows("GetWindowsDirectoryA", &GetWindowsDirectoryA, [](LPSTR text, UINT size) {
        EXPECT_EQ(260, Fill(text, size));
        return 0;
    });
    const Fake profile("GetCurrentHwProfileA", &GetCurrentHwProfileA,
                       [](LPHW_PROFILE_INFOA answer) { return Fill(answer->szHwProfileName, 80); });
    const Fake temporary("GetTempPathA", &GetTempPathA, [](DWORD size, LPSTR text) {
        EXPECT_EQ(255, Fill(text, size, ' '));
        return 0;
    });
    const Fake locale("GetLocaleInfoA", &GetLocaleInfoA, [](LCID user, LCTYPE item, LPSTR text, int size) {
        EXPECT_TRUE(user == GetUserDefaultLCID() && item == 4097 && size == 100);
        return Fill(text, static_cast<DWORD>(size), ' ');
    });
    for (const bool fills : {true, false}) {
        succeeds = fills;
        const std::wstring cut = fills ? L"n\u00E4me|" : L"|";
        const auto padded = [&](std::size_t size) { return fills ? cut : std::wstring(size, L' ') + L"|"; };
        EXPECT_EQ(cut + cut + cut + cut + cut + padded(255) + padded(100),
                  Facts(info_.get(), {L"ComputerName", L"UserName", L"SystemDirectory", L"WindowsDirectory",
                                      L"CurrentHardwareProfile", L"TempPath", L"Language"}));
    }
}

TEST_F(OSInfo, ReadsAndChangesSettingsByTheDocumentedCalls) {
    std::string asked, newName;
    LONG stored = 0;
    const Fake parameters("SystemParametersInfoA", &SystemParametersInfoA,
                          [&](UINT action, UINT parameter, PVOID place, UINT update) {
                              asked += std::to_string(action) + " " + std::to_string(parameter) + " " +
                                       std::to_string(update) + (place ? "?|" : "|");
                              if (place) std::memcpy(place, &stored, sizeof stored);
                              return FALSE;
                          });
    const auto expect = [&](const wchar_t* name, const VARIANT& value, LONG kept, const wchar_t* shown,
                            const char* calls) {
        stored = kept;
        asked.clear();
        EXPECT_EQ(shown, Read(name));
        EXPECT_EQ(S_OK, Let(info_.get(), name, {value}).result);
        EXPECT_EQ(calls, asked);
    };
    expect(L"Beep", Arg(true), 1, L"True", "1 0 0?|2 1 2|");
    expect(L"Beep", Arg(false), 0, L"False", "1 0 0?|2 0 2|");
    expect(L"ScreenSaverActive", Arg(true), 1, L"True", "16 0 0?|17 1 2|");
    expect(L"ScreenSaverActive", Arg(false), 0, L"False", "16 0 0?|17 0 2|");
    expect(L"ScreenSaverTimeout", Arg(600L), 77, L"77", "14 0 0?|15 600 2|");
    const Fake naming("SetComputerNameA", &SetComputerNameA, [&](LPCSTR name) { return newName = name, FALSE; });
    EXPECT_EQ(S_OK, Let(info_.get(), L"ComputerName", {Text(L"w\u00E4ge")}).result);
    EXPECT_EQ("w\xE4ge", newName);
}

TEST_F(OSInfo, GivesTheWorkAreaToAScriptsVariables) {
    ReportRecorder recorder(Library());
    RECT area{-1920, 30, -320, 1230};
    const Fake parameters("SystemParametersInfoA", &SystemParametersInfoA, [&](UINT action, UINT, PVOID place, UINT) {
        EXPECT_EQ(48u, action);
        *static_cast<RECT*>(place) = area;
        return TRUE;
    });
    Variant left, top, width, height;
    const auto given = [&] {
        EXPECT_EQ(S_OK, Call(info_.get(), L"GetWorkArea", {Arg(&left), Arg(&top), Arg(&width), Arg(&height)}).result);
        EXPECT_TRUE(left.vt == VT_I2 && top.vt == VT_I2 && width.vt == VT_I2 && height.vt == VT_I2);
        return std::vector{left.iVal, top.iVal, width.iVal, height.iVal};
    };
    EXPECT_EQ((std::vector<SHORT>{-1920, 30, 1600, 1200}), given());
    EXPECT_EQ(L"", recorder.Shown());
    area = {-40000, 10, 0x7FFFFFFF, 20};  // what fits is still given
    EXPECT_EQ((std::vector<SHORT>{-1920, 10, 1600, 10}), given());
    EXPECT_EQ(L"GetWorkArea: Error: 6. Overflow|GetWorkArea: Error: 6. Overflow|", recorder.Shown());
}

TEST_F(OSInfo, CountsColoursAndKnowsLargeFonts) {
    ReportRecorder recorder(Library());
    int bits = 0, planes = 0, dots = 0;
    Read(L"DisplayColors");  // the platform keeps the first contexts it lends
    const int before = GdiObjects();
    const Fake capability("GetDeviceCaps", &GetDeviceCaps, [&](HDC context, int index) {
        EXPECT_NE(nullptr, context);
        return index == 12 ? bits : index == 14 ? planes : index == 88 ? dots : -1;
    });
    const std::tuple<int, int, const wchar_t*> cases[] = {
        {1, 1, L"2"},   {8, 1, L"256"}, {16, 1, L"65536"}, {24, 1, L"16777216"}, {30, 1, L"1073741824"},
        {32, 1, L"-1"}, {8, 4, L"-1"},  {31, 1, L"0"},     {16, 3, L"0"}};
    for (const auto& [ofBits, ofPlanes, colours] : cases) {
        bits = ofBits, planes = ofPlanes;
        EXPECT_EQ(colours, Read(L"DisplayColors")) << bits;
        EXPECT_EQ(*colours == L'0' ? L"DisplayColors: Error: 6. Overflow|" : L"", recorder.Shown());
    }
    for (const int resolution : {96, 120, 144}) {
        dots = resolution;
        EXPECT_EQ(dots == 120 ? L"True" : L"False", Read(L"LargeFonts"));
    }
    EXPECT_EQ(before, GdiObjects()) << "each context was given back";
}

TEST_F(OSInfo, TellsVersionUpTimeAndIdentifiersInItsOwnForm) {
    OSVERSIONINFOA version{};
    const Fake versions("GetVersionExA", &GetVersionExA, [&](LPOSVERSIONINFOA answer) {
        EXPECT_EQ(148u, answer->dwOSVersionInfoSize);
        *answer = version;
        return TRUE;
    });
    for (const auto& [build, shown] :
         {std::pair{67111248UL, L"2384"}, {19045UL, L"19045"}, {0xFFFF'FFFFUL, L"32767"}}) {
        version = {148, 6, 2, build, 1, "Service Pack 2\0junk"};
        EXPECT_EQ(
            std::wstring(L"6|2|1|Service Pack 2|") + shown + L"|",
            Facts(info_.get(), {L"OSMajorVersion", L"OSMinorVersion", L"WindowsType", L"OSAdditional", L"OSBuild"}));
    }
    std::memset(version.szCSDVersion, 'x', 128);
    EXPECT_EQ(std::wstring(128, L'x'), Read(L"OSAdditional")) << "a text that fills its field";
    const Fake clock("GetTickCount", &GetTickCount, [] { return 0x8000'0000; });
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
    constexpr const char* kKey = "Software\\Microsoft\\MS Setup (ACME)";
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
        RegDeleteTreeA(HKEY_CURRENT_USER, kKey);
        EXPECT_EQ(L"", Read(property)) << "no such key";
        for (const Case& c : cases) {
            RegSetKeyValueA(HKEY_CURRENT_USER, (kKey + "\\User Info"s).c_str(), name, c.type, c.bytes.data(),
                            static_cast<DWORD>(c.bytes.size()));
            EXPECT_EQ(c.text, Read(property)) << c.type << c.bytes;
        }
    }
    RegDeleteTreeA(HKEY_CURRENT_USER, kKey);
}

}  // namespace
}  // namespace velk::test
