#include "frame/test_shapes.h"

#include <sstream>
#include <utility>

#include "platform/string_array.h"

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

STDMETHODIMP CShapes::FillStrings(SAFEARRAY** strings, LONG count, BSTR* result) noexcept {
    return Guard(result, [&] {
        Variant was;
        was.vt = VT_ARRAY | VT_BSTR;
        was.parray = std::exchange(Given(strings), nullptr);
        if (count >= 0) {
            StringArray made(static_cast<ULONG>(count), 1);
            for (LONG i = 0; i < count; ++i) made.Put(static_cast<ULONG>(i), Bstr(L"s" + std::to_wstring(i + 1)));
            *strings = made.Detach();
        }
        return Bstr(Describe(was));
    });
}

STDMETHODIMP CShapes::Mixed(SHORT a, DOUBLE b, LONG* c, BSTR d, VARIANT e, VARIANT* f, FLOAT g, BSTR* h,
                            BSTR* result) noexcept {
    return Guard(result, [&] {
        std::wostringstream all;
        all << a << L' ' << b << L' ' << *c << L' ' << View(d) << L' ' << Describe(e) << L' ' << Describe(*f) << L' '
            << g << L' ' << View(*h);
        Change(*c);
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
    return Guard([&] { items_[index & 3] = Copy<VARIANT>(value); });
}

STDMETHODIMP CShapes::putref_Item(LONG index, VARIANT value) noexcept {
    return Guard([&] {
        if (value.vt != VT_DISPATCH) throw RuntimeError(Error::TypeMismatch);
        items_[index & 3] = Copy<VARIANT>(value);
    });
}

void CShapes::Change(BSTR& value) {
    Bstr changed(TextOf(value) + L"!");
    SysFreeString(std::exchange(value, changed.Detach()));
}

void CShapes::Change(VARIANT& value) {
    VariantClear(&value);
    value.vt = VT_BSTR;
    value.bstrVal = Bstr(L"changed").Detach();
}

std::wstring Describe(const VARIANT& value) {
    if (value.vt == (VT_BYREF | VT_VARIANT)) return L"reference to " + Describe(*value.pvarVal);
    if (value.vt & VT_ARRAY) {
        const VARTYPE type = value.vt & ~(VT_ARRAY | VT_BYREF);
        return value.vt & VT_BYREF ? L"reference to " + DescribeArray(*value.pparray, type)
                                   : DescribeArray(value.parray, type);
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
