#include "frame/test_shapes.h"

#include <sstream>

namespace velk::test {
namespace {

std::wstring DescribeArray(SAFEARRAY* array, VARTYPE type) {
    if (!array) return L"no array of " + std::to_wstring(type);
    std::wstring text =
        L"array of " + std::to_wstring(type) + L" from " + std::to_wstring(array->rgsabound[0].lLbound) + L":";
    for (ULONG i = 0; i < array->rgsabound[0].cElements; ++i) {
        VARIANT element{};
        element.vt = type | VT_BYREF;
        element.byref = static_cast<std::byte*>(array->pvData) + i * array->cbElements;
        text += L" " + Describe(type == VT_VARIANT ? *element.pvarVal : element);
    }
    return text;
}

}  // namespace

STDMETHODIMP CShapes::SwapStrings(SAFEARRAY** value, BSTR* result) noexcept {
    return Guard(result, [&] {
        Bstr was(Describe(Held(VT_ARRAY | VT_BSTR, Given(value))));
        Exchange(VT_ARRAY | VT_BSTR, *value);
        return was;
    });
}

STDMETHODIMP CShapes::Mixed(SHORT a, DOUBLE b, LONG* c, BSTR d, VARIANT e, VARIANT* f, FLOAT g, BSTR* h,
                            BSTR* result) noexcept {
    return Guard(result, [&] {
        std::wostringstream all;
        all << a << L' ' << b << L' ' << *c << L' ' << View(d) << L' ' << Describe(e) << L' ' << Describe(*f) << L' '
            << g << L' ' << View(*h);
        ++*c;
        return Bstr(all.str());
    });
}

STDMETHODIMP CShapes::get_Step(LONG* result) noexcept {
    return Guard(result, [&] {
        if (onStep) onStep();
        return step_;
    });
}

STDMETHODIMP CShapes::put_Item(LONG index, VARIANT value) noexcept {
    return Guard([&] { items_[index & 3] = Copy(value); });
}

STDMETHODIMP CShapes::putref_Item(LONG index, VARIANT value) noexcept {
    return Guard([&] {
        if (value.vt != VT_DISPATCH) throw RuntimeError(Error::TypeMismatch);
        items_[index & 3] = Copy(value);
    });
}

std::wstring Describe(const VARIANT& value) {
    if (value.vt & VT_ARRAY) {
        const VARTYPE type = value.vt & ~(VT_ARRAY | VT_BYREF);
        return DescribeArray(value.vt & VT_BYREF ? *value.pparray : value.parray, type);
    }
    const std::wstring type = std::to_wstring(value.vt & ~VT_BYREF) + L":";
    if (value.vt == VT_ERROR) return value.scode == DISP_E_PARAMNOTFOUND ? L"missing" : type;
    if (type == L"9:" || type == L"13:") {
        return type +
               std::to_wstring(reinterpret_cast<ULONG_PTR>(value.vt & VT_BYREF ? *value.ppunkVal : value.punkVal));
    }
    Variant text;
    VariantChangeTypeEx(&text, const_cast<VARIANT*>(&value), LOCALE_INVARIANT, 0, VT_BSTR);
    return text.vt == VT_BSTR ? type + std::wstring(View(text.bstrVal)) : type;
}

}  // namespace velk::test
