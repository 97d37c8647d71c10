// velkdoctor: says in plain words why a class cannot be created here, and what to do.
#include <algorithm>

#include "frame/failure/failure.h"
#include "velkdoctor/diagnosis.h"
#include "velkdoctor/surrogate.h"

namespace {

using namespace velk;

constexpr int kUsage = 1;
constexpr int kNotAllowed = 13;

constexpr const wchar_t* kHelp =
    L"velkdoctor                     examines all classes, for programs of this program's width\n"
    L"velkdoctor CLASS               examines one, for instance CStack or VelkSupport.CStack\n"
    L"velkdoctor --surrogate on      lets programs of the other width use the classes that make sense that way\n"
    L"velkdoctor --surrogate off     takes that back\n"
    L"\n"
    L"Exit codes: 0 all is well, 1 wrong command, 2 not registered, 3 registered for the other width only,\n"
    L"4 the registered file has the wrong width, 5 it is missing, 6 registered for another user only, 7 registered "
    L"for\n"
    L"you only but this process does not see that, 8 older version, 9 registered in another folder, 10 the class's "
    L"name\n"
    L"is missing or taken, 11 VelkSub is missing, 12 the library does not load, 13 the registry may not be written.\n";

// Consoles get UTF-16, files and pipes UTF-8.
void Print(const std::wstring& text) {
    const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    DWORD done = 0;
    if (WriteConsoleW(output, text.data(), static_cast<DWORD>(text.size()), &done, nullptr)) return;
    std::string bytes(3 * text.size(), '\0');
    const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), bytes.data(),
                                         static_cast<int>(bytes.size()), nullptr, nullptr);
    WriteFile(output, bytes.data(), static_cast<DWORD>(size), &done, nullptr);
}

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

void Print(const Group& group) {
    std::wstring text;
    for (const std::wstring& name : group.classes) text += (text.empty() ? L"" : L", ") + name;
    text += L":\n  " + group.finding.what + L"\n";
    if (!group.finding.advice.empty()) text += L"  What to do: " + group.finding.advice + L"\n";
    Print(text);
}

int Examine(const std::wstring& only) {
    std::vector<Group> groups;
    for (const KnownLibrary& library : KnownLibraries()) {
        for (const KnownClass& each : library.classes) {
            if (only.empty() || Same(only, each.name) || Same(only, each.progId))
                Add(groups, Examine(library, each), each.progId);
        }
    }
    if (groups.empty()) {
        Print(L"There is no class " + only + L". Without a name, velkdoctor lists all of them.\n");
        return kUsage;
    }
    // What hinders most comes first in the list of states, and decides.
    State worst = State::Fine;
    for (const Group& group : groups) {
        Print(group);
        if (worst == State::Fine || (group.finding.state != State::Fine && group.finding.state < worst))
            worst = group.finding.state;
    }
    return static_cast<int>(worst);
}

int Switch(bool on) {
    LSTATUS status = ERROR_SUCCESS;
    std::wstring names;
    for (const KnownLibrary& library : KnownLibraries()) {
        const SurrogateResult result = SwitchSurrogate(library, on);
        if (!status) status = result.status;
        for (const std::wstring& name : result.classes) names += L" " + library.name + L"." + name;
    }
    if (status) {
        Print(L"The registry may not be written. Run velkdoctor from an administrator's prompt.\n");
        return kNotAllowed;
    }
    if (on && names.empty()) {
        Print(L"No class is registered for this width. Register the library first.\n");
        return static_cast<int>(State::NotRegistered);
    }
    Print((on ? L"The surrogate process now serves:" : L"The surrogate process no longer serves:") +
          (names.empty() ? L" (it served nothing)" : names) + L"\n");
    return 0;
}

}  // namespace

int wmain(int count, wchar_t** arguments) try {
    // Loading a library must not stop at a message box.
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
    SetEnvironmentVariableW(L"VELKSPRT_REPORTS", L"debugger");
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    const std::vector<std::wstring> words(arguments + 1, arguments + count);
    if (words.empty()) return Examine(L"");
    if (words.size() == 1 && !words[0].starts_with(L"-")) return Examine(words[0]);
    if (words.size() == 2 && words[0] == L"--surrogate" && (words[1] == L"on" || words[1] == L"off"))
        return Switch(words[1] == L"on");
    Print(kHelp);
    return words.size() == 1 && words[0] == L"--help" ? 0 : kUsage;
} catch (...) {
    Print(L"velkdoctor: " + CaughtFailure().description + L"\n");
    return kUsage;
}
