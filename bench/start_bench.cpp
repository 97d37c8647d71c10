// What a client waits for at first, in fresh processes that take turns: loading the library, its first object, and that
// object's first late-bound call, against an empty library and the platform's dictionary object.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "ratio.h"
#include "support/client.h"

namespace {

using namespace velk;

struct Start {
    const wchar_t* name;     // of the child's work
    const wchar_t* subject;  // a program identifier, or a library beside the build's own
    const wchar_t* member;   // called late; none for the object alone
};

constexpr Start kStarts[] = {
    {L"load", L"VelkSprt.dll", nullptr},         {L"empty", L"bench\\empty_library.dll", nullptr},
    {L"object", L"VelkSupport.CStack", nullptr}, {L"dictionary", L"Scripting.Dictionary", nullptr},
    {L"call", L"VelkSupport.CStack", L"Count"},  {L"dictionary's call", L"Scripting.Dictionary", L"Count"},
};

bool Create(const Start& start) {
    CLSID clsid;
    ComPtr<IDispatch> object;
    if (FAILED(CLSIDFromProgID(start.subject, &clsid))) return false;
    if (FAILED(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, object.ReceiveVoid())))
        return false;
    if (!start.member) return true;
    auto* name = const_cast<LPOLESTR>(start.member);
    DISPID id = 0;
    DISPPARAMS none{};
    VARIANT result;
    return SUCCEEDED(object->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &id)) &&
           SUCCEEDED(object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &none, &result, nullptr,
                                    nullptr));
}

// In the child: its exit code is the time in microseconds.
int RunChild(const Start& start) {
    const bool load = std::wstring_view(start.subject).ends_with(L".dll");
    const auto libraries = test::Activated(test::BuiltFile(L"VelkSupport.manifest"));
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    if (load)
        for (const wchar_t* resident : {L"ole32.dll", L"oleaut32.dll", L"gdi32.dll", L"advapi32.dll"})
            LoadLibraryW(resident);
    bool done = false;
    const double time = bench::TimeOf(
        [&] { done = load ? LoadLibraryW(test::BuiltFile(start.subject).c_str()) != nullptr : Create(start); });
    return done ? static_cast<int>(time / 1000) : -1;
}

double RunIn(const Start& start) {
    std::wstring line = L"start_bench " + std::to_wstring(&start - kStarts);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started{};
    CreateProcessW(test::OwnProgram().c_str(), line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                   &started);
    CloseHandle(started.hThread);
    WaitForSingleObject(started.hProcess, INFINITE);
    DWORD code = 0;
    GetExitCodeProcess(started.hProcess, &code);
    CloseHandle(started.hProcess);
    return 1000.0 * static_cast<int>(code);
}

bool Compare(const char* name, double most, const Start& ours, const Start& peer) {
    constexpr int kRounds = 41;
    std::vector<double> times, peers;
    for (int i = 0; i < kRounds; ++i) {
        times.push_back(RunIn(ours));
        peers.push_back(RunIn(peer));
    }
    for (auto* all : {&times, &peers}) std::ranges::sort(*all);
    return bench::Report(name, times[kRounds / 4], peers[kRounds / 4], 1 / most);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc > 1) return RunChild(kStarts[std::atoi(argv[1])]);
    bool met = Compare("load, empty library", 1.1, kStarts[0], kStarts[1]);
    met &= Compare("first object, dictionary", 2, kStarts[2], kStarts[3]);
    met &= Compare("and first call, dictionary", 2, kStarts[4], kStarts[5]);
    return met ? 0 : 1;
}
