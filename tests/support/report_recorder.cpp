#include "support/report_recorder.h"

namespace velk::test {
namespace {

constexpr const wchar_t* kSwitch = L"VELKSPRT_REPORTS";

}  // namespace

ReportRecorder::ReportRecorder(HMODULE module) : patch_(module, "MessageBoxW", reinterpret_cast<void*>(&Record)) {
    wchar_t value[64] = L"";
    GetEnvironmentVariableW(kSwitch, value, ARRAYSIZE(value));
    savedSwitch_ = value;
    SetEnvironmentVariableW(kSwitch, nullptr);  // reports are to be boxes here
    current_ = this;
}

ReportRecorder::~ReportRecorder() {
    current_ = nullptr;
    SetEnvironmentVariableW(kSwitch, savedSwitch_.empty() ? nullptr : savedSwitch_.c_str());
}

int WINAPI ReportRecorder::Record(HWND, LPCWSTR text, LPCWSTR title, UINT type) {
    current_->reports_.push_back({title, text, type});
    return IDOK;
}

std::wstring ReportRecorder::Shown() {
    std::wstring shown;
    for (; seen_ < reports_.size(); ++seen_) shown += reports_[seen_].title + L": " + reports_[seen_].text + L"|";
    return shown;
}

}  // namespace velk::test
