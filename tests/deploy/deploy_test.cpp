// velkdoctor, run as a person does, in each of the states that it knows. Every state is set up in the registry and
// taken back.
#include <gtest/gtest.h>
#include <windows.h>

#include <sddl.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "platform/handles.h"
#include "support/client.h"
#include "support/departures.h"
#include "support/late_bound.h"
#include "support/scratch_folder.h"
#include "tools/typelib/type_reader.h"
#include "velkdoctor/diagnosis.h"
#include "velkdoctor/registrations.h"
#include "velksub.h"

namespace velk::test {
namespace {

using namespace std::string_literals;

const std::wstring kClassKey = L"Software\\Classes\\CLSID\\" + GuidText(__uuidof(CStack));
const std::wstring kServerKey = kClassKey + L"\\InprocServer32";
const std::wstring kTypes = GuidText(AttributesOf(LoadTypes(LibraryPath().c_str()))->guid);

// A run with this typed into it: what it told, and its exit code.
struct Doctor {
    explicit Doctor(const std::wstring& arguments, const std::string& typed = "") {
        const ScratchFolder folder;
        const std::wstring program = L"\"" + BuiltFile(L"velkdoctor.exe") + L"\" " + arguments;
        FILE* const told = _wpopen((L"\"" + program + L" <" + folder.Write(L"typed", typed) + L"\"").c_str(), L"rt");
        for (int byte; (byte = std::fgetc(told)) != EOF;) text += static_cast<char>(byte);
        code = static_cast<DWORD>(_pclose(told));
    }
    bool Says(const std::string& words) const { return text.find(words) != text.npos; }

    DWORD code;
    std::string text;
};

DWORD CodeOf(const std::wstring& arguments, const std::string& typed = "") { return Doctor(arguments, typed).code; }

void Expect(State state, const std::string& words, const wchar_t* name = L"CStack") {
    const Doctor doctor(name);
    EXPECT_EQ(static_cast<DWORD>(state), doctor.code) << doctor.text;
    EXPECT_TRUE(doctor.Says(words)) << doctor.text;
    const std::size_t advice = doctor.text.find("What to do: ");
    EXPECT_EQ(state != State::Fine, advice != std::string::npos) << doctor.text;
    EXPECT_EQ(std::string::npos, doctor.text.find(": ", advice == std::string::npos ? 0 : advice + 12)) << doctor.text;
}

HRESULT CallExport(const char* name, HMODULE library = Library()) {
    return Export<decltype(&DllRegisterServer)>(name, library)();
}
HRESULT Register() { return CallExport("DllRegisterServer"); }
HRESULT Unregister() { return CallExport("DllUnregisterServer"); }
void Put(const std::wstring& key, const std::wstring& text, HKEY root = HKEY_LOCAL_MACHINE, REGSAM view = 0) {
    EXPECT_EQ(0, WriteText(root, key, nullptr, text, view));
}
void Delete(const std::wstring& key, HKEY root = HKEY_LOCAL_MACHINE) { RegDeleteTreeW(root, key.c_str()); }

// Each test starts and ends without the library in the registry.
class Deploy : public testing::Test {
  protected:
    Deploy() { Unregister(); }
    ~Deploy() override { Unregister(); }

