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

void DialogDriver::Drive(const std::stop_token& over) {
    DWORD start = GetTickCount();
    for (HWND box = nullptr; !over.stop_requested(); Sleep(kStepMilliseconds)) {
        const HWND found = FindDialog(dialog_);
        if (found && !dialog_) {
            actions_(dialog_ = found);
        } else if (found && found != box) {
            PostMessageW(box = found, WM_CLOSE, 0, 0);
            Press(dialog_, IDCANCEL);
        }
        if (GetTickCount() - start < kLongestMilliseconds) continue;
        start += 500;
        ADD_FAILURE() << "a dialog stayed open";
        Press(FindDialog(nullptr), IDCANCEL);
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

void TypeInto(HWND control, const std::wstring& text) {
    Ask(control, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
}

void Press(HWND dialog, int id) {
    PostMessageW(dialog, WM_COMMAND, MAKEWPARAM(id, BN_CLICKED), reinterpret_cast<LPARAM>(ControlOf(dialog, id)));
}

void SelectIn(HWND box, const std::wstring& entry) {
    LRESULT index = CB_ERR;
    WaitUntil([&] {
        index = Ask(box, CB_FINDSTRINGEXACT, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(entry.c_str()));
        return index >= 0;
    });
    Ask(box, CB_SETCURSEL, static_cast<WPARAM>(index), 0);
    Ask(GetParent(box), WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(box), CBN_SELCHANGE), reinterpret_cast<LPARAM>(box));
}

std::wstring OtherEntry(HWND box) {
    wchar_t entry[256] = L"";
    WaitUntil([&] {
        const LRESULT last = Ask(box, CB_GETCOUNT, 0, 0) - 1;
        const LRESULT other = Ask(box, CB_GETCURSEL, 0, 0) == last ? last - 1 : last;
        return Ask(box, CB_GETLBTEXT, static_cast<WPARAM>(other), reinterpret_cast<LPARAM>(entry)) > 0;
    });
    return entry;
}

}  // namespace velk::test
