#include "frame/failure/report.h"

#include <string>

#include "platform/whole_numbers.h"

namespace velk {
namespace {

// The host program's file name without folder and extension.
std::wstring HostTitle() {
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, path, MAX_PATH - 1);
    std::wstring name(path);
    name.erase(0, name.find_last_of(L"\\/") + 1);
    return name.substr(0, name.rfind(L'.'));
}

}  // namespace

bool ReportsGoToDebugger() noexcept {
    wchar_t value[16];
    const DWORD length = GetEnvironmentVariableW(L"VELKSPRT_REPORTS", value, ARRAYSIZE(value));
    return length > 0 && length < ARRAYSIZE(value) && _wcsicmp(value, L"debugger") == 0;
}

void ShowMessage(const wchar_t* text, const wchar_t* title, UINT icon) noexcept try {
    const std::wstring caption = title ? title : HostTitle();
    if (ReportsGoToDebugger()) {
        OutputDebugStringW((caption + L": " + text + L"\n").c_str());
    } else {
        MessageBoxW(nullptr, text, caption.c_str(), MB_OK | MB_TASKMODAL | icon);
    }
} catch (...) {  // out of memory: there is nothing left to say it with
}

void ReportFailure(const Failure& failure, const wchar_t* procedure) noexcept try {
    const std::wstring text = (L"Error: " + DecimalText(failure.number) + L". ").append(failure.description);
    ShowMessage(text.c_str(), procedure);
} catch (...) {
}

// The line number is 0: no line numbers are kept.
void ReportInitialisationFailure(const Failure& failure, const wchar_t* heading) noexcept try {
    const std::wstring number = std::wstring(heading) + L"\r\n\r\nError:" + DecimalText(failure.number);
    const std::wstring text = (number + L"\r\nDescription:").append(failure.description) + L"\r\nLine:0";
    ShowMessage(text.c_str(), nullptr, MB_ICONSTOP);
} catch (...) {
}

}  // namespace velk
