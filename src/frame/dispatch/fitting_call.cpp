#include "frame/dispatch/fitting_call.h"

#include "frame/dispatch/conversion.h"
#include "platform/variant.h"

namespace velk {
namespace {

bool IsMissing(const VARIANT& value) noexcept { return value.vt == VT_ERROR && value.scode == DISP_E_PARAMNOTFOUND; }

}  // namespace

FittingCall::~FittingCall() {
    for (unsigned i = 0; i < count_; ++i) {
        if (!own_[i].isLent && !IsSelfContained(own_[i].value.vt)) VariantClear(&own_[i].value);
    }
}

// Callers lay arguments down in reverse. The new value of a property is named, and comes first.
bool FittingCall::LayDown(const CallPlan& plan, const DISPPARAMS& given) noexcept {
    const auto wanted = static_cast<UINT>(plan.parameters.size());
    const UINT named = plan.isLet ? 1 : 0;
    if (given.cNamedArgs != named || given.cArgs > wanted || (given.cArgs && !given.rgvarg)) return false;
    if (named &&
        (given.cArgs != wanted || !given.rgdispidNamedArgs || *given.rgdispidNamedArgs != DISPID_PROPERTYPUT)) {
        return false;
    }
    for (UINT i = 0; i < wanted; ++i) {
        if (!Add(plan.parameters[i], i < given.cArgs ? &given.rgvarg[given.cArgs - 1 - i] : nullptr)) return false;
    }
    return true;
}

bool FittingCall::Add(const Parameter& parameter, VARIANT* given) noexcept {
    if (!given || (parameter.type != VT_VARIANT && IsMissing(*given))) {
        return parameter.optional && AddOwn(parameter, parameter.defaultValue, nullptr);
    }
    VARIANT* const variable = given->vt == kVariable ? given->pvarVal : nullptr;
    if (given->vt == kVariable && !variable) return false;
    VARIANT& value = variable ? *variable : *given;
    if (parameter.byReference && AddReference(parameter, *given, value)) return true;
    if (!parameter.byReference && !variable && value.vt == VT_BSTR && parameter.type == VT_BSTR) {
        call_.AddValue(value, VT_BSTR);
        return true;
    }
    return AddOwn(parameter, value, variable);
}

// The client's own storage, where its type is already right.
bool FittingCall::AddReference(const Parameter& parameter, VARIANT& given, VARIANT& value) noexcept {
    if (parameter.IsObject() || (parameter.type & VT_ARRAY)) return false;
    if (given.vt == (parameter.type | VT_BYREF) && given.byref) {
        if (parameter.type == VT_VARIANT && ((value.vt & VT_BYREF) || value.vt == VT_VARIANT)) return false;
        call_.AddPointer(given.byref);
        return true;
    }
    if (&given == &value || value.vt != parameter.type || parameter.type == VT_VARIANT) return false;
    call_.AddPointer(&value.byref);
    return true;
}

bool FittingCall::AddOwn(const Parameter& parameter, const VARIANT& value, VARIANT* variable) noexcept {
    Own& own = own_[count_];
    if (!Fill(&own, parameter, value)) return false;
    ++count_;
    own.variable = parameter.byReference ? variable : nullptr;
    if (variable && !IsSelfContained(own.value.vt)) return false;  // the client's code may change it during the call
    own.before = own.value.llVal;
    if (parameter.byReference) {
        call_.AddPointer(parameter.type == VT_VARIANT ? static_cast<void*>(&own.value) : &own.value.byref);
    } else {
        call_.AddValue(own.value, parameter.type);
    }
    return true;
}

bool FittingCall::Fill(Own* own, const Parameter& parameter, const VARIANT& value) const noexcept {
    own->isLent = false;
    if (value.vt != parameter.type && parameter.type != VT_VARIANT) {
        return Convert(&own->value, parameter.type, value);
    }
    if (value.vt == VT_BSTR && value.bstrVal) {
        if (!lends_) return false;
        own->isLent = true;
    } else if (value.vt != VT_BSTR && !IsSelfContained(value.vt)) {
        return false;
    }
    own->value = value;
    return true;
}

HRESULT FittingCall::Run(IDispatch* object, unsigned slot, void* result) noexcept {
    const HRESULT ended = call_.Run(object, slot, result);
    for (unsigned i = 0; SUCCEEDED(ended) && i < count_; ++i) {
        const Own& own = own_[i];
        // A variable that was never set has nothing to keep, and gets a result that happens to be 0 too.
        if (!own.variable || (own.variable->vt != VT_EMPTY && own.value.llVal == own.before)) continue;
        if (!IsSelfContained(own.variable->vt) && FAILED(VariantClear(own.variable))) continue;
        *own.variable = own.value;
    }
    return ended;
}

// In one piece: the calls between the steps would take as long as the steps.
[[gnu::flatten]] bool FittingCall::Make(const CallPlan& plan, References references, const DISPPARAMS& given,
                                        IDispatch* object, void* result, HRESULT* ended) noexcept {
    FittingCall call(references);
    if (!call.LayDown(plan, given)) return false;
    *ended = call.Run(object, plan.slot, result);
    return true;
}

}  // namespace velk
