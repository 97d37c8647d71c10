#include "shell/pointer_override.h"

#include <algorithm>
#include <atomic>
#include <vector>

#include "frame/module/library.h"
#include "platform/handles.h"
#include "platform/lock.h"
#include "platform/system_errors.h"

namespace velk::pointer_override {
namespace {

struct HookTraits : NullIsNone<HHOOK> {
    static void Close(Handle handle) noexcept { UnhookWindowsHookEx(handle); }
};

struct ThreadHook {
    DWORD thread;
    UniqueHandle<HookTraits> hook;
};
using Hooks = std::vector<ThreadHook>;

// Objects of several apartments share the override. Never held while messages are sent.
SRWLOCK hooksLock = SRWLOCK_INIT;
Hooks hooks;

// The system's, which stay for as long as it runs.
HCURSOR Arrow() noexcept {
    static const HCURSOR shape = LoadCursorW(nullptr, IDC_ARROW);
    return shape;
}
HCURSOR Hourglass() noexcept {
    static const HCURSOR shape = LoadCursorW(nullptr, IDC_WAIT);
    return shape;
}

// Runs after a window has handled a message that was sent to it, in the window's thread.
LRESULT CALLBACK AfterMessage(int code, WPARAM wParam, LPARAM lParam) noexcept {
    const library::Use use;  // another thread may release the last object meanwhile
    const LRESULT next = CallNextHookEx(nullptr, code, wParam, lParam);
    const bool asked = code == HC_ACTION && reinterpret_cast<const CWPRETSTRUCT*>(lParam)->message == WM_SETCURSOR;
    if (asked) SetCursor(Hourglass());
    return next;
}

// False when the system refuses. The lock is held.
bool Hook(DWORD thread) {
    if (std::any_of(hooks.begin(), hooks.end(), [thread](const ThreadHook& known) { return known.thread == thread; })) {
        return true;
    }
    hooks.reserve(hooks.size() + 1);  // so that what is hooked is also kept
    UniqueHandle<HookTraits> hook(SetWindowsHookExW(WH_CALLWNDPROCRET, &AfterMessage, nullptr, thread));
    if (!hook) return false;
    hooks.push_back({thread, std::move(hook)});
    return true;
}

// The thread of a window of this process; 0 for others.
DWORD OwnThread(HWND window) noexcept {
    DWORD process = 0;
    const DWORD thread = GetWindowThreadProcessId(window, &process);
    return process == GetCurrentProcessId() ? thread : 0;
}

BOOL CALLBACK HookThreadOf(HWND window, LPARAM) noexcept try {
    if (const DWORD thread = OwnThread(window)) Hook(thread);  // one that is just ending needs none
    return TRUE;
} catch (...) {  // out of memory: the calling thread has its hook, and that is what matters
    return FALSE;
}

std::atomic<DWORD> askingThread = 0;

// Asks the window under the pointer to choose. One of another thread does so when that thread takes messages again. One
// that sets the override while it chooses is not asked again from within.
void AskWindowUnderPointer() noexcept {
    const DWORD self = GetCurrentThreadId();
    if (askingThread == self) return;
    askingThread = self;
    POINT position;
    const HWND window = GetCursorPos(&position) ? WindowFromPoint(position) : nullptr;
    if (window && OwnThread(window)) {
        SendNotifyMessageW(window, WM_SETCURSOR, reinterpret_cast<WPARAM>(window), MAKELPARAM(HTCLIENT, WM_MOUSEMOVE));
    }
    askingThread = 0;
}

}  // namespace

void ShowHourglass() {
    {
        const Lock lock(hooksLock);
        hooks.clear();  // all anew: threads end, and their numbers are used again
        if (!Hook(GetCurrentThreadId())) ThrowIfFailed(HRESULT_FROM_WIN32(GetLastError()));
        EnumWindows(&HookThreadOf, 0);
    }
    SetCursor(Hourglass());
    AskWindowUnderPointer();
}

void Clear() noexcept {
    Hooks released;
    {
        const Lock lock(hooksLock);
        released.swap(hooks);
    }
    const bool wasSet = !released.empty();
    released.clear();
    if (SetCursor(Arrow()) != Arrow() || wasSet) AskWindowUnderPointer();
}

}  // namespace velk::pointer_override
