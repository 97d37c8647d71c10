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
    LONG CallPreviousProc(LONG window, LONG message, LONG wParam, LONG lParam);

  private:
    IHookManager& Manager();

    ComPtr<IHookManager> manager_;  // created on first use
    bool missingLogged_ = false;
};

}  // namespace velk
