// COSInfo as its clients see it. What the machine really is stands in host_facts.sh; here the platform's answers are
// steered, and settings are checked by the call that would make them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "frame/handles.h"
#include "support/client.h"
#include "support/gdi_objects.h"
#include "support/import_patch.h"
#include "support/late_bound.h"
#include "support/report_recorder.h"

namespace velk::test {
namespace {

template <class Function>
void* Address(Function* function) {
    return reinterpret_cast<void*>(function);
}

class OSInfo : public testing::Test {
  protected:
    std::wstring TextOfProperty(const wchar_t* name) { return TextOf(Get(info_.get(), name).value); }
    LONG Number(const wchar_t* name) { return Get(info_.get(), name).value.lVal; }
    bool Flag(const wchar_t* name) { return Get(info_.get(), name).value.boolVal != VARIANT_FALSE; }

    ComPtr<IDispatch> info_ = CreateObject<IDispatch>(__uuidof(::COSInfo));
};

// Text of a fake answer: what stands behind the NUL must not reach a client.
void Answer(LPSTR buffer) { std::memcpy(buffer, "n\xE4me\0junk", 10); }

char blank;     // what a buffer is to be filled with before a call
bool succeeds;  // whether the fake calls fill it

void ExpectBlank(const char* buffer, DWORD size, DWORD wanted) {
    EXPECT_EQ(wanted, size);
    EXPECT_EQ(std::string(wanted, blank), std::string(buffer, wanted));
}
template <DWORD kSize>
BOOL WINAPI FillName(LPSTR buffer, LPDWORD size) {
    ExpectBlank(buffer, *size, kSize);
    if (succeeds) Answer(buffer);
    return succeeds;
}
template <DWORD kSize>
UINT WINAPI FillFolder(LPSTR buffer, UINT size) {
    ExpectBlank(buffer, size, kSize);
    if (succeeds) Answer(buffer);
    return 4;
}
DWORD WINAPI FillTempPath(DWORD size, LPSTR buffer) { return FillFolder<255>(buffer, size); }
int WINAPI FillLocale(LCID locale, LCTYPE item, LPSTR buffer, int size) {
    EXPECT_EQ(GetUserDefaultLCID(), locale);
    EXPECT_EQ(4097u, item);
    return static_cast<int>(FillFolder<100>(buffer, static_cast<UINT>(size)));
}
BOOL WINAPI FillProfile(LPHW_PROFILE_INFOA profile) {
    return static_cast<BOOL>(FillFolder<80>(profile->szHwProfileName, 80));
}

TEST_F(OSInfo, CutsFixedBuffersAtTheFirstNul) {
    struct Case {
        const wchar_t* property;
        const char* function;
        void* replacement;
        char blank;
        std::size_t left;  // characters of the untouched buffer after a failure
    };
    const Case cases[] = {
        {L"ComputerName", "GetComputerNameA", Address(&FillName<100>), '\0', 0},
        {L"UserName", "GetUserNameA", Address(&FillName<100>), '\0', 0},
        {L"SystemDirectory", "GetSystemDirectoryA", Address(&FillFolder<260>), '\0', 0},
        {L"WindowsDirectory", "GetWindowsDirectoryA", Address(&FillFolder<260>), '\0', 0},
        {L"CurrentHardwareProfile", "GetCurrentHwProfileA", Address(&FillProfile), '\0', 0},
        {L"TempPath", "GetTempPathA", Address(&FillTempPath), ' ', 255},
        {L"Language", "GetLocaleInfoA", Address(&FillLocale), ' ', 100},
    };
    for (const Case& c : cases) {
        const ImportPatch patch(Library(), c.function, c.replacement);
        blank = c.blank;
        succeeds = true;
        EXPECT_EQ(L"n\u00E4me", TextOfProperty(c.property)) << c.function;
        succeeds = false;
        EXPECT_EQ(std::wstring(c.left, L' '), TextOfProperty(c.property)) << c.function;
    }
}

struct Call4 {
    UINT action, parameter;
    bool hasPointer;
    UINT update;
    auto operator<=>(const Call4&) const = default;
};
std::vector<Call4> calls;
RECT workArea;
LONG setting;
BOOL WINAPI Parameters(UINT action, UINT parameter, PVOID pointer, UINT update) {
    calls.push_back({action, parameter, pointer != nullptr, update});
    if (action == SPI_GETWORKAREA)
        *static_cast<RECT*>(pointer) = workArea;
    else if (pointer)
        *static_cast<LONG*>(pointer) = setting;
    return FALSE;
}

TEST_F(OSInfo, ReadsAndChangesSettingsByTheDocumentedCalls) {
    const ImportPatch patch(Library(), "SystemParametersInfoA", Address(&Parameters));
    const auto expectOne = [](const Call4& wanted) {
        EXPECT_EQ(std::vector{wanted}, calls) << wanted.action;
        calls.clear();
    };
    const std::pair<const wchar_t*, UINT> flags[] = {{L"Beep", 1}, {L"ScreenSaverActive", 16}};
    for (const auto& [name, action] : flags) {
        for (const bool on : {true, false}) {
            setting = on;
            EXPECT_EQ(on, Flag(name)) << name;
            expectOne({action, 0, true, 0});
            EXPECT_EQ(S_OK, Let(info_.get(), name, {Arg(on)}).result);
            expectOne({action + 1, on, false, 2});
        }
    }
    setting = 77;
    EXPECT_EQ(77, Number(L"ScreenSaverTimeout"));
    expectOne({14, 0, true, 0});
    EXPECT_EQ(S_OK, Let(info_.get(), L"ScreenSaverTimeout", {Arg(LONG{-1})}).result);
    expectOne({15, 0xFFFF'FFFF, false, 2});
}

std::string newName;
BOOL WINAPI TakeName(LPCSTR name) {
    newName = name;
    return FALSE;
}

TEST_F(OSInfo, PassesANewComputerNameOn) {
    const ImportPatch patch(Library(), "SetComputerNameA", Address(&TakeName));
    const ReportRecorder recorder(Library());
    Variant name = Text(L"w\u00E4ge");
    EXPECT_EQ(S_OK, Let(info_.get(), L"ComputerName", {Arg(&name)}).result);
    EXPECT_EQ("w\xE4ge", newName);
    EXPECT_TRUE(recorder.reports().empty());
}

TEST_F(OSInfo, GivesTheWorkAreaToAScriptsVariables) {
    const ReportRecorder recorder(Library());
    Variant left, top, width, height;
    const auto ask = [&] {
        return Call(info_.get(), L"GetWorkArea", {Arg(&left), Arg(&top), Arg(&width), Arg(&height)}).result;
    };
    EXPECT_EQ(S_OK, ask());
    for (const Variant* given : {&left, &top, &width, &height}) EXPECT_EQ(VT_I2, given->vt);
    EXPECT_EQ(GetSystemMetrics(SM_CXSCREEN), width.iVal);
    EXPECT_EQ(GetSystemMetrics(SM_CYSCREEN), height.iVal);

    const ImportPatch patch(Library(), "SystemParametersInfoA", Address(&Parameters));
    workArea = {-1920, 30, -320, 1230};
    EXPECT_EQ(S_OK, ask());
    EXPECT_EQ((std::vector<SHORT>{-1920, 30, 1600, 1200}),
              (std::vector<SHORT>{left.iVal, top.iVal, width.iVal, height.iVal}));
    EXPECT_TRUE(recorder.reports().empty());
    workArea = {-40000, 10, 0x7FFFFFFF, 20};  // what fits is still given
    EXPECT_EQ(S_OK, ask());
    EXPECT_EQ((std::vector<SHORT>{-1920, 10, 1600, 10}),
              (std::vector<SHORT>{left.iVal, top.iVal, width.iVal, height.iVal}));
    ASSERT_EQ(2u, recorder.reports().size());
    for (const auto& report : recorder.reports()) {
        EXPECT_EQ(L"GetWorkArea", report.title);
        EXPECT_EQ(L"Error: 6. Overflow", report.text);
    }
}

int bitsPerPixel, planes, dotsPerInch;
int WINAPI Capability(HDC context, int index) {
    EXPECT_NE(nullptr, context);
    return index == 12 ? bitsPerPixel : index == 14 ? planes : index == 88 ? dotsPerInch : -1;
}

TEST_F(OSInfo, CountsColoursAndKnowsLargeFonts) {
    const ImportPatch patch(Library(), "GetDeviceCaps", Address(&Capability));
    const ReportRecorder recorder(Library());
    struct Case {
        int bits, planes;
        LONG colours;
    };
    Number(L"DisplayColors");  // the platform keeps the first contexts it lends
    const int before = GdiObjects();
    for (const Case& c : {Case{1, 1, 2},
                          {8, 1, 256},
                          {1, 4, 16},
                          {16, 1, 65536},
                          {24, 1, 16777216},
                          {30, 1, 1 << 30},
                          {32, 1, -1},
                          {8, 4, -1}}) {
        bitsPerPixel = c.bits;
        planes = c.planes;
        EXPECT_EQ(c.colours, Number(L"DisplayColors")) << c.bits;
    }
    for (const auto& [dots, large] : {std::pair{96, false}, {119, false}, {120, true}, {144, false}, {0, false}}) {
        dotsPerInch = dots;
        EXPECT_EQ(large, Flag(L"LargeFonts")) << dots;
    }
    EXPECT_TRUE(recorder.reports().empty());
    for (const int tooMany : {31, 48}) {
        bitsPerPixel = tooMany;
        planes = 1;
        EXPECT_EQ(0, Number(L"DisplayColors"));
        EXPECT_EQ(L"DisplayColors", recorder.reports().back().title);
        EXPECT_EQ(L"Error: 6. Overflow", recorder.reports().back().text);
    }
    EXPECT_EQ(before, GdiObjects()) << "each context was given back";
}

OSVERSIONINFOA version;
BOOL WINAPI Version(LPOSVERSIONINFOA answer) {
    EXPECT_EQ(148u, answer->dwOSVersionInfoSize);
    if (succeeds) *answer = version;
    return succeeds;
}

TEST_F(OSInfo, PassesTheVersionRecordThrough) {
    const ImportPatch patch(Library(), "GetVersionExA", Address(&Version));
    succeeds = true;
    version = {148, 6, 2, 0, 1, "Service Pack 2\0junk"};
    EXPECT_EQ(6, Number(L"OSMajorVersion"));
    EXPECT_EQ(2, Number(L"OSMinorVersion"));
    EXPECT_EQ(OSIWindows95, Number(L"WindowsType"));
    EXPECT_EQ(L"Service Pack 2", TextOfProperty(L"OSAdditional"));
    for (const auto& [build, shown] :
         {std::pair<DWORD, LONG>{67111248, 2384}, {19045, 19045}, {32768, 0}, {0xFFFF'FFFF, 32767}}) {
        version.dwBuildNumber = build;
        EXPECT_EQ(shown, Number(L"OSBuild")) << build;
    }
    std::memset(version.szCSDVersion, 'x', 128);
    EXPECT_EQ(std::wstring(128, L'x'), TextOfProperty(L"OSAdditional")) << "a text that fills its field";
    succeeds = false;
    EXPECT_EQ(0, Number(L"OSMajorVersion"));
    EXPECT_EQ(L"", TextOfProperty(L"OSAdditional"));
}

DWORD ticks;
DWORD WINAPI Ticks() { return ticks; }
HRESULT WINAPI FixedIdentifier(::GUID* identifier) {
    *identifier = {0x00A1B2C3, 0x000F, 0x0010, {0xAB, 0x0C, 0, 1, 0x10, 0xFF, 9, 0xA}};
    return S_OK;
}

TEST_F(OSInfo, TellsUpTimeAndIdentifiersInItsOwnForm) {
    const std::wstring first = TextOfProperty(L"GUID"), second = TextOfProperty(L"GUID");
    EXPECT_NE(first, second);
    EXPECT_EQ(3, std::count(first.begin(), first.end(), L'-'));
    const ImportPatch identifier(Library(), "CoCreateGuid", Address(&FixedIdentifier));
    EXPECT_EQ(L"{A1B2C3-F-10-ABC0110FF9A}", TextOfProperty(L"GUID"));
    const ImportPatch clock(Library(), "GetTickCount", Address(&Ticks));
    ticks = 90'000;
    EXPECT_EQ(2, Number(L"WindowsUpTime"));
    ticks = 0x8000'0000;
    EXPECT_EQ(-35791, Number(L"WindowsUpTime"));
}

TEST_F(OSInfo, NamesATemporaryFileWithoutMakingIt) {
    const auto file = [&](const wchar_t* prefix) {
        Variant text = Text(prefix);
        return TextOf(Get(info_.get(), L"TempFile", {Arg(&text)}).value);
    };
    const std::wstring path = file(L"abcd");
    EXPECT_EQ(TextOfProperty(L"TempPath") + L"abc1.tmp", path);
    EXPECT_EQ(path, file(L"abcx"));
    EXPECT_EQ(INVALID_FILE_ATTRIBUTES, GetFileAttributesW(path.c_str()));
    const ImportPatch patch(Library(), "GetTempPathA", Address(&FillTempPath));
    blank = ' ';
    succeeds = false;
    EXPECT_EQ(std::wstring(255, L' '), file(L"abc")) << "no such folder";
}

// The real registry of the private prefix.
TEST_F(OSInfo, ReadsTheRegisteredDefaults) {
    constexpr const wchar_t* kKey = L"Software\\Microsoft\\MS Setup (ACME)";
    RegDeleteTreeW(HKEY_CURRENT_USER, kKey);
    EXPECT_EQ(L"", TextOfProperty(L"DefaultCompanyName"));
    struct Case {
        DWORD type;
        std::string bytes;
        std::wstring text;
    };
    using namespace std::string_literals;
    const Case cases[] = {
        {REG_SZ, "W\xE4gen AG\0"s, L"W\u00E4gen AG"},
        {REG_SZ, "two\0parts\0"s, L"two"},
        {REG_SZ, "no end"s, L"no end"},
        {REG_SZ, ""s, L""},
        {REG_DWORD, "\xFF\xFF\xFF\xFF"s, L"-1"},
        {REG_BINARY, "A\0B\0c"s, L"AB"},
        {REG_BINARY, ""s, L""},
        {REG_EXPAND_SZ, "%PATH%\0"s, L""},
        {REG_MULTI_SZ, "one\0\0"s, L""},
    };
    for (const auto& [property, name] :
         {std::pair{L"DefaultCompanyName", "DefCompany"}, {L"DefaultUserName", "DefName"}}) {
        RegistryKey key;
        ASSERT_EQ(0, RegCreateKeyW(HKEY_CURRENT_USER, (std::wstring(kKey) + L"\\User Info").c_str(), key.Receive()));
        EXPECT_EQ(L"", TextOfProperty(property)) << "no such value";
        for (const Case& c : cases) {
            RegSetValueExA(key.get(), name, 0, c.type, reinterpret_cast<const BYTE*>(c.bytes.data()),
                           static_cast<DWORD>(c.bytes.size()));
            EXPECT_EQ(c.text, TextOfProperty(property)) << c.type << c.bytes;
        }
    }
    EXPECT_EQ(0, RegDeleteTreeW(HKEY_CURRENT_USER, kKey));
}

}  // namespace
}  // namespace velk::test
