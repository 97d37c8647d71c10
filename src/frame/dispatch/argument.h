// One argument of a late-bound call on its way from what the client passed to what the member takes, and back.
//
// Converting an argument can run foreign code (an object's default property), and that code can change the client's
// variables. So a call settles its arguments in two steps: first everything that may run foreign code, then, with no
// foreign code left to run, the pointers into the client's variables.
#pragma once

#include "frame/dispatch/call_plan.h"
#include "platform/platform.h"
#include "platform/variant.h"

namespace velk {

class Argument {
  public:
    // `given` is null for an omitted argument.
    HRESULT SettleObjects(const Parameter& parameter, VARIANT* given, LCID locale) noexcept;
    HRESULT SettleRest(const Parameter& parameter, LCID locale) noexcept;

    // What goes to the member: a value of the parameter's type, or with VT_BYREF a pointer to one.
    const VARIANT& passed() const noexcept { return passed_; }

    // Hands a result that a member wrote into a converted copy back to the client's variable.
    HRESULT WriteBack(const Parameter& parameter, LCID locale) noexcept;

  private:
    bool Omitted(const Parameter& parameter) const noexcept;
    bool IsSound(const Parameter& parameter) const noexcept;
    bool PassStraight(const Parameter& parameter) noexcept;
    HRESULT Convert(const Parameter& parameter, LCID locale) noexcept;
    HRESULT KeepForComparison() noexcept;
    void PassOwn(const Parameter& parameter) noexcept;
    bool Unchanged() const noexcept;

    VARIANT* given_ = nullptr;     // what the client laid down
    VARIANT* variable_ = nullptr;  // the script's variable behind it, if that is what it is
    bool settled_ = false;
    Variant own_;     // a converted or copied value
    Variant before_;  // the same before the call, to tell whether the member wrote
    VARIANT passed_;
};

}  // namespace velk