    const ScratchFolder folder_;
};

TEST_F(Deploy, TheDoctorNamesTheStateOfTheRegisteredFile) {
    std::ifstream file(LibraryPath().c_str(), std::ios::binary);
    const std::string whole{std::istreambuf_iterator<char>(file), {}};
    // A copy in which one number, found by the bytes before it, has another value.
    const auto altered = [&](const wchar_t* name, const std::string& before, DWORD value) {
        std::string bytes = whole;
        std::memcpy(&bytes.at(bytes.find(before) + before.size()), &value, sizeof value);
        return folder_.Write(name, bytes);
    };
    const DWORD otherMachine = 0x60000 | (sizeof(void*) == 4 ? IMAGE_FILE_MACHINE_AMD64 : IMAGE_FILE_MACHINE_I386);
    // A file version starts with a signature and the version of its own layout.
    const std::string version = "\xBD\x04\xEF\xFE\0\0\1\0"s;
    wchar_t user[64] = {};
    GetEnvironmentVariableW(L"USERNAME", user, ARRAYSIZE(user));
    const struct {
        State state;
        std::wstring file;
        std::string words;
    } cases[] = {
        {State::Fine, LibraryPath(), "can be created here"},
        {State::MissingFile, folder_.Path(L"gone.dll"), "gone.dll"},
        {State::Damaged, L"\"" + folder_.Write(L"text.dll", "no library") + L"\"", "text.dll is damaged"},
        {State::Damaged, folder_.Write(L"half.dll", whole.substr(0, whole.size() / 2)), "half.dll is damaged"},
        {State::WrongWidth, altered(L"wide.dll", "PE\0\0"s, otherMachine), "wide.dll"},
        {State::OlderVersion, altered(L"old.dll", version, 0x00010000),
         "old.dll is 1.0.0.1, this program belongs to 1.1.0.1"},
        {State::OtherFolder, altered(L"elsewhere.dll", version, 0x00010001), "elsewhere.dll"},
        {State::CannotLoad, L"C:\\windows\\system32\\version.dll", "version.dll"},
        {State::MissingFile, L"C:\\users\\"s + user + L"\\gone.dll", "gone.dll"},
    };
    ASSERT_EQ(S_OK, Register());
    for (const auto& [state, file, words] : cases) {
        Put(kServerKey, file);
        Expect(state, words, state == State::Fine ? L"velksupport.cstack" : L"CStack");
    }
    const Doctor report(L"--report");
    EXPECT_TRUE(report.Says("System: ") && report.Says("%USERPROFILE%\\gone.dll")) << report.text;
    EXPECT_NE(0u, CodeOf(L"--fix", "no\n")) << "asks first";
    EXPECT_EQ(0u, CodeOf(L"--fix", "y\ny\n"));
}

TEST_F(Deploy, TheDoctorNamesWhatIsMissing) {
    Expect(State::NotRegistered, "not registered");
    const Doctor all(L"");
    EXPECT_TRUE(all.Says("\\VelkSprt.dll") && all.Says("\\VelkSub.dll")) << "each class names its own: " << all.text;
    ASSERT_EQ(S_OK, Register());
    for (const std::wstring& key : {L"Interface\\" + GuidText(__uuidof(_CStack)), L"TypeLib\\" + kTypes}) {
        Delete(kClassesKey + key);
        Expect(State::TypesMissing, "is missing");
        EXPECT_EQ(0u, CodeOf(L"--fix --yes"));
    }
    const std::wstring name = kClassesKey + L"VelkSupport.CStack"s;
    Delete(name);
    Expect(State::NameTaken, "VelkSupport.CStack is missing");
    Put(name + L"\\CLSID", GuidText(__uuidof(CCRC32)));
    Expect(State::NameTaken, "leads to another class");
    Delete(kClassKey);
    EXPECT_EQ(2u, CodeOf(L"")) << "the state that hinders most decides";
}

TEST_F(Deploy, TheDoctorNamesForWhomItIsRegistered) {
    const std::wstring other = L".DEFAULT\\";  // the system's own
    Put(other + kServerKey, LibraryPath(), HKEY_USERS);
    Expect(State::OtherUserOnly, "registered for another user only");
    Delete(other + kClassKey, HKEY_USERS);
    SetEnvironmentVariableW(L"VELKSPRT_SCOPE", L"user");
    EXPECT_EQ(S_OK, Register());
    SetEnvironmentVariableW(L"VELKSPRT_SCOPE", nullptr);
    const bool isSeen = !IsElevated() && !Departs("CLSIDFromProgID");
    Expect(isSeen ? State::Fine : State::UserOnly, isSeen ? "can be created here" : "registered for you only");
    EXPECT_EQ(S_OK, Register());
    Expect(State::Fine, "can be created here");
}

TEST_F(Deploy, TheDoctorNamesTheMissingHookLibrary) {
    const HMODULE hooks = LoadLibraryW(BuiltFile(L"VelkSub.dll").c_str());
    const wchar_t* const user = L"CFormSizeConstraint";
    ASSERT_EQ(S_OK, Register());
    CallExport("DllUnregisterServer", hooks);
    Expect(State::HooksMissing, "VelkSub.HookManager is not registered", user);
    Expect(State::Fine, "can be created here");
    EXPECT_EQ(S_OK, CallExport("DllRegisterServer", hooks));
    EXPECT_EQ(0u, CodeOf(L""));
    Put(kClassesKey + L"CLSID\\"s + GuidText(__uuidof(HookManager)) + L"\\InprocServer32", folder_.Path(L"gone.dll"));
    Expect(State::HooksMissing, "gone.dll", user);
    EXPECT_EQ(S_OK, CallExport("DllUnregisterServer", hooks));
    FreeLibrary(hooks);
}

TEST_F(Deploy, TheDoctorNamesTheOtherWidth) {
    BOOL emulated = FALSE;
    IsWow64Process(GetCurrentProcess(), &emulated);
    if (sizeof(void*) == 4 && !emulated) GTEST_SKIP() << "a 32-bit system has one view of the registry";
    Put(kServerKey, L"C:\\other\\VelkSprt.dll", HKEY_LOCAL_MACHINE, kOtherView);
    Expect(State::OtherWidthOnly, "programs only (C:\\other\\VelkSprt.dll)");

    // What both widths share stays as long as one of them is registered.
    ASSERT_EQ(S_OK, Register());
    EXPECT_EQ(S_OK, Unregister());
    CLSID clsid;
    EXPECT_EQ(S_OK, CLSIDFromProgID(L"VelkSupport.CStack", &clsid));
    EXPECT_EQ(CO_E_CLASSSTRING, CLSIDFromProgID(L"VelkSupport.CCRC32", &clsid)) << "not registered for the other width";
    RegDeleteKeyExW(HKEY_LOCAL_MACHINE, kServerKey.c_str(), kOtherView, 0);
    EXPECT_EQ(0, RegDeleteKeyExW(HKEY_LOCAL_MACHINE, kClassKey.c_str(), kOtherView, 0));
}

TEST_F(Deploy, ADoctorThatWasClickedStaysOpenUntilEnter) {
    STARTUPINFOW startup{};
    PROCESS_INFORMATION console{};
    startup.cb = sizeof startup;
    EXPECT_TRUE(CreateProcessW(BuiltFile(L"velkdoctor.exe").c_str(), nullptr, nullptr, nullptr, FALSE,
                               CREATE_NEW_CONSOLE, nullptr, nullptr, &startup, &console));
    EXPECT_EQ(DWORD{WAIT_TIMEOUT}, WaitForSingleObject(console.hProcess, 1000));
    TerminateProcess(console.hProcess, 0);
}

TEST_F(Deploy, TheDoctorSaysWhatItMayNotDo) {
    for (const wchar_t* arguments : {L"CStck", L"--surrogate", L"--surrogate maybe", L"CStack CCRC32"}) {
        EXPECT_EQ(1u, CodeOf(arguments)) << arguments;
    }
    EXPECT_EQ(0u, CodeOf(L"--help"));
    EXPECT_EQ(2u, CodeOf(L"--surrogate on")) << "nothing is registered";
    ASSERT_EQ(S_OK, Register());
    for (const auto& [access, code] : {std::pair(L"D:(A;;KR;;;WD)", 13u), {L"D:(A;;KA;;;WD)", 0u}}) {
        RegistryKey key;
        RegOpenKeyExW(HKEY_LOCAL_MACHINE, kClassKey.c_str(), 0, READ_CONTROL | WRITE_DAC, key.Receive());
        PSECURITY_DESCRIPTOR descriptor = nullptr;
        ConvertStringSecurityDescriptorToSecurityDescriptorW(access, SDDL_REVISION_1, &descriptor, nullptr);
        EXPECT_EQ(0, RegSetKeySecurity(key.get(), DACL_SECURITY_INFORMATION, descriptor));
        LocalFree(descriptor);
        EXPECT_EQ(code, CodeOf(L"--surrogate on"));
        EXPECT_EQ(code == 0, ReadText(HKEY_LOCAL_MACHINE, kClassKey, L"AppID").has_value());
    }
    EXPECT_EQ(0u, CodeOf(L"--surrogate off"));
    EXPECT_FALSE(ReadText(HKEY_LOCAL_MACHINE, kClassKey, L"AppID"));
}

}  // namespace
}  // namespace velk::test
