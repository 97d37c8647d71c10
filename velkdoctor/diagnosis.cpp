#include "velkdoctor/diagnosis.h"

#include <algorithm>
#include <filesystem>

#include "platform/com_ptr.h"
#include "platform/text.h"
#include "tools/typelib/type_reader.h"
#include "velkdoctor/registrations.h"

namespace velk {
namespace {

constexpr const wchar_t* kOwnWidth = sizeof(void*) == 4 ? L"32-bit" : L"64-bit";
constexpr const wchar_t* kOtherWidth = sizeof(void*) == 4 ? L"64-bit" : L"32-bit";

constexpr const wchar_t* kHookManager = L"VelkSub.HookManager";

// The classes that see a window's messages do so through the hook library.
bool NeedsHooks(const std::wstring& name) {
    constexpr const wchar_t* kHooking[] = {L"CFormSizeConstraint", L"CListViewExtended", L"cIconMenu"};
    return std::ranges::find(kHooking, name) != std::end(kHooking);
}

bool SameFile(const std::wstring& one, const std::wstring& other) {
    std::error_code error;
    return std::filesystem::equivalent(one, other, error);
}

std::wstring InQuotes(const std::wstring& text) { return L"\"" + text + L"\""; }

// The library beside this program if it is there, else a description of it.
std::wstring FileToRegister(const std::wstring& file) {
    const std::wstring beside = OwnFolder() + file;
    return Exists(beside) ? InQuotes(beside) : L"the " + std::wstring(kOwnWidth) + L" " + file;
}

// The folder of the register program for this width, which depends on the system's.
std::wstring RegisterProgram() {
    BOOL emulated = FALSE;
    IsWow64Process(GetCurrentProcess(), &emulated);
    wchar_t folder[MAX_PATH];
    const UINT length = emulated ? GetSystemWow64DirectoryW(folder, MAX_PATH) : GetSystemDirectoryW(folder, MAX_PATH);
    return std::wstring(folder, length) + L"\\regsvr32.exe";
}

std::wstring HowToRegister(const std::wstring& file) {
    return L"Register it with " + RegisterProgram() + L" " + FileToRegister(file) +
           L" (from an administrator's prompt for all users), with velkdoctor --fix, or run the installer.";
}

using Registrations = std::vector<Registration>;

const Registration* Find(const Registrations& all, Holder holder, bool ownWidth) {
    const auto found = std::ranges::find_if(
        all, [&](const Registration& one) { return one.holder == holder && one.ownWidth == ownWidth; });
    return found == all.end() ? nullptr : &*found;
}

// The one that the platform uses: the user's own goes first, except with administrative rights.
const Registration* InForce(const Registrations& all) {
    const Registration* const user = Find(all, Holder::User, true);
    const Registration* const machine = Find(all, Holder::Machine, true);
    return IsElevated() ? (machine ? machine : user) : (user ? user : machine);
}

Finding WhyNotRegistered(const Registrations& all, const std::wstring& file) {
    for (const Holder holder : {Holder::User, Holder::Machine}) {
        const Registration* const other = Find(all, holder, false);
        if (!other) continue;
        return {State::OtherWidthOnly,
                L"registered for " + std::wstring(kOtherWidth) + L" programs only (" + other->file + L").",
                L"Use it from a " + std::wstring(kOtherWidth) + L" program, or add the " + kOwnWidth + L" library. " +
                    HowToRegister(file)};
    }
    if (!all.empty()) {
        return {State::OtherUserOnly, L"registered for another user only (" + all.front().file + L").",
                L"Register it for this user or, as administrator, for all. " + HowToRegister(file)};
    }
    return {State::NotRegistered,
            L"not registered for " + std::wstring(kOwnWidth) + L" programs, neither for all users nor for you.",
            HowToRegister(file)};
}

std::wstring SystemText(HRESULT result) {
    wchar_t text[512] = {};
    FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, static_cast<DWORD>(result), 0,
                   text, ARRAYSIZE(text), nullptr);
    wchar_t number[16];
    swprintf(number, ARRAYSIZE(number), L"0x%08X", static_cast<unsigned>(result));
    const std::wstring all = text;
    return number + (L" " + all.substr(0, all.find_first_of(L"\r\n")));
}

// Asks the platform for the class object, which loads the library but makes no object.
HRESULT Load(REFCLSID clsid) {
    ComPtr<IClassFactory> factory;
    return CoGetClassObject(clsid, CLSCTX_INPROC_SERVER, nullptr, IID_IClassFactory, factory.ReceiveVoid());
}

Finding WhyNotLoaded(HRESULT result, const Registration& used, const std::wstring& file) {
    if (result == REGDB_E_CLASSNOTREG && used.holder == Holder::User) {
        return {State::UserOnly,
                L"registered for you only (" + used.file +
                    L"), and this process does not see that: programs that run as "
                    L"administrator pass over what is registered for one user.",
                L"Run the program without administrative rights, or register the library for all users. " +
                    HowToRegister(file)};
    }
    return {State::CannotLoad,
            L"registered, but " + used.file + L" does not give the class (" + SystemText(result) + L").",
            L"Put the delivered file in its place. " + HowToRegister(file)};
}

Finding CheckFile(const Registration& used, const KnownLibrary& library) {
    if (!Exists(used.file)) {
        return {State::MissingFile, L"registered, but the file " + used.file + L" is missing.",
                L"Put the file back, or register the library where it is now. " + HowToRegister(library.file)};
    }
    if (!IsWhole(used.file)) {
        return {State::Damaged,
                L"registered, but the file " + used.file + L" is damaged, for it is no library or not a whole one.",
                L"Put the delivered file in its place. " + HowToRegister(library.file)};
    }
    const std::optional<WORD> machine = MachineOf(used.file);
    if (!machine || Is32Bit(*machine) != (sizeof(void*) == 4)) {
        return {State::WrongWidth,
                L"registered for " + std::wstring(kOwnWidth) + L" programs, but " + used.file + L" is no " + kOwnWidth +
                    L" library.",
                HowToRegister(library.file)};
    }
    const std::optional<Version> version = VersionOf(used.file);
    if (version && *version < library.version) {
        return {State::OlderVersion,
                L"registered in an older version, for " + used.file + L" is " + VersionText(*version) +
                    L", this program belongs to " + VersionText(library.version) + L".",
                L"Install the newer version. " + HowToRegister(library.file)};
    }
    return {State::Fine, L"", L""};
}

Finding CheckName(const KnownClass& wanted, const std::wstring& file) {
    if (ClassNamed(wanted.progId) == wanted.clsid) return {State::Fine, L"", L""};
    return {State::NameTaken, L"registered, but the name " + wanted.progId + L" is missing or leads to another class.",
            HowToRegister(file)};
}

// The hook library is looked up by name: nothing links to it.
Finding CheckHooks() {
    const KnownLibrary hooks{L"VelkSub", L"VelkSub.dll", 0, {}, 0, 0, {}};
    const std::optional<CLSID> manager = ClassNamed(kHookManager);
    const Finding found =
        manager ? Examine(hooks, {L"HookManager", kHookManager, *manager, {}}) : WhyNotRegistered({}, hooks.file);
    if (found.state == State::Fine || found.state == State::OtherFolder) return {State::Fine, L"", L""};
    return {State::HooksMissing,
            L"it can be created but not hook windows, because VelkSub.HookManager is " + found.what, found.advice,
            hooks.file};
}

// Without them compiled clients of another process or width, interop and editors find no description of the classes.
Finding CheckTypes(const KnownLibrary& library, const KnownClass& wanted) {
    Bstr path;
    std::wstring missing;
    if (library.major && FAILED(QueryPathOfRegTypeLib(library.guid, library.major, library.minor, 0, path.Receive())))
        missing = L"the type library " + GuidText(library.guid);
    for (const IID& iid : wanted.interfaces) {
        const std::wstring key = L"Interface\\" + GuidText(iid);
        if (!ReadText(HKEY_CLASSES_ROOT, key + L"\\ProxyStubClsid32", nullptr))
            missing = L"the interface " + GuidText(iid);
    }
    if (missing.empty()) return {State::Fine, L"", L""};
    return {State::TypesMissing, L"it can be created, but the registry's key of " + missing + L" is missing.",
            HowToRegister(library.file)};
}

Finding CheckFolder(const Registration& used, const std::wstring& file) {
    const std::wstring beside = OwnFolder() + file;
    if (!Exists(beside) || SameFile(beside, used.file)) return {State::Fine, L"", L""};
    return {State::OtherFolder, L"it can be created, from another folder than this program's (" + used.file + L").",
            L"Nothing, if that is meant. " + HowToRegister(file)};
}

Finding CheckRegistered(const Registration& used, const KnownLibrary& library, const KnownClass& wanted) {
    Finding finding = CheckFile(used, library);
    if (finding.state != State::Fine) return finding;
    if (const HRESULT loaded = Load(wanted.clsid); FAILED(loaded)) return WhyNotLoaded(loaded, used, library.file);
    finding = CheckName(wanted, library.file);
    if (finding.state == State::Fine) finding = CheckTypes(library, wanted);
    if (finding.state == State::Fine && NeedsHooks(wanted.name)) finding = CheckHooks();
    if (finding.state == State::Fine) finding = CheckFolder(used, library.file);
    if (finding.state == State::Fine) finding.what = L"can be created here (" + used.file + L").";
    return finding;
}

}  // namespace

bool Exists(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY);
}

Finding Examine(const KnownLibrary& library, const KnownClass& wanted) {
    const Registrations all = RegistrationsOf(wanted.clsid);
    const Registration* const used = InForce(all);
    Finding finding = used ? CheckRegistered(*used, library, wanted) : WhyNotRegistered(all, library.file);
    if (finding.file.empty()) finding.file = library.file;
    return finding;
}

}  // namespace velk
