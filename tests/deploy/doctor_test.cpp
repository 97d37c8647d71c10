// velkdoctor in each of the states that it knows. Every state is set up in the registry and taken back.
#include "deploy/doctor.h"

#include <sddl.h>

#include "platform/handles.h"
#include "support/departures.h"
#include "tools/typelib/type_reader.h"
#include "velkdoctor/diagnosis.h"
#include "velkdoctor/registrations.h"
#include "velksub.h"

namespace velk::test {
namespace {

using namespace std::string_literals;

const std::wstring kClassKey = L"Software\\Classes\\CLSID\\" + GuidText(__uuidof(CStack));
const std::wstring kServerKey = kClassKey + L"\\InprocServer32";
const std::wstring kTypesKey = L"TypeLib\\" + GuidText(AttributesOf(LoadTypes(LibraryPath().c_str()))->guid);

class Doctor : public Deployed {
  protected:
    static void Expect(State state, const std::string& words, const wchar_t* name = L"CStack") {
        const Answer answer = RunDoctor(name);
        EXPECT_EQ(static_cast<int>(state), answer.code) << answer.text;
        EXPECT_NE(std::string::npos, answer.text.find(words)) << answer.text;
        const std::size_t advice = answer.text.find("What to do: ");
        EXPECT_EQ(state != State::Fine, advice != std::string::npos) << answer.text;
        EXPECT_EQ(std::string::npos, answer.text.find(": ", advice == std::string::npos ? 0 : advice + 12))
            << answer.text;
    }
    static void RegisterFile(const std::wstring& path) {
        ASSERT_EQ(S_OK, Register());
        WriteText(HKEY_LOCAL_MACHINE, kServerKey, nullptr, path);
    }
    const ScratchFolder folder_;
};

TEST_F(Doctor, NamesTheStateOfTheRegisteredFile) {
    ASSERT_EQ(S_OK, Register());
    Expect(State::Fine, "can be created here");
    EXPECT_EQ(0, RunDoctor(L"velksupport.cstack").code) << "names are found without regard to case";

    const DWORD otherMachine = 0x60000 | (sizeof(void*) == 4 ? IMAGE_FILE_MACHINE_AMD64 : IMAGE_FILE_MACHINE_I386);
    // A file version starts with a signature and the version of its own layout.
    const std::string version = "\xBD\x04\xEF\xFE\0\0\1\0"s;
    const std::string whole = Contents(LibraryPath());
    const struct {
        State state;
        std::wstring file;
        std::string words;
    } cases[] = {
        {State::MissingFile, folder_.Path(L"gone.dll"), "gone.dll"},
        {State::Damaged, L"\"" + folder_.Write(L"text.dll", "no library") + L"\"", "text.dll is damaged"},
        {State::Damaged, folder_.Write(L"half.dll", whole.substr(0, whole.size() / 2)), "half.dll is damaged"},
        {State::WrongWidth, Altered(folder_, L"wide.dll", "PE\0\0"s, otherMachine), "wide.dll"},
        {State::OlderVersion, Altered(folder_, L"old.dll", version, 0x00010000),
         "old.dll is 1.0.0.1, this program belongs to 1.1.0.1"},
        {State::OtherFolder, Altered(folder_, L"elsewhere.dll", version, 0x00010001), "elsewhere.dll"},
        {State::CannotLoad, L"C:\\windows\\system32\\version.dll", "version.dll"},
    };
    for (const auto& [state, file, words] : cases) {
        RegisterFile(file);
        Expect(state, words);
    }
    const std::string report = RunDoctor(L"--report").text;
    EXPECT_NE(std::string::npos, report.find("System: ")) << report;
    wchar_t name[64] = {};
    GetEnvironmentVariableW(L"USERNAME", name, ARRAYSIZE(name));
    RegisterFile(L"C:\\users\\" + std::wstring(name) + L"\\gone.dll");
    EXPECT_NE(std::string::npos, RunDoctor(L"--report").text.find("%USERPROFILE%\\gone.dll"));

    EXPECT_NE(0, RunDoctor(L"--fix", "no\n").code) << "asks first";
    EXPECT_EQ(0, RunDoctor(L"--fix", "y\ny\n").code);
    Expect(State::Fine, "can be created here");
}

TEST_F(Doctor, NamesWhatIsMissing) {
    Expect(State::NotRegistered, "not registered");
    const std::string all = RunDoctor(L"").text;
    for (const char* library : {"\\VelkSprt.dll", "\\VelkSub.dll"}) {
        EXPECT_NE(std::string::npos, all.find(library)) << "each class names its own library: " << all;
    }
    ASSERT_EQ(S_OK, Register());
    for (const std::wstring& key : {L"Interface\\" + GuidText(__uuidof(_CStack)), kTypesKey}) {
        RegDeleteTreeW(HKEY_LOCAL_MACHINE, (L"Software\\Classes\\" + key).c_str());
        Expect(State::TypesMissing, "is missing");
        EXPECT_EQ(0, RunDoctor(L"--fix --yes").code) << key;
    }
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, L"Software\\Classes\\VelkSupport.CStack");
    Expect(State::NameTaken, "VelkSupport.CStack is missing");
    WriteText(HKEY_LOCAL_MACHINE, L"Software\\Classes\\VelkSupport.CStack\\CLSID", nullptr, GuidText(__uuidof(CCRC32)));
    Expect(State::NameTaken, "leads to another class");
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, kClassKey.c_str());
    Expect(State::NotRegistered, "not registered");
    EXPECT_EQ(2, RunDoctor(L"").code) << "the state that hinders most decides";
}

