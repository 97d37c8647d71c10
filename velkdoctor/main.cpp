// velkdoctor: says in plain words why a class cannot be created here, and what to do.
#include <algorithm>
#include <set>

#include "frame/failure/failure.h"
#include "velkdoctor/console.h"
#include "velkdoctor/diagnosis.h"
#include "velkdoctor/registrations.h"
#include "velkdoctor/report.h"
#include "velkdoctor/surrogate.h"

namespace {

using namespace velk;

constexpr int kUsage = 1;
constexpr int kNotAllowed = 13;

constexpr const wchar_t* kHelp =
    L"velkdoctor                     examines all classes, for programs of this program's width\n"
    L"velkdoctor CLASS               examines one, for instance CStack or VelkSupport.CStack\n"
    L"velkdoctor --fix [--yes]       mends what it finds, by registering the libraries beside it; asks first\n"
    L"velkdoctor --report            prints what the maintainers need to know, without names of users and machines\n"
    L"velkdoctor --surrogate on      lets programs of the other width use the classes that make sense that way\n"
    L"velkdoctor --surrogate off     takes that back\n"
    L"\n"
    L"Exit codes: 0 all is well, 1 wrong command, 2 not registered, 3 registered for the other width only,\n"
    L"4 the registered file has the wrong width, 5 it is missing, 6 registered for another user only, 7 registered\n"
    L"for you only but this process does not see that, 8 older version, 9 registered in another folder, 10 the\n"
    L"class's name is missing or taken, 11 VelkSub is missing, 12 the library does not load, 13 the registry may\n"
    L"not be written, 14 the registered file is damaged, 15 keys of the type library are missing.\n";

bool Same(const std::wstring& one, const std::wstring& other) {
    return CompareStringOrdinal(one.c_str(), -1, other.c_str(), -1, TRUE) == CSTR_EQUAL;
}

// Classes for which the same is true, told once.
struct Group {
    Finding finding;
    std::vector<std::wstring> classes;
};

void Add(std::vector<Group>& groups, const Finding& finding, const std::wstring& name) {
    const auto same = std::ranges::find_if(groups, [&](const Group& group) {
        return group.finding.what == finding.what && group.finding.advice == finding.advice;
    });
    if (same != groups.end()) return same->classes.push_back(name);
    groups.push_back({finding, {name}});
}

std::vector<Group> Examined(const std::wstring& only) {
    std::vector<Group> groups;
    for (const KnownLibrary& library : KnownLibraries()) {
        for (const KnownClass& each : library.classes) {
            if (only.empty() || Same(only, each.name) || Same(only, each.progId))
                Add(groups, Examine(library, each), each.progId);
        }
    }
    return groups;
}

std::wstring TextOf(const std::vector<Group>& groups) {
    std::wstring text;
    for (const Group& group : groups) {
        std::wstring names;
        for (const std::wstring& name : group.classes) names += (names.empty() ? L"" : L", ") + name;
        text += names + L":\n  " + group.finding.what + L"\n";
        if (!group.finding.advice.empty()) text += L"  What to do: " + group.finding.advice + L"\n";
    }
    return text;
}

// What hinders most comes first in the list of states, and decides.
int Worst(const std::vector<Group>& groups) {
    State worst = State::Fine;
    for (const Group& group : groups) {
        if (worst == State::Fine || (group.finding.state != State::Fine && group.finding.state < worst))
            worst = group.finding.state;
    }
    return static_cast<int>(worst);
}

int Tell(const std::wstring& only) {
    const std::vector<Group> groups = Examined(only);
    if (groups.empty()) {
        Print(L"There is no class " + only + L". Without a name, velkdoctor lists all of them.\n");
        return kUsage;
    }
    Print(TextOf(groups));
    return Worst(groups);
}

int TellMaintainers() {
    const std::vector<Group> groups = Examined(L"");
    Print(Report(TextOf(groups)));
    return Worst(groups);
}

int SayNotAllowed() {
    Print(L"The registry may not be written. Run velkdoctor from an administrator's prompt.\n");
    return kNotAllowed;
}

// Each library once, whatever is wrong with its classes.
int Mend(bool asks) {
    const std::vector<Group> groups = Examined(L"");
    Print(TextOf(groups));
    std::set<std::wstring> files;
    for (const Group& group : groups) {
        if (group.finding.state != State::Fine) files.insert(group.finding.file);
    }
    for (const std::wstring& file : files) {
        const std::wstring path = OwnFolder() + file;
        if (!Exists(path) || !IsWhole(path)) {
            Print(path + L" is missing or damaged, so it cannot be registered. Run the installer again.\n");
        } else if (!asks || Agrees(L"Register " + path + L"?")) {
            const HRESULT result = RegisterLibraryFile(path);
            if (result == E_ACCESSDENIED) return SayNotAllowed();
            Print(path + (SUCCEEDED(result) ? L" is registered.\n" : L" could not be registered.\n"));
        }
    }
    return files.empty() ? 0 : Tell(L"");
}

int Switch(bool on) {
    LSTATUS status = ERROR_SUCCESS;
    std::wstring names;
    for (const KnownLibrary& library : KnownLibraries()) {
        const SurrogateResult result = SwitchSurrogate(library, on);
        if (!status) status = result.status;
        for (const std::wstring& name : result.classes) names += L" " + library.name + L"." + name;
    }
    if (status) return SayNotAllowed();
    if (on && names.empty()) {
        Print(L"No class is registered for this width. Register the library first.\n");
        return static_cast<int>(State::NotRegistered);
    }
    Print((on ? L"The surrogate process now serves:" : L"The surrogate process no longer serves:") +
          (names.empty() ? L" (it served nothing)" : names) + L"\n");
    return 0;
}

int Run(const std::vector<std::wstring>& words) {
    if (words.empty()) return Tell(L"");
    const auto are = [&](std::initializer_list<const wchar_t*> wanted) { return std::ranges::equal(words, wanted); };
    if (are({L"--fix"}) || are({L"--fix", L"--yes"})) return Mend(words.size() == 1);
    if (are({L"--report"})) return TellMaintainers();
    if (are({L"--surrogate", L"on"}) || are({L"--surrogate", L"off"})) return Switch(words[1] == L"on");
    if (words.size() == 1 && !words[0].starts_with(L"-")) return Tell(words[0]);
    Print(kHelp);
    return are({L"--help"}) ? 0 : kUsage;
}

}  // namespace

int wmain(int count, wchar_t** arguments) try {
    // Loading a library must not stop at a message box.
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
    SetEnvironmentVariableW(L"VELKSPRT_REPORTS", L"debugger");
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    const int code = Run({arguments + 1, arguments + count});
    WaitBeforeConsoleCloses();
    return code;
} catch (...) {
    Print(std::wstring(L"velkdoctor: ").append(CaughtFailure().description) + L"\n");
    WaitBeforeConsoleCloses();
    return kUsage;
}
