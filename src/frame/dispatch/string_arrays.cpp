#include "frame/dispatch/string_arrays.h"

namespace velk {
namespace {

// A client's array by value or by reference; null when the value is no array or is not allocated.
SAFEARRAY* ArrayIn(const VARIANT& value) noexcept {
    if (!(value.vt & VT_ARRAY)) return nullptr;
    return value.vt & VT_BYREF ? *value.pparray : value.parray;
}

// Whether an array is what its value says, with one dimension and with data.
bool IsVector(SAFEARRAY* array, VARTYPE element) noexcept {
    VARTYPE actual = VT_EMPTY;
    if (SafeArrayGetDim(array) != 1 || FAILED(SafeArrayGetVartype(array, &actual)) || actual != element) return false;
    return array->pvData || array->rgsabound[0].cElements == 0;
}

HRESULT MakeArray(VARTYPE type, SAFEARRAYBOUND bounds, Variant* made) noexcept {
    SAFEARRAY* array = SafeArrayCreate(type, 1, &bounds);
    if (!array) return E_OUTOFMEMORY;
    made->vt = VT_ARRAY | type;
    made->parray = array;
    return S_OK;
}

HRESULT StringsFromVariants(SAFEARRAY* from, Variant* made) noexcept {
    HRESULT result = MakeArray(VT_BSTR, from->rgsabound[0], made);
    if (FAILED(result)) return result;
    const auto* elements = static_cast<VARIANT*>(from->pvData);
    auto* strings = static_cast<BSTR*>(made->parray->pvData);
    for (ULONG i = 0; i < from->rgsabound[0].cElements; ++i) {
        Variant text;
        const bool plain =
            elements[i].vt != VT_DISPATCH && elements[i].vt != VT_UNKNOWN && !(elements[i].vt & VT_BYREF);
        result = plain ? VariantChangeType(&text, const_cast<VARIANT*>(&elements[i]), 0, VT_BSTR) : DISP_E_TYPEMISMATCH;
        if (FAILED(result)) return result;
        strings[i] = text.Detach().bstrVal;
    }
    return S_OK;
}

HRESULT VariantsFromStrings(SAFEARRAY* from, Variant* made) noexcept {
    const SAFEARRAYBOUND bounds = from ? from->rgsabound[0] : SAFEARRAYBOUND{};
    const HRESULT result = MakeArray(VT_VARIANT, bounds, made);
    if (FAILED(result)) return result;
    auto* elements = static_cast<VARIANT*>(made->parray->pvData);
    for (ULONG i = 0; i < bounds.cElements; ++i) {
        elements[i].vt = VT_BSTR;
        std::swap(elements[i].bstrVal, static_cast<BSTR*>(from->pvData)[i]);
    }
    return S_OK;
}

// Replaces the array behind a reference; the variable keeps pointing at the same place.
HRESULT ReplaceReferenced(SAFEARRAY** place, Variant* made) noexcept {
    const HRESULT result = *place ? SafeArrayDestroy(*place) : S_OK;
    if (SUCCEEDED(result)) *place = made->Detach().parray;
    return result;
}

}  // namespace

bool HoldsStrings(const VARIANT& value) noexcept {
    const VARTYPE element = value.vt & ~(VT_BYREF | VT_ARRAY);
    if (!(value.vt & VT_ARRAY)) return value.vt == VT_EMPTY;
    if (element != VT_BSTR && element != VT_VARIANT) return false;
    SAFEARRAY* const array = ArrayIn(value);
    return !array || IsVector(array, element);
}

HRESULT StringArrayFrom(Variant* strings, const VARIANT& value) noexcept {
    strings->vt = VT_ARRAY | VT_BSTR;
    strings->parray = nullptr;
    SAFEARRAY* const array = ArrayIn(value);
    if (!array) return S_OK;
    const bool ofStrings = (value.vt & ~VT_BYREF) == (VT_ARRAY | VT_BSTR);
    return ofStrings ? SafeArrayCopy(array, &strings->parray) : StringsFromVariants(array, strings);
}

HRESULT StringArrayTo(VARIANT* target, bool isVariable, Variant* strings) noexcept {
    const bool isReferenced = target->vt == (VT_BYREF | VT_ARRAY | VT_VARIANT);
    if (!isReferenced && !isVariable) return S_OK;
    Variant made;
    HRESULT result = VariantsFromStrings(strings->parray, &made);
    if (FAILED(result)) return result;
    if (isReferenced) return ReplaceReferenced(target->pparray, &made);
    result = VariantClear(target);
    if (SUCCEEDED(result)) *target = made.Detach();
    return result;
}

}  // namespace velk
