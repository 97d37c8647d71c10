#include "frame/dispatch/string_arrays.h"

#include <algorithm>
#include <numeric>

#include "platform/safe_array.h"

namespace velk {
namespace {

// A client's array by value or by reference; null when the value is no array or is not allocated.
SAFEARRAY* ArrayIn(const VARIANT& value) noexcept {
    if (!(value.vt & VT_ARRAY)) return nullptr;
    return value.vt & VT_BYREF ? *value.pparray : value.parray;
}

ULONG CountOf(const SAFEARRAY& array) noexcept {
    return std::accumulate(array.rgsabound, array.rgsabound + array.cDims, 1ul,
                           [](ULONG count, const SAFEARRAYBOUND& bound) { return count * bound.cElements; });
}

// Whether an array is what its value says, and with data.
bool IsArrayOf(SAFEARRAY* array, VARTYPE element) noexcept {
    VARTYPE actual = VT_EMPTY;
    if (array->cDims == 0 || FAILED(SafeArrayGetVartype(array, &actual)) || actual != element) return false;
    return array->pvData || CountOf(*array) == 0;
}

// An array with the same bounds; for none, one without elements.
HRESULT MakeArray(VARTYPE type, SAFEARRAY* like, Variant* made) noexcept {
    SAFEARRAYBOUND none{};
    SAFEARRAY* array = like ? SafeArrayCreate(type, like->cDims, like->rgsabound) : SafeArrayCreate(type, 1, &none);
    if (!array) return E_OUTOFMEMORY;
    std::reverse(array->rgsabound, array->rgsabound + array->cDims);  // which takes the dimensions in the other order
    made->vt = VT_ARRAY | type;
    made->parray = array;
    return S_OK;
}

HRESULT StringsFromVariants(SAFEARRAY* from, Variant* made) noexcept {
    HRESULT result = MakeArray(VT_BSTR, from, made);
    if (FAILED(result)) return result;
    const auto* elements = static_cast<VARIANT*>(from->pvData);
    auto* strings = static_cast<BSTR*>(made->parray->pvData);
    for (ULONG i = 0; i < CountOf(*from); ++i) {
        Variant text;
        const bool plain =
            elements[i].vt != VT_DISPATCH && elements[i].vt != VT_UNKNOWN && !(elements[i].vt & VT_BYREF);
        result = plain ? VariantChangeType(&text, const_cast<VARIANT*>(&elements[i]), VARIANT_ALPHABOOL, VT_BSTR)
                       : DISP_E_TYPEMISMATCH;
        if (FAILED(result)) return result;
        strings[i] = text.Detach().bstrVal;
    }
    return S_OK;
}

HRESULT VariantsFromStrings(SAFEARRAY* from, Variant* made) noexcept {
    const HRESULT result = MakeArray(VT_VARIANT, from, made);
    if (FAILED(result)) return result;
    auto* elements = static_cast<VARIANT*>(made->parray->pvData);
    for (ULONG i = 0; from && i < CountOf(*from); ++i) {
        elements[i].vt = VT_BSTR;
        std::swap(elements[i].bstrVal, static_cast<BSTR*>(from->pvData)[i]);
    }
    return S_OK;
}

// Whether what a member puts in an array's place goes into the client's array or variable: not where it was passed by
// value.
bool ComesBack(const VARIANT& value, bool isVariable) noexcept {
    return isVariable || value.vt == (VT_BYREF | VT_ARRAY | VT_VARIANT);
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
    return !array || IsArrayOf(array, element);
}

HRESULT StringArrayFrom(Variant* strings, const VARIANT& value, bool isVariable) noexcept {
    strings->vt = VT_ARRAY | VT_BSTR;
    strings->parray = nullptr;
    SAFEARRAY* const array = ArrayIn(value);
    if (!array) return S_OK;
    const bool ofStrings = (value.vt & ~VT_BYREF) == (VT_ARRAY | VT_BSTR);
    const HRESULT result = ofStrings ? SafeArrayCopy(array, &strings->parray) : StringsFromVariants(array, strings);
    if (FAILED(result)) return result;
    if (ComesBack(value, isVariable) && !MayBeReplaced(array)) strings->parray->fFeatures |= FADF_FIXEDSIZE;
    return S_OK;
}

HRESULT StringArrayTo(VARIANT* target, bool isVariable, Variant* strings) noexcept {
    if (!ComesBack(*target, isVariable)) return S_OK;
    if (!MayBeReplaced(ArrayIn(*target))) return DISP_E_ARRAYISLOCKED;
    Variant made;
    HRESULT result = VariantsFromStrings(strings->parray, &made);
    if (FAILED(result)) return result;
    if (target->vt & VT_BYREF) return ReplaceReferenced(target->pparray, &made);
    result = VariantClear(target);
    if (SUCCEEDED(result)) *target = made.Detach();
    return result;
}

}  // namespace velk
