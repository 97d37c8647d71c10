#include "support/dialog_driver.h"

#include <gtest/gtest.h>

#include <utility>

namespace velk::test {
namespace {

constexpr DWORD kLongestMilliseconds = 10'000;
constexpr DWORD kStepMilliseconds = 10;

struct Search {
    HWND except;
    HWND found;
};

BOOL CALLBACK IsOurDialog(HWND window, LPARAM parameter) noexcept {
    auto& search = *reinterpret_cast<Search*>(parameter);
    DWORD process = 0;
    wchar_t name[16] = L"";
    GetWindowThreadProcessId(window, &process);
    GetClassNameW(window, name, ARRAYSIZE(name));
    const bool matches = process == GetCurrentProcessId() && IsWindowVisible(window) && window != search.except &&
                         std::wstring_view(name) == L"#32770";
    if (matches) search.found = window;
    return !matches;
}

HWND FindDialog(HWND except) {
    Search search{except, nullptr};
    EnumWindows(IsOurDialog, reinterpret_cast<LPARAM>(&search));
    return search.found;
}

LRESULT Ask(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    DWORD_PTR answer = 0;
    const LRESULT sent = SendMessageTimeoutW(window, message, wParam, lParam, SMTO_BLOCK, 5000, &answer);
    EXPECT_TRUE(sent || !IsWindow(window)) << message;  // it may go at any time
    return static_cast<LRESULT>(answer);
}

}  // namespace

DialogDriver::DialogDriver(std::function<void(HWND)> actions)
    : actions_(std::move(actions)),
      done_(CreateEventW(nullptr, TRUE, FALSE, nullptr)),
      thread_(CreateThread(nullptr, 0, &Run, this, 0, nullptr)) {}

DialogDriver::~DialogDriver() {
    Finish();
    CloseHandle(thread_);
    CloseHandle(done_);
}

void DialogDriver::Finish() {
    SetEvent(done_);
    WaitForSingleObject(thread_, INFINITE);
}

DWORD WINAPI DialogDriver::Run(void* self) noexcept {
    static_cast<DialogDriver*>(self)->Drive();
    return 0;
}

bool DialogDriver::Done(DWORD milliseconds) const noexcept {
    return WaitForSingleObject(done_, milliseconds) == WAIT_OBJECT_0;
}

void DialogDriver::Drive() {
    const DWORD start = GetTickCount();
    while (!dialog_ && GetTickCount() - start < kLongestMilliseconds && !Done(kStepMilliseconds)) {
        dialog_ = FindDialog(nullptr);
    }
    if (dialog_) actions_(dialog_);
    Watch();
}

void DialogDriver::Watch() {
    const DWORD start = GetTickCount();
    HWND known = nullptr;
    while (!Done(kStepMilliseconds)) {
        const HWND box = FindDialog(dialog_);
        if (box && box != known) {
            known = box;
            const HWND message = ControlOf(box, 0xFFFF);
            boxes_ += TextOfWindow(message ? message : box) + L"\n";
            PostMessageW(box, WM_CLOSE, 0, 0);
            Press(dialog_, IDCANCEL);
        }
        if (GetTickCount() - start < kLongestMilliseconds) continue;
        ADD_FAILURE() << "a dialog stayed open";
        Press(FindDialog(nullptr), IDCANCEL);
        Done(500);
    }
}

bool WaitUntil(const std::function<bool()>& condition) {
    const DWORD start = GetTickCount();
    while (!condition()) {
        if (GetTickCount() - start > 5000) return false;
        Sleep(kStepMilliseconds);
    }
    return true;
}

HWND ControlOf(HWND dialog, int id) {
    Search search{reinterpret_cast<HWND>(static_cast<INT_PTR>(id & 0xFFFF)), nullptr};
    const auto matches = [](HWND window, LPARAM parameter) __attribute__((stdcall))->BOOL {
        auto& wanted = *reinterpret_cast<Search*>(parameter);
        const auto windowId = static_cast<INT_PTR>(GetDlgCtrlID(window) & 0xFFFF);
        if (windowId == reinterpret_cast<INT_PTR>(wanted.except)) wanted.found = window;
        return wanted.found == nullptr;
    };
    EnumChildWindows(dialog, matches, reinterpret_cast<LPARAM>(&search));
    return search.found;
}

std::wstring TextOfWindow(HWND window) {
    wchar_t text[1024] = L"";
    Ask(window, WM_GETTEXT, ARRAYSIZE(text), reinterpret_cast<LPARAM>(text));
    return text;
}

void TypeInto(HWND dialog, int id, const std::wstring& text) {
    const HWND control = ControlOf(dialog, id);
    EXPECT_NE(nullptr, control) << "no control " << id;
    if (control) Ask(control, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
}

void Press(HWND dialog, int id) {
    PostMessageW(dialog, WM_COMMAND, MAKEWPARAM(id, BN_CLICKED), reinterpret_cast<LPARAM>(ControlOf(dialog, id)));
}

std::wstring SelectIn(HWND dialog, int id, const std::function<bool(const std::wstring&)>& wanted) {
    const HWND box = ControlOf(dialog, id);
    LRESULT index = CB_ERR;
    wchar_t entry[256] = L"";
    const auto find = [&] {
        for (index = Ask(box, CB_GETCOUNT, 0, 0) - 1; index >= 0; --index) {
            Ask(box, CB_GETLBTEXT, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(entry));
            if (wanted(entry)) break;
        }
        return index >= 0;
    };
    EXPECT_TRUE(WaitUntil(find)) << "no such entry in " << id;
    Ask(box, CB_SETCURSEL, static_cast<WPARAM>(index), 0);
    Ask(GetParent(box), WM_COMMAND, MAKEWPARAM(id, CBN_SELCHANGE), reinterpret_cast<LPARAM>(box));
    return entry;
}

void SelectIn(HWND dialog, int id, const wchar_t* entry) {
    SelectIn(dialog, id, [entry](const std::wstring& text) { return text == entry; });
}

}  // namespace velk::test
