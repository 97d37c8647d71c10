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
constexpr REGSAM kOtherView = sizeof(void*) == 4 ? KEY_WOW64_64KEY : KEY_WOW64_32KEY;

class Doctor : public Deployed {
  protected:
    static void Expect(State state, const std::string& words, const wchar_t* name = L"CStack") {
        const Answer answer = RunDoctor(name);
        EXPECT_EQ(static_cast<int>(state), answer.code) << answer.text;
        EXPECT_NE(std::string::npos, answer.text.find(words)) << answer.text;
        EXPECT_EQ(state != State::Fine, answer.text.find("What to do: ") != std::string::npos) << answer.text;
    }
    static void RegisterFile(const std::wstring& path) {
        ASSERT_EQ(S_OK, Register());
        SetText(HKEY_LOCAL_MACHINE, kServerKey, nullptr, path);
    }
    const ScratchFolder folder_;
};

TEST_F(Doctor, NamesTheStateOfTheRegisteredFile) {
    ASSERT_EQ(S_OK, Register());
    Expect(State::Fine, "can be created here");
    EXPECT_EQ(0, RunDoctor(L"velksupport.cstack").code) << "names are found without regard to case";

    RegisterFile(folder_.Path(L"gone.dll"));
    Expect(State::MissingFile, "gone.dll");
    RegisterFile(L"\"" + folder_.Write(L"text.dll", "no library") + L"\"");
    Expect(State::WrongWidth, "text.dll");
    const DWORD otherMachine =
        sizeof(void*) == 4 ? 0x60000 | IMAGE_FILE_MACHINE_AMD64 : 0x60000 | IMAGE_FILE_MACHINE_I386;
    RegisterFile(Altered(folder_, L"wide.dll", "PE\0\0"s, otherMachine));
    Expect(State::WrongWidth, "wide.dll");
    // A file version starts with a signature and the version of its own layout.
    RegisterFile(Altered(folder_, L"old.dll", "\xBD\x04\xEF\xFE\0\0\1\0"s, 0x00010000));
    Expect(State::OlderVersion, "old.dll is 1.0.0.1, this program belongs to 1.1.0.1");
    RegisterFile(Altered(folder_, L"elsewhere.dll", "\xBD\x04\xEF\xFE\0\0\1\0"s, 0x00010001));
    Expect(State::OtherFolder, "elsewhere.dll");
    RegisterFile(L"C:\\windows\\system32\\version.dll");
    Expect(State::CannotLoad, "version.dll");
}

TEST_F(Doctor, NamesWhatIsMissing) {
    Expect(State::NotRegistered, "not registered");
    const std::string all = RunDoctor(L"").text;
    for (const char* library : {"\\VelkSprt.dll", "\\VelkSub.dll"}) {
        EXPECT_NE(std::string::npos, all.find(library)) << "each class names its own library: " << all;
    }
    ASSERT_EQ(S_OK, Register());
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, L"Software\\Classes\\VelkSupport.CStack");
    Expect(State::NameTaken, "VelkSupport.CStack is missing");
    SetText(HKEY_LOCAL_MACHINE, L"Software\\Classes\\VelkSupport.CStack\\CLSID", nullptr, GuidText(__uuidof(CCRC32)));
    Expect(State::NameTaken, "leads to another class");
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, kClassKey.c_str());
    Expect(State::NotRegistered, "not registered");
    EXPECT_EQ(2, RunDoctor(L"").code) << "the state that hinders most decides";
}

TEST_F(Doctor, NamesForWhomItIsRegistered) {
    const std::wstring other = L".DEFAULT\\";  // the system's own
    SetText(HKEY_USERS, other + kServerKey, nullptr, LibraryPath());
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
    Expect(State::HooksMissing, "VelkSub.HookManager: not registered", L"CFormSizeConstraint");
    Expect(State::Fine, "can be created here");

    EXPECT_EQ(S_OK, call("DllRegisterServer"));
    EXPECT_EQ(0, RunDoctor(L"").code);
    SetText(HKEY_LOCAL_MACHINE, L"Software\\Classes\\CLSID\\" + GuidText(__uuidof(HookManager)) + L"\\InprocServer32",
            nullptr, folder_.Path(L"gone.dll"));
    Expect(State::HooksMissing, "gone.dll", L"CFormSizeConstraint");
    EXPECT_EQ(S_OK, call("DllUnregisterServer"));
    FreeLibrary(hooks);
}

TEST_F(Doctor, NamesTheOtherWidth) {
    BOOL emulated = FALSE;
    IsWow64Process(GetCurrentProcess(), &emulated);
    if (sizeof(void*) == 4 && !emulated) GTEST_SKIP() << "a 32-bit system has one view of the registry";
    SetText(HKEY_LOCAL_MACHINE, kServerKey, nullptr, L"C:\\other\\VelkSprt.dll", kOtherView);
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