TEST_F(Doctor, TheHelpFolderIsThatOfTheLibraryRegisteredLast) {
    const std::wstring copy = folder_.Write(L"VelkSprt.dll", Contents(LibraryPath()));
    for (const std::wstring& file : {copy, LibraryPath()}) {
        ASSERT_EQ(S_OK, RegisterLibraryFile(file));
        EXPECT_EQ(file.substr(0, file.rfind(L'\\')),
                  ReadText(HKEY_CLASSES_ROOT, kTypesKey + L"\\1.1\\HELPDIR", nullptr).value_or(L""));
    }
}

// As after a double click.
TEST_F(Doctor, AConsoleOfItsOwnStaysOpenUntilEnter) {
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process{};
    ASSERT_TRUE(CreateProcessW(BuiltFile(L"velkdoctor.exe").c_str(), nullptr, nullptr, nullptr, FALSE,
                               CREATE_NEW_CONSOLE, nullptr, nullptr, &startup, &process));
    const FileHandle running(process.hProcess), thread(process.hThread);
    EXPECT_EQ(DWORD{WAIT_TIMEOUT}, WaitForSingleObject(running.get(), 5000));
    TerminateProcess(running.get(), 0);
}

TEST_F(Doctor, NamesForWhomItIsRegistered) {
    const std::wstring other = L".DEFAULT\\";  // the system's own
    WriteText(HKEY_USERS, other + kServerKey, nullptr, LibraryPath());
    Expect(State::OtherUserOnly, "registered for another user only");
    RegDeleteTreeW(HKEY_USERS, (other + kClassKey).c_str());
    Expect(State::NotRegistered, "not registered");

    SetEnvironmentVariableW(L"VELKSPRT_SCOPE", L"user");
    EXPECT_EQ(S_OK, Register());
    SetEnvironmentVariableW(L"VELKSPRT_SCOPE", nullptr);
    const bool isSeen = !IsElevated() && !Departs("CLSIDFromProgID");
    Expect(isSeen ? State::Fine : State::UserOnly, isSeen ? "can be created here" : "registered for you only");
    EXPECT_EQ(S_OK, Register());
    Expect(State::Fine, "can be created here");
}

TEST_F(Doctor, NamesTheMissingHookLibrary) {
    const HMODULE hooks = LoadLibraryW(BuiltFile(L"VelkSub.dll").c_str());
    const auto call = [hooks](const char* name) { return Export<decltype(&DllRegisterServer)>(name, hooks)(); };
    ASSERT_EQ(S_OK, Register());
    call("DllUnregisterServer");
    Expect(State::HooksMissing, "VelkSub.HookManager is not registered", L"CFormSizeConstraint");
    Expect(State::Fine, "can be created here");

    EXPECT_EQ(S_OK, call("DllRegisterServer"));
    EXPECT_EQ(0, RunDoctor(L"").code);
    WriteText(HKEY_LOCAL_MACHINE, L"Software\\Classes\\CLSID\\" + GuidText(__uuidof(HookManager)) + L"\\InprocServer32",
              nullptr, folder_.Path(L"gone.dll"));
    Expect(State::HooksMissing, "gone.dll", L"CFormSizeConstraint");
    EXPECT_EQ(S_OK, call("DllUnregisterServer"));
    FreeLibrary(hooks);
}

TEST_F(Doctor, NamesTheOtherWidth) {
    BOOL emulated = FALSE;
    IsWow64Process(GetCurrentProcess(), &emulated);
    if (sizeof(void*) == 4 && !emulated) GTEST_SKIP() << "a 32-bit system has one view of the registry";
    WriteText(HKEY_LOCAL_MACHINE, kServerKey, nullptr, L"C:\\other\\VelkSprt.dll", kOtherView);
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

void LetEveryoneHave(const std::wstring& access, const std::wstring& path) {
    RegistryKey key;
    ASSERT_EQ(0, RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, READ_CONTROL | WRITE_DAC, key.Receive()));
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    ASSERT_TRUE(ConvertStringSecurityDescriptorToSecurityDescriptorW((L"D:(A;;" + access + L";;;WD)").c_str(),
                                                                     SDDL_REVISION_1, &descriptor, nullptr));
    EXPECT_EQ(0, RegSetKeySecurity(key.get(), DACL_SECURITY_INFORMATION, descriptor));
    LocalFree(descriptor);
}

TEST_F(Doctor, SaysThatTheRegistryMayNotBeWritten) {
    ASSERT_EQ(S_OK, Register());
    LetEveryoneHave(L"KR", kClassKey);
    EXPECT_EQ(13, RunDoctor(L"--surrogate on").code);
    LetEveryoneHave(L"KA", kClassKey);
    EXPECT_EQ(0, RunDoctor(L"--surrogate on").code);
}

TEST_F(Doctor, RefusesCommandsThatItDoesNotKnow) {
    for (const wchar_t* arguments : {L"CStck", L"--surrogate", L"--surrogate maybe", L"CStack CCRC32", L"-x"}) {
        EXPECT_EQ(1, RunDoctor(arguments).code) << arguments;
    }
    EXPECT_EQ(0, RunDoctor(L"--help").code);
}

}  // namespace
}  // namespace velk::test
