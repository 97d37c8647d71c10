#include "velkdoctor/report.h"

#include "velkdoctor/diagnosis.h"
#include "velkdoctor/registrations.h"

namespace velk {
namespace {

using Text = std::wstring;

Text Variable(const wchar_t* name) {
    wchar_t value[MAX_PATH] = {};
    const DWORD length = GetEnvironmentVariableW(name, value, MAX_PATH);
    return length < MAX_PATH ? value : L"";
}

// Every occurrence, in capitals or not.
void Replace(Text& text, const Text& part, const Text& by) {
    if (part.empty()) return;
    for (std::size_t at = 0; at + part.size() <= text.size();) {
        const int length = static_cast<int>(part.size());
        if (CompareStringOrdinal(text.data() + at, length, part.data(), length, TRUE) != CSTR_EQUAL) {
            ++at;
            continue;
        }
        text.replace(at, part.size(), by);
        at += by.size();
    }
}

// Folders of a user carry the name; so may any other path.
Text WithoutNames(Text text) {
    for (const wchar_t* name : {L"USERPROFILE", L"USERNAME", L"COMPUTERNAME", L"USERDOMAIN"})
        Replace(text, Variable(name), L"%" + Text(name) + L"%");
    return text;
}

Text SystemLine() {
    const Text key = L"Software\\Microsoft\\Windows NT\\CurrentVersion";
    const auto fact = [&](const wchar_t* name) { return ReadText(HKEY_LOCAL_MACHINE, key, name).value_or(L"?"); };
    Text line =
        fact(L"ProductName") + L", version " + fact(L"CurrentVersion") + L", build " + fact(L"CurrentBuildNumber");
    if (GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version")) line += L", under Wine";
    return line + L", code page " + std::to_wstring(GetACP()) + L", language " +
           std::to_wstring(GetUserDefaultLangID());
}

Text ProcessLine() {
    BOOL emulated = FALSE;
    IsWow64Process(GetCurrentProcess(), &emulated);
    return Text(sizeof(void*) == 4 ? L"32-bit" : L"64-bit") + (emulated ? L" on a 64-bit system" : L"") +
           (IsElevated() ? L", as administrator" : L", not as administrator");
}

Text FileLine(const KnownLibrary& library) {
    const Text path = OwnFolder() + library.file;
    if (!Exists(path)) return path + L" is not there";
    const auto version = VersionOf(path);
    return path + L" " + (version ? VersionText(*version) : L"without a version") +
           (IsWhole(path) ? L"" : L", damaged");
}

}  // namespace

Text Report(const Text& diagnosis) {
    Text text = L"System: " + SystemLine() + L"\nProcess: " + ProcessLine() + L"\n";
    for (const KnownLibrary& library : KnownLibraries()) {
        text += L"Made for: " + library.file + L" " + VersionText(library.version) + L"\nBeside it: " +
                FileLine(library) + L"\n";
    }
    for (const wchar_t* name : {L"VELKSPRT_SCOPE", L"VELKSPRT_CRC32"}) {
        if (!Variable(name).empty()) text += name + (L"=" + Variable(name)) + L"\n";
    }
    return WithoutNames(text + L"\n" + diagnosis);
}

}  // namespace velk
