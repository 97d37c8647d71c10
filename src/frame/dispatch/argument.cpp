#include "frame/dispatch/argument.h"

#include <algorithm>
#include <cstddef>

#include "frame/dispatch/string_arrays.h"
#include "platform/text.h"

namespace velk {
namespace {

bool IsMissing(const VARIANT& value) noexcept { return value.vt == VT_ERROR && value.scode == DISP_E_PARAMNOTFOUND; }

bool PointsNowhere(const VARIANT& value) noexcept { return (value.vt & VT_BYREF) && !value.byref; }

bool HoldsObject(const VARIANT& value) noexcept {
    const VARTYPE type = value.vt & ~VT_BYREF;
    return type == VT_DISPATCH || type == VT_UNKNOWN;
}

// A pointer to any other interface than these two may not be read as one to the interface that a member takes.
bool TakesAnyObject(const Parameter& parameter) noexcept {
    return parameter.iid == IID_IDispatch || parameter.iid == IID_IUnknown;
}

bool IsStringArray(VARTYPE type) noexcept { return type == (VT_ARRAY | VT_BSTR); }

// Automation answers only these to a failed conversion, whatever a foreign default property failed with.
HRESULT ConversionFailure(HRESULT result) noexcept {
    const bool known = result == DISP_E_OVERFLOW || result == E_OUTOFMEMORY || result == DISP_E_BADVARTYPE;
    return known ? result : DISP_E_TYPEMISMATCH;
}

// A Boolean's text is the word that a script would write.
HRESULT ChangeType(VARIANT* to, VARIANT* from, VARTYPE type, LCID locale) noexcept {
    const HRESULT result = VariantChangeTypeEx(to, from, locale, VARIANT_ALPHABOOL, type);
    return SUCCEEDED(result) ? S_OK : ConversionFailure(result);
}

HRESULT ChangeType(VARIANT* to, VARIANT* from, const Parameter& parameter, LCID locale) noexcept {
    HRESULT result = ChangeType(to, from, parameter.type, locale);
    if (result == DISP_E_OVERFLOW && parameter.isColour) {
        result = ChangeType(to, from, VT_UI4, locale);
        if (SUCCEEDED(result)) to->vt = parameter.type;
    }
    return result;
}

HRESULT ToInterface(VARIANT* to, const VARIANT& from, const Parameter& parameter) noexcept {
    IUnknown* object = from.vt & VT_BYREF ? *from.ppunkVal : from.punkVal;
    to->vt = parameter.type;
    to->punkVal = nullptr;
    if (!object) return S_OK;
    const HRESULT result = object->QueryInterface(parameter.iid, reinterpret_cast<void**>(&to->punkVal));
    return SUCCEEDED(result) ? S_OK : DISP_E_TYPEMISMATCH;
}

// The bytes of a value. 0 for what a result is not put into: objects, of which only the default property was read,
// arrays and decimals.
std::size_t SizeOf(VARTYPE type) noexcept {
    switch (type) {
        case VT_I1:
        case VT_UI1:
            return 1;
        case VT_I2:
        case VT_UI2:
        case VT_BOOL:
            return 2;
        case VT_I4:
        case VT_UI4:
        case VT_INT:
        case VT_UINT:
        case VT_R4:
        case VT_ERROR:
            return 4;
        case VT_I8:
        case VT_UI8:
        case VT_R8:
        case VT_CY:
        case VT_DATE:
            return 8;
        case VT_BSTR:
            return sizeof(BSTR);
        default:
            return 0;
    }
}

// Puts a value into the client's storage of another type.
HRESULT Store(const VARIANT& reference, VARIANT* value, LCID locale) noexcept {
    const VARTYPE type = reference.vt & ~VT_BYREF;
    const std::size_t size = SizeOf(type);
    if (size == 0) return S_OK;
    Variant stored;
    const HRESULT result = ChangeType(&stored, value, type, locale);
    if (FAILED(result)) return result;
    const auto place = static_cast<std::byte*>(reference.byref);
    std::swap_ranges(place, place + size, reinterpret_cast<std::byte*>(&stored.byref));  // what stood there goes
    return S_OK;
}

}  // namespace

bool Argument::Omitted(const Parameter& parameter) const noexcept {
    return !given_ || (parameter.type != VT_VARIANT && IsMissing(*given_));
}

HRESULT Argument::SettleObjects(const Parameter& parameter, VARIANT* given, LCID locale) noexcept {
    given_ = given;
    if (Omitted(parameter)) return parameter.optional ? S_OK : DISP_E_PARAMNOTOPTIONAL;
    if (PointsNowhere(*given)) return DISP_E_TYPEMISMATCH;
    if (given->vt == kVariable) {
        variable_ = given->pvarVal;
        if (PointsNowhere(*variable_) || variable_->vt == kVariable) return DISP_E_TYPEMISMATCH;
    }
    VARIANT& value = variable_ ? *variable_ : *given;
    if (value.vt == VT_VARIANT) return DISP_E_BADVARTYPE;  // exists by reference only
    if (parameter.type == VT_VARIANT || !HoldsObject(value)) return S_OK;
    const bool inPlace = (value.vt & ~VT_BYREF) == parameter.type && (variable_ || value.vt & VT_BYREF);
    if (parameter.byReference && TakesAnyObject(parameter) && inPlace) return S_OK;
    settled_ = true;
    const HRESULT result =
        parameter.IsObject() ? ToInterface(&own_, value, parameter) : ChangeType(&own_, &value, parameter, locale);
    return FAILED(result) ? result : KeepForComparison();
}

HRESULT Argument::SettleRest(const Parameter& parameter, LCID locale) noexcept {
    if (!settled_) {
        if (!Omitted(parameter)) {
            if (!IsSound(parameter)) return DISP_E_TYPEMISMATCH;
            if (PassStraight(parameter)) return S_OK;
        }
        const HRESULT result = Convert(parameter, locale);
        if (FAILED(result)) return result;
    }
    PassOwn(parameter);
    return S_OK;
}

// Foreign code may have changed a variable since the first step.
bool Argument::IsSound(const Parameter& parameter) const noexcept {
    const VARIANT& value = variable_ ? *variable_ : *given_;
    return !PointsNowhere(value) && (!IsStringArray(parameter.type) || HoldsStrings(value));
}

// Takes the client's own storage where its type is already right.
bool Argument::PassStraight(const Parameter& parameter) noexcept {
    if (!parameter.byReference) {
        if (given_->vt != parameter.type) return false;
        passed_ = *given_;
        return true;
    }
    if (given_->vt == (parameter.type | VT_BYREF)) {
        passed_ = *given_;
        return true;
    }
    if (!variable_ || (variable_->vt & ~VT_BYREF) != parameter.type) return false;
    passed_.vt = parameter.type | VT_BYREF;
    // A variable may itself refer to a value. One that holds it starts where the union starts.
    passed_.byref = variable_->vt & VT_BYREF ? variable_->byref : &variable_->byref;
    return true;
}

HRESULT Argument::Convert(const Parameter& parameter, LCID locale) noexcept {
    if (Omitted(parameter)) return VariantCopy(&own_, const_cast<Variant*>(&parameter.defaultValue));
    VARIANT& value = variable_ ? *variable_ : *given_;
    if (parameter.type == VT_VARIANT) return VariantCopy(&own_, &value);
    if (HoldsObject(value)) return DISP_E_TYPEMISMATCH;  // foreign code put it there since the first step
    if (IsStringArray(parameter.type)) return StringArrayFrom(&own_, value, variable_ != nullptr);
    const HRESULT result = ChangeType(&own_, &value, parameter, locale);
    return FAILED(result) ? result : KeepForComparison();
}

HRESULT Argument::KeepForComparison() noexcept { return given_->vt & VT_BYREF ? VariantCopy(&before_, &own_) : S_OK; }

void Argument::PassOwn(const Parameter& parameter) noexcept {
    if (!parameter.byReference) {
        passed_ = own_;
        return;
    }
    passed_.vt = parameter.type | VT_BYREF;
    passed_.byref = parameter.type == VT_VARIANT ? static_cast<void*>(&own_) : static_cast<void*>(&own_.byref);
}

bool Argument::Unchanged() const noexcept {
    if (own_.vt == VT_BSTR) return View(own_.bstrVal) == View(before_.bstrVal);
    return own_.llVal == before_.llVal;
}

HRESULT Argument::WriteBack(const Parameter& parameter, LCID locale) noexcept {
    const bool converted = passed_.vt == (parameter.type | VT_BYREF) && passed_.byref == &own_.byref;
    if (!converted || !given_) return S_OK;
    VARIANT* const target = variable_ ? variable_ : given_;
    if (IsStringArray(parameter.type)) return StringArrayTo(target, variable_ != nullptr, &own_);
    if (target->vt & VT_BYREF) return Unchanged() || PointsNowhere(*target) ? S_OK : Store(*target, &own_, locale);
    if (!variable_) return S_OK;
    // A variable that was never set has nothing to keep, and gets a result that happens to be 0 too.
    if (variable_->vt != VT_EMPTY && Unchanged()) return S_OK;
    const HRESULT cleared = VariantClear(variable_);
    if (SUCCEEDED(cleared)) *variable_ = own_.Detach();
    return cleared;
}

}  // namespace velk
