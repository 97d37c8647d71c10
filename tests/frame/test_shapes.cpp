#include "frame/test_shapes.h"

#include <new>
#include <stdexcept>
#include <utility>

namespace velk::test {
namespace {

constexpr ClassInfo InfoFor(FailurePolicy policy) {
    return {
        .name = L"CShapes",
        .clsid = __uuidof(::CShapes),
        .iid = __uuidof(_CShapes),
        .policy = policy,
        .componentFailure = CShapes::kComponentFailure,
        .creationFailed = L"An error has occured in Shapes.CShapes.Class_Initialize ",
    };
}

SAFEARRAY* NewStrings(LONG count) {
    if (count < 0) return nullptr;
    SAFEARRAYBOUND bounds{static_cast<ULONG>(count), 1};
    SAFEARRAY* const array = SafeArrayCreate(VT_BSTR, 1, &bounds);
    for (LONG i = 0; i < count; ++i) {
        static_cast<BSTR*>(array->pvData)[i] = Bstr(L"s" + std::to_wstring(i + 1)).Detach();
    }
    return array;
}

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

constinit const ClassInfo CShapes::kInfo = InfoFor(FailurePolicy::PassOn);
constinit const ClassInfo CShapes::kWrapping = InfoFor(FailurePolicy::ComponentFailure);
constinit const ClassInfo CShapes::kReporting = InfoFor(FailurePolicy::Report);

STDMETHODIMP CShapes::FillStrings(SAFEARRAY** strings, LONG count, BSTR* result) noexcept {
    return Guard(result, [&] {
        Variant was;
        was.vt = VT_ARRAY | VT_BSTR;
        was.parray = std::exchange(Given(strings), NewStrings(count));
        return Bstr(Describe(was));
    });
}

STDMETHODIMP CShapes::Mixed(SHORT a, DOUBLE b, LONG c, DOUBLE* d, BSTR* e, VARIANT f, BSTR g, FLOAT h,
                            BSTR* result) noexcept {
    return Guard(result, [&] {
        wchar_t text[256];
        swprintf(text, 256, L"%d %.3f %d %.3f ", a, b, static_cast<int>(c), *d);
        std::wstring all = text;
        all += View(*e);
        all += L" " + Describe(f) + L" ";
        all += View(g);
        swprintf(text, 256, L" %.3f", static_cast<double>(h));
        *d += step_;
        Change(*e);
        return Bstr(all + text);
    });
}

STDMETHODIMP CShapes::Optional(LONG first, LONG number, LONG* reference, BSTR text, VARIANT rest, VARIANT* last,
                               BSTR* result) noexcept {
    return Guard(result, [&] {
        std::wstring all = std::to_wstring(first) + L" " + std::to_wstring(number) + L" ";
        all += std::to_wstring(*reference) + L" ";
        all += View(text);
        all += L" " + Describe(rest) + L" " + Describe(*last);
        Change(*reference);
        return Bstr(all);
    });
}

STDMETHODIMP CShapes::put_Step(LONG value) noexcept {
    return Guard([&] { step_ = value; });
}

STDMETHODIMP CShapes::get_Item(LONG index, VARIANT* result) noexcept {
    return Guard(result, [&] { return Copy(static_cast<VARIANT&>(items_[index])); });
}

STDMETHODIMP CShapes::put_Item(LONG index, VARIANT value) noexcept {
    return Guard([&] { items_[index] = Copy(value); });
}

STDMETHODIMP CShapes::putref_Item(LONG index, VARIANT value) noexcept {
    return Guard([&] {
        if (value.vt != VT_DISPATCH) throw RuntimeError(Error::TypeMismatch);
        items_[index] = Copy(value);
    });
}

STDMETHODIMP CShapes::Fail(EFailure kind, LONG* result) noexcept {
    return Guard(result, [&]() -> LONG {
        if (kind == eFailure_Runtime) throw RuntimeError(Error::Overflow);
        if (kind == eFailure_Class) throw ClassError(static_cast<HRESULT>(0x80044801), L"Own error");
        if (kind == eFailure_Library) {
            throw ClassError(static_cast<HRESULT>(0x80044802), L"Library's error", ErrorSource::Library);
        }
        if (kind == eFailure_Memory) throw std::bad_alloc();
        if (kind == eFailure_Length) throw std::length_error("length");
        if (kind == eFailure_Null) throw NullArgument();
        throw kind;
    });
}

Variant CShapes::Copy(const VARIANT& value) {
    Variant copy;
    ThrowIfFailed(VariantCopy(&copy, const_cast<VARIANT*>(&value)));
    return copy;
}

void CShapes::Change(BSTR& value) {
    Bstr changed(std::wstring(View(value)) + L"!");
    SysFreeString(value);
    value = changed.Detach();
}

void CShapes::Change(VARIANT& value) {
    VariantClear(&value);
    value.vt = VT_BSTR;
    value.bstrVal = Bstr(L"changed").Detach();
}

void CShapes::Change(IDispatch*& value) {
    if (value) value->Release();
    value = ComPtr<_CShapes>(this).Detach();
}

void CShapes::Change(IFontDisp*& value) {
    if (value) value->Release();
    value = nullptr;
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
    if (value.vt == VT_DISPATCH || value.vt == VT_UNKNOWN) return type + (value.punkVal ? L"object" : L"nothing");
    Variant text;
    VariantChangeTypeEx(&text, const_cast<VARIANT*>(&value), LOCALE_INVARIANT, 0, VT_BSTR);
    return text.vt == VT_BSTR ? type + std::wstring(View(text.bstrVal)) : type;
}

}  // namespace velk::test
