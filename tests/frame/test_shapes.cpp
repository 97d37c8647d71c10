#include "frame/test_shapes.h"

#include <sstream>

#include "facts/values.h"

namespace velk::test {
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
    const Variant plain = Copy(value);
    const bool isObject = plain.vt == VT_DISPATCH || plain.vt == VT_UNKNOWN;
    return std::to_wstring(plain.vt) + L":" + facts::Show(plain) +
           (isObject ? std::to_wstring(reinterpret_cast<ULONG_PTR>(plain.punkVal)) : L"");
}

}  // namespace velk::test
