// The hook manager of the sibling library VelkSub, as the classes that hook windows use it. That library is created
// through its published class and never linked to; it may be missing.
#pragma once

#include "platform/com_ptr.h"
#include "platform/platform.h"
#include "velksub.h"

namespace velk {

class HookClient {
  public:
    void Add(ISubclass* hook, LONG window, LONG message);
    void Remove(ISubclass* hook, LONG window, LONG message);
    LONG DispatchedMessage();
    LONG_PTR CallPreviousProc(LONG window, LONG message, LONG_PTR wParam, LONG_PTR lParam);

  private:
    IHookManager& Manager();
    template <class Interface, class... Parameters, class... Arguments>
    static void Call(Interface& manager, HRESULT (STDMETHODCALLTYPE Interface::*member)(Parameters...),
                     Arguments... arguments);

    ComPtr<IHookManager> manager_;  // created on first use
    ComPtr<IHookManager2> wide_;    // the same; empty when the hook library is older than that interface
    bool missingLogged_ = false;
};

}  // namespace velk
