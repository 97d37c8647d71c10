#include "frame/dispatch/fitting_call.h"

#include <algorithm>
#include <charconv>

#include "platform/variant.h"

namespace velk {
namespace {

constexpr VARTYPE kVariable = VT_BYREF | VT_VARIANT;

bool IsMissing(const VARIANT& value) noexcept { return value.vt == VT_ERROR && value.scode == DISP_E_PARAMNOTFOUND; }

// The whole number that a Double is converted to: halves go to the even neighbour, whatever rounding the host has set.
bool Rounded(double value, LONG* number) noexcept {
    if (!(value > -2147483647.0 && value < 2147483646.0)) return false;
    const auto whole = static_cast<LONG>(value);
    const double rest = value - whole;
    const LONG odd = whole & 1;
    *number = whole + (rest > 0.5 || (rest == 0.5 && odd)) - (rest < -0.5 || (rest == -0.5 && odd));
    return true;
}

// The number as a value of another numeric type. False when it does not fit, which the platform turns into an error.
bool StoreNumber(VARIANT* own, VARTYPE type, LONG number) noexcept {
    own->vt = type;
    own->llVal = 0;
    switch (type) {
        case VT_I4:
            return own->lVal = number, true;
        case VT_I2:
            return own->iVal = static_cast<SHORT>(number), own->iVal == number;
        case VT_BOOL:
            return own->boolVal = number ? VARIANT_TRUE : VARIANT_FALSE, true;
        case VT_R8:
            return own->dblVal = number, true;
        default:
            return false;
    }
}

[[gnu::noinline]] bool StoreText(VARIANT* own, LONG number) noexcept {
    char digits[12];
    wchar_t text[12];
    const char* const end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    const auto length = static_cast<UINT>(std::copy(static_cast<const char*>(digits), end, text) - text);
    own->vt = VT_BSTR;
    own->bstrVal = SysAllocStringLen(text, length);
    return own->bstrVal != nullptr;
}

bool Convert(VARIANT* own, VARTYPE type, const VARIANT& value) noexcept {
    LONG number = 0;
    const bool fits =
        value.vt == VT_EMPTY || (value.vt == VT_R8 ? Rounded(value.dblVal, &number) : WholeNumberOf(value, &number));
    if (!fits) return false;
    if (type == VT_BSTR) return (value.vt == VT_I2 || value.vt == VT_I4) && StoreText(own, number);
    return (type != VT_BOOL || value.vt != VT_R8) && StoreNumber(own, type, number);
}

}  // namespace

const void* Lent(const Parameter& parameter, const VARIANT* given, Variant* own) noexcept {
    if (!given && !parameter.optional) return nullptr;
    const VARIANT& value = given ? *given : parameter.defaultValue;
    if (value.vt == parameter.type) {
        own->llVal = value.llVal;
        return &own->byref;
    }
    if (value.vt == kVariable) {
        return value.pvarVal && value.pvarVal->vt == parameter.type ? &value.pvarVal->byref : nullptr;
    }
    return Convert(own, parameter.type, value) ? &own->byref : nullptr;
}

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

// What most calls are made of comes first: numbers of the right type, and those left out.
bool FittingCall::Add(const Parameter& parameter, VARIANT* given) noexcept {
    const VARIANT* const value = given || !parameter.optional ? given : &parameter.defaultValue;
    if (value && value->vt == parameter.plain) {
        plain_[plainCount_] = value->llVal;
        call_.AddPointer(&plain_[plainCount_++]);
        return true;
    }
    if (given && given->vt == kVariable && given->pvarVal && given->pvarVal->vt == parameter.plain) {
        call_.AddPointer(&given->pvarVal->byref);
        return true;
    }
    return AddOther(parameter, given);
}

bool FittingCall::AddOther(const Parameter& parameter, VARIANT* given) noexcept {
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
