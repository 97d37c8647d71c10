// A late-bound call for which lending is not enough (quick_call.h), but whose every argument has the type that the
// member takes, or becomes one by arithmetic. Such a call is laid down at once; what needs foreign code, the client's
// memory or the platform's conversions is for Argument.
#pragma once

#include "frame/dispatch/call_plan.h"
#include "frame/dispatch/slot_call.h"
#include "platform/platform.h"

namespace velk {

// What the members of a class do with the texts and variants that they get by reference. Where they only read them, a
// text by value is lent to them; else they get a copy.
enum class References { OnlyRead, Replaced };

class FittingCall {
  public:
    // False when an argument does not fit. Nothing has happened then, whatever is wrong with the call. How the member
    // ended is `ended`. A script's variable of another type gets what the member wrote.
    static bool Make(const CallPlan& plan, References references, const DISPPARAMS& given, IDispatch* object,
                     void* result, HRESULT* ended) noexcept;

    FittingCall(const FittingCall&) = delete;
    FittingCall& operator=(const FittingCall&) = delete;

  private:
    struct Own {
        VARIANT value;
        bool isLent;        // the client's own text, which it gives back itself
        VARIANT* variable;  // gets what the member writes; null for none
        LONGLONG before;
    };

    explicit FittingCall(References references) noexcept : lends_(references == References::OnlyRead) {}
    ~FittingCall();

    bool LayDown(const CallPlan& plan, const DISPPARAMS& given) noexcept;
    bool Add(const Parameter& parameter, VARIANT* given) noexcept;
    bool AddReference(const Parameter& parameter, VARIANT& given, VARIANT& value) noexcept;
    bool AddOwn(const Parameter& parameter, const VARIANT& value, VARIANT* variable) noexcept;
    bool Fill(Own* own, const Parameter& parameter, const VARIANT& value) const noexcept;
    HRESULT Run(IDispatch* object, unsigned slot, void* result) noexcept;

    const bool lends_;
    unsigned count_ = 0;  // of own_
    SlotCall call_;
    Own own_[kMaxArguments];
};

}  // namespace velk
