#include "sysinfo/os_info.h"

#include <cmath>
#include <cstring>
#include <utility>

#include "platform/com_ptr.h"
#include "platform/drawing_handles.h"
#include "platform/registry.h"
#include "platform/text.h"
#include "platform/whole_numbers.h"
#include "sysinfo/identifier_text.h"
#include "sysinfo/up_time.h"

namespace velk {
namespace {

constexpr const char* kUserInfoKey = R"(Software\Microsoft\MS Setup (ACME)\User Info)";
constexpr DWORD kNameSize = 100;
constexpr DWORD kTempPathSize = 255;
constexpr DWORD kBuildMask = 0x7FFF;

OSVERSIONINFOA Version() noexcept {
    static_assert(sizeof(OSVERSIONINFOA) == 148);
    OSVERSIONINFOA version{};
    version.dwOSVersionInfoSize = sizeof version;
    GetVersionExA(&version);
    return version;
}

template <class T>
T SystemParameter(UINT action) noexcept {
    T value{};
    SystemParametersInfoA(action, 0, &value, 0);
    return value;
}

void SetSystemParameter(UINT action, UINT value) noexcept {
    SystemParametersInfoA(action, value, nullptr, SPIF_SENDCHANGE);
}

int ScreenCapability(int index) noexcept {
    const ScreenContext screen(GetDC(nullptr));
    return GetDeviceCaps(screen.get(), index);
}

// What a call leaves in a buffer of a fixed size; all of the filling when it leaves nothing.
template <class Call>
Bstr Filled(DWORD size, char filling, Call call) {
    std::string buffer(size, filling);
    call(buffer.data());
    return FromAnsiBuffer(buffer);
}

// Bytes are taken as the text's UTF-16 code units.
Bstr TextOfBytes(const std::vector<char>& bytes) {
    std::wstring text(bytes.size() / sizeof(wchar_t), L'\0');
    if (!text.empty()) std::memcpy(text.data(), bytes.data(), text.size() * sizeof(wchar_t));
    return Bstr(text);
}

Bstr UserInfo(const char* name) {
    const auto value = ReadRegistryValue(HKEY_CURRENT_USER, kUserInfoKey, name, KEY_QUERY_VALUE);
    if (!value) return {};
    switch (value->type) {
        case REG_SZ:
            return FromAnsiBuffer(value->text());
        case REG_BINARY:
            return TextOfBytes(value->bytes);
        case REG_DWORD:
            return Bstr(DecimalText(value->number()));
        default:
            return {};
    }
}

std::string TempFolder() {
    std::string folder(kTempPathSize, ' ');
    GetTempPathA(kTempPathSize, folder.data());
    return folder;
}

}  // namespace

constinit const ClassInfo COSInfo::kInfo{
    .name = L"COSInfo",
    .clsid = __uuidof(::COSInfo),
    .iid = __uuidof(_COSInfo),
    .policy = FailurePolicy::Report,
};

STDMETHODIMP COSInfo::get_Beep(VARIANT_BOOL* result) noexcept {
    return Guard(result, [] { return SystemParameter<BOOL>(SPI_GETBEEP) != FALSE; });
}

STDMETHODIMP COSInfo::put_Beep(VARIANT_BOOL* blnValue) noexcept {
    return Guard([&] { SetSystemParameter(SPI_SETBEEP, Given(blnValue) ? TRUE : FALSE); });
}

STDMETHODIMP COSInfo::get_ComputerName(BSTR* result) noexcept {
    return Guard(result, [] {
        DWORD size = kNameSize;
        return Filled(kNameSize, '\0', [&](char* name) { GetComputerNameA(name, &size); });
    });
}

STDMETHODIMP COSInfo::put_ComputerName(BSTR* strName) noexcept {
    return Guard([&] { SetComputerNameA(ToAnsi(View(Given(strName))).c_str()); });
}

STDMETHODIMP COSInfo::get_CurrentHardwareProfile(BSTR* result) noexcept {
    return Guard(result, [] {
        HW_PROFILE_INFOA profile{};
        GetCurrentHwProfileA(&profile);
        return FromAnsiBuffer({profile.szHwProfileName, sizeof profile.szHwProfileName});
    });
}

STDMETHODIMP COSInfo::get_DefaultCompanyName(BSTR* result) noexcept {
    return Guard(result, [] { return UserInfo("DefCompany"); });
}

STDMETHODIMP COSInfo::get_DefaultUserName(BSTR* result) noexcept {
    return Guard(result, [] { return UserInfo("DefName"); });
}

STDMETHODIMP COSInfo::get_DisplayColors(LONG* result) noexcept {
    return Guard(result, [] {
        const int bits = ScreenCapability(BITSPIXEL) * ScreenCapability(PLANES);
        return bits == 32 ? -1 : RoundToLong(std::ldexp(1.0, bits));
    });
}

STDMETHODIMP COSInfo::get_GUID(BSTR* result) noexcept {
    return Guard(result, [] {
        ::GUID made{};
        CoCreateGuid(&made);
        return FromAnsiBuffer(IdentifierText(made.Data1, made.Data2, made.Data3, made.Data4));
    });
}

STDMETHODIMP COSInfo::get_Language(BSTR* result) noexcept {
    return Guard(result, [] {
        return Filled(kNameSize, ' ',
                      [](char* name) { GetLocaleInfoA(GetUserDefaultLCID(), LOCALE_SENGLANGUAGE, name, kNameSize); });
    });
}

// Deliberate: finer screens than 120 pixels per inch have no large fonts.
STDMETHODIMP COSInfo::get_LargeFonts(VARIANT_BOOL* result) noexcept {
    return Guard(result, [] { return ScreenCapability(LOGPIXELSX) == 120; });
}

STDMETHODIMP COSInfo::get_OSAdditional(BSTR* result) noexcept {
    return Guard(result, [] {
        const OSVERSIONINFOA version = Version();
        return FromAnsiBuffer({version.szCSDVersion, sizeof version.szCSDVersion});
    });
}

STDMETHODIMP COSInfo::get_OSBuild(LONG* result) noexcept {
    return Guard(result, [] { return static_cast<LONG>(Version().dwBuildNumber & kBuildMask); });
}

STDMETHODIMP COSInfo::get_OSMajorVersion(LONG* result) noexcept {
    return Guard(result, [] { return static_cast<LONG>(Version().dwMajorVersion); });
}

STDMETHODIMP COSInfo::get_OSMinorVersion(LONG* result) noexcept {
    return Guard(result, [] { return static_cast<LONG>(Version().dwMinorVersion); });
}

STDMETHODIMP COSInfo::get_ScreenSaverActive(VARIANT_BOOL* result) noexcept {
    return Guard(result, [] { return SystemParameter<BOOL>(SPI_GETSCREENSAVEACTIVE) != FALSE; });
}

STDMETHODIMP COSInfo::put_ScreenSaverActive(VARIANT_BOOL* blnValue) noexcept {
    return Guard([&] { SetSystemParameter(SPI_SETSCREENSAVEACTIVE, Given(blnValue) ? TRUE : FALSE); });
}

STDMETHODIMP COSInfo::get_ScreenSaverTimeout(LONG* result) noexcept {
    return Guard(result, [] { return SystemParameter<LONG>(SPI_GETSCREENSAVETIMEOUT); });
}

STDMETHODIMP COSInfo::put_ScreenSaverTimeout(LONG* lngSeconds) noexcept {
    return Guard([&] { SetSystemParameter(SPI_SETSCREENSAVETIMEOUT, static_cast<UINT>(Given(lngSeconds))); });
}

STDMETHODIMP COSInfo::get_SystemDirectory(BSTR* result) noexcept {
    return Guard(result,
                 [] { return Filled(MAX_PATH, '\0', [](char* folder) { GetSystemDirectoryA(folder, MAX_PATH); }); });
}

// The fixed unique number is deliberate: the platform then only builds the name, the same at every call.
STDMETHODIMP COSInfo::get_TempFile(BSTR* strPrefix, BSTR* result) noexcept {
    return Guard(result, [&] {
        const std::string prefix = ToAnsi(View(Given(strPrefix)));
        std::string name(kTempPathSize, ' ');
        name.resize(MAX_PATH);  // what the platform may write
        GetTempFileNameA(TempFolder().c_str(), prefix.c_str(), 1, name.data());
        return FromAnsiBuffer(name);
    });
}

STDMETHODIMP COSInfo::get_TempPath(BSTR* result) noexcept {
    return Guard(result, [] { return FromAnsiBuffer(TempFolder()); });
}

STDMETHODIMP COSInfo::get_UserName(BSTR* result) noexcept {
    return Guard(result, [] {
        DWORD size = kNameSize;
        return Filled(kNameSize, '\0', [&](char* name) { GetUserNameA(name, &size); });
    });
}

STDMETHODIMP COSInfo::get_WindowsDirectory(BSTR* result) noexcept {
    return Guard(result,
                 [] { return Filled(MAX_PATH, '\0', [](char* folder) { GetWindowsDirectoryA(folder, MAX_PATH); }); });
}

STDMETHODIMP COSInfo::get_WindowsType(EnumWindowsType* result) noexcept {
    return Guard(result, [] { return static_cast<EnumWindowsType>(Version().dwPlatformId); });
}

STDMETHODIMP COSInfo::get_WindowsUpTime(LONG* result) noexcept {
    return Guard(result, [] { return MinutesFromTicks(GetTickCount()); });
}

// Each of the four is a step of its own: one that does not fit is reported and the others are still given. The reports
// come last, since the client's code, which runs while one is open, may do what it likes with its variables.
STDMETHODIMP COSInfo::GetWorkArea(SHORT* intLeft, SHORT* intTop, SHORT* intWidth, SHORT* intHeight) noexcept {
    return Guard([&] {
        const auto area = SystemParameter<RECT>(SPI_GETWORKAREA);
        const std::pair<SHORT&, std::int64_t> answers[] = {
            {Given(intLeft), area.left},
            {Given(intTop), area.top},
            {Given(intWidth), std::int64_t{area.right} - area.left},
            {Given(intHeight), std::int64_t{area.bottom} - area.top},
        };
        int overflows = 0;
        for (const auto& [argument, pixels] : answers) {
            if (pixels == static_cast<SHORT>(pixels)) {
                argument = static_cast<SHORT>(pixels);
            } else {
                ++overflows;
            }
        }
        for (; overflows > 0; --overflows) GuardAs("GetWorkArea", [] { throw RuntimeError(Error::Overflow); });
    });
}

}  // namespace velk
