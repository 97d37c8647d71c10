#include "winhelpers/hooks/hook_client.h"

#include "frame/module/library.h"
#include "platform/system_errors.h"
#include "platform/whole_numbers.h"

namespace velk {
namespace {

void LogMissingLibrary(HRESULT result) {
    const std::wstring line = library::FileBaseName() + L": VelkSub.HookManager cannot be created (0x" +
                              ResultCodeText(static_cast<std::uint32_t>(result)) +
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
    wide_ = manager_.As<IHookManager2>();
    return *manager_.get();
}

// A failure keeps the number that the hook manager gave it.
template <class Interface, class... Parameters, class... Arguments>
void HookClient::Call(Interface& manager, HRESULT (STDMETHODCALLTYPE Interface::*member)(Parameters...),
                      Arguments... arguments) {
    ThrowIfMemberFailed((manager.*member)(arguments...), manager);
}

void HookClient::Add(ISubclass* hook, LONG window, LONG message) {
    Call(Manager(), &IHookManager::AddHook, &hook, window, message);
}

void HookClient::Remove(ISubclass* hook, LONG window, LONG message) {
    Call(Manager(), &IHookManager::RemoveHook, &hook, window, message);
}

LONG HookClient::DispatchedMessage() {
    LONG message = 0;
    Call(Manager(), &IHookManager::get_DispatchedMessage, &message);
    return message;
}

LONG_PTR HookClient::CallPreviousProc(LONG window, LONG message, LONG_PTR wParam, LONG_PTR lParam) {
    IHookManager& manager = Manager();
    if (wide_) {
        LONG_PTR result = 0;
        Call(*wide_.get(), &IHookManager2::CallPreviousProcPtr, window, message, wParam, lParam, &result);
        return result;
    }
    LONG result = 0;
    Call(manager, &IHookManager::CallPreviousProc, window, message, static_cast<LONG>(wParam),
         static_cast<LONG>(lParam), &result);
    return result;
}

}  // namespace velk
