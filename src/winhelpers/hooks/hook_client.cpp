#include "winhelpers/hooks/hook_client.h"

#include "frame/module/library.h"
#include "platform/system_errors.h"

namespace velk {
namespace {

void LogMissingLibrary(HRESULT result) {
    wchar_t number[16];
    swprintf(number, ARRAYSIZE(number), L"0x%08lX", static_cast<unsigned long>(result));
    const std::wstring line = library::FileBaseName() + L": VelkSub.HookManager cannot be created (" + number +
                              L"), windows are not hooked. Is VelkSub.dll registered?\n";
    OutputDebugStringW(line.c_str());
}

}  // namespace

IHookManager& HookClient::Manager() {
    if (manager_) return *manager_.get();
    const HRESULT created = CoCreateInstance(__uuidof(HookManager), nullptr, CLSCTX_INPROC_SERVER,
                                             __uuidof(IHookManager), manager_.ReceiveVoid());
    if (FAILED(created) && !missingLogged_) {
        missingLogged_ = true;
        LogMissingLibrary(created);
    }
    ThrowIfFailed(created);
    return *manager_.get();
}

void HookClient::Add(ISubclass* hook, LONG window, LONG message) {
    ThrowIfFailed(Manager().AddHook(&hook, window, message));
}

void HookClient::Remove(ISubclass* hook, LONG window, LONG message) {
    ThrowIfFailed(Manager().RemoveHook(&hook, window, message));
}

LONG HookClient::DispatchedMessage() {
    LONG message = 0;
    ThrowIfFailed(Manager().get_DispatchedMessage(&message));
    return message;
}

LONG HookClient::CallPreviousProc(LONG window, LONG message, LONG wParam, LONG lParam) {
    LONG result = 0;
    ThrowIfFailed(Manager().CallPreviousProc(window, message, wParam, lParam, &result));
    return result;
}

}  // namespace velk
