#include "shell/shell_execute.h"

#include <shellapi.h>

#include "frame/failure/report.h"
#include "platform/com_ptr.h"
#include "platform/files.h"
#include "platform/long_handles.h"
#include "platform/system_library.h"
#include "platform/text.h"

namespace velk {
namespace {

constexpr INT_PTR kLastError = 32;  // the shell answers more than this when all went well
constexpr ClassError kCanNotShowProperties(static_cast<HRESULT>(0x80044678), L"Can not show properties");

constinit KeptSystemLibrary shell32(L"shell32.dll");

BOOL ShellLaunch(SHELLEXECUTEINFOA* info) { return shell32.Find<decltype(ShellExecuteExA)>("ShellExecuteExA")(info); }

INT_PTR Number(HINSTANCE instance) noexcept { return reinterpret_cast<INT_PTR>(instance); }

EnumShellExecuteErrors Verdict(INT_PTR instance) noexcept {
    return instance > kLastError ? seeNoError : static_cast<EnumShellExecuteErrors>(instance);
}

int ShowCommand(const EnumShellExecuteShowStyles* style) noexcept { return style ? *style : sesSW_SHOWDEFAULT; }

std::string Ansi(BSTR* text) { return ToAnsiArgument(View(Given(text))); }
std::string AnsiOrEmpty(BSTR* text) { return text ? Ansi(text) : std::string(); }

SHELLEXECUTEINFOA ExecuteInfo(ULONG mask, HWND owner, const char* verb, const char* file) noexcept {
    SHELLEXECUTEINFOA info{};
    info.cbSize = sizeof(info);
    info.fMask = mask;
    info.hwnd = owner;
    info.lpVerb = verb;
    info.lpFile = file;
    return info;
}

// The shell's own error boxes would keep a host without a desktop waiting, like ours.
ULONG LaunchMask() noexcept {
    const ULONG mask = SEE_MASK_NOCLOSEPROCESS | SEE_MASK_DOENVSUBST;
    return ReportsGoToDebugger() ? mask | SEE_MASK_FLAG_NO_UI : mask;
}

bool ShellShowsProperties(const std::string& file, HWND owner) {
    SHELLEXECUTEINFOA info = ExecuteInfo(SEE_MASK_INVOKEIDLIST | SEE_MASK_NOCLOSEPROCESS | SEE_MASK_FLAG_NO_UI,
                                         owner ? owner : GetDesktopWindow(), "properties", file.c_str());
    info.lpParameters = "";
    info.lpDirectory = "";
    ShellLaunch(&info);
    return Number(info.hInstApp) > kLastError;
}

}  // namespace

constinit const ClassInfo CShellExecute::kInfo{
    .name = L"CShellExecute",
    .clsid = __uuidof(::CShellExecute),
    .iid = __uuidof(_CShellExecute),
    .policy = FailurePolicy::Report,
};

STDMETHODIMP CShellExecute::get_StillExecuting(VARIANT_BOOL* result) noexcept {
    return Guard(result, [&] {
        DWORD exitCode = 0;
        return lastInstance_ != 0 && GetExitCodeProcess(lastProcess_, &exitCode) && exitCode == STILL_ACTIVE;
    });
}

STDMETHODIMP CShellExecute::Explore(LONG* lnghWnd, BSTR* strFolder, EnumShellExecuteShowStyles* eShowStyle,
                                    EnumShellExecuteErrors* result) noexcept {
    return Guard(result, [&] {
        Forget();
        return Execute(lnghWnd, "explore", Ansi(strFolder), ShowCommand(eShowStyle));
    });
}

STDMETHODIMP CShellExecute::LaunchDocument(LONG* lnghWnd, BSTR* strDocument, BSTR* strStartIn,
                                           EnumShellExecuteShowStyles* eShowStyle,
                                           EnumShellExecuteErrors* result) noexcept {
    return Guard(result, [&] {
        Forget();
        return ExecuteWatched(lnghWnd, Ansi(strDocument), "", Ansi(strStartIn), ShowCommand(eShowStyle));
    });
}

STDMETHODIMP CShellExecute::LaunchEmail(LONG* lnghWnd, BSTR* strAddress, EnumShellExecuteShowStyles* eShowStyle,
                                        EnumShellExecuteErrors* result) noexcept {
    return Guard(result, [&] {
        Forget();
        return Execute(lnghWnd, nullptr, "mailto:" + Ansi(strAddress), ShowCommand(eShowStyle));
    });
}

STDMETHODIMP CShellExecute::LaunchFolder(LONG* lnghWnd, BSTR* strFolder, EnumShellExecuteShowStyles* eShowStyle,
                                         EnumShellExecuteErrors* result) noexcept {
    return Guard(result, [&] {
        Forget();
        return Execute(lnghWnd, "open", Ansi(strFolder), ShowCommand(eShowStyle));
    });
}

STDMETHODIMP CShellExecute::LaunchProgram(LONG* lnghWnd, BSTR* strProgram, BSTR* strParameters, BSTR* strStartIn,
                                          EnumShellExecuteShowStyles* eShowStyle,
                                          EnumShellExecuteErrors* result) noexcept {
    return Guard(result, [&] {
        Forget();
        return ExecuteWatched(lnghWnd, Ansi(strProgram), AnsiOrEmpty(strParameters), AnsiOrEmpty(strStartIn),
                              ShowCommand(eShowStyle));
    });
}

STDMETHODIMP CShellExecute::LaunchURL(LONG* lnghWnd, BSTR* strURL, EnumShellExecuteShowStyles* eShowStyle,
                                      EnumShellExecuteErrors* result) noexcept {
    return Guard(result, [&] {
        Forget();
        return Execute(lnghWnd, nullptr, Ansi(strURL), ShowCommand(eShowStyle));
    });
}

STDMETHODIMP CShellExecute::PrintDocument(LONG* lnghWnd, BSTR* strDocument, EnumShellExecuteErrors* result) noexcept {
    return Guard(result, [&] {
        Forget();
        return Execute(lnghWnd, "print", Ansi(strDocument), SW_HIDE);
    });
}

// An unexpected failure is shown; the two errors that belong to this member reach the caller.
STDMETHODIMP CShellExecute::ShowProperties(BSTR* PathFileName, LONG* HWndOwner) noexcept {
    return Guard([&] {
        const std::wstring path = TextOf(Given(PathFileName));
        const bool exists = FileExists(path);
        const bool shown = exists && ShellShowsProperties(ToAnsi(path), WindowFrom(HWndOwner ? *HWndOwner : 0));
        return PassOn([&] {
            if (!exists) throw RuntimeError(Error::FileNotFound);
            if (!shown) throw kCanNotShowProperties;
        });
    });
}

void CShellExecute::Forget() noexcept {
    lastInstance_ = 0;
    lastProcess_ = nullptr;
}

EnumShellExecuteErrors CShellExecute::Execute(LONG* owner, const char* verb, const std::string& file, int show) {
    const auto execute = shell32.Find<decltype(ShellExecuteA)>("ShellExecuteA");
    return Verdict(Number(execute(WindowFrom(Given(owner)), verb, file.c_str(), nullptr, nullptr, show)));
}

EnumShellExecuteErrors CShellExecute::ExecuteWatched(LONG* owner, const std::string& file,
                                                     const std::string& parameters, const std::string& folder,
                                                     int show) {
    // Deliberate: a capital letter here, none in the other verbs.
    SHELLEXECUTEINFOA info = ExecuteInfo(LaunchMask(), WindowFrom(Given(owner)), "Open", file.c_str());
    info.lpParameters = parameters.c_str();
    info.lpDirectory = folder.c_str();
    info.nShow = show;
    ShellLaunch(&info);
    lastInstance_ = Number(info.hInstApp);
    lastProcess_ = info.hProcess;
    return Verdict(lastInstance_);
}

}  // namespace velk
