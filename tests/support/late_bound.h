// Calls members by name, as scripts do.
#pragma once

#include <cstring>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "platform/com_ptr.h"
#include "platform/platform.h"
#include "platform/variant.h"

namespace velk::test {

template <class T>
VARIANT Bare(VARTYPE type, T content) {
    VARIANT made{};
    made.vt = type;
    std::memcpy(&made.llVal, &content, sizeof content);
    return made;
}

// Arguments: values by value, pointers to variants as a script's variables, Missing() for one that is left out, Ref for
// a reference to a value of a type.
inline VARIANT Arg(LONG value) { return Bare(VT_I4, value); }
inline VARIANT Arg(bool value) { return Bare(VT_BOOL, value ? VARIANT_TRUE : VARIANT_FALSE); }
inline VARIANT Arg(double value) { return Bare(VT_R8, value); }
inline VARIANT Arg(BSTR text) { return Bare(VT_BSTR, text); }
inline VARIANT Arg(IDispatch* object) { return Bare(VT_DISPATCH, object); }
inline VARIANT Arg(VARIANT* variable) { return Bare(VT_BYREF | VT_VARIANT, variable); }
inline VARIANT Missing() { return Bare(VT_ERROR, DISP_E_PARAMNOTFOUND); }
inline VARIANT Ref(VARTYPE type, void* place) { return Bare(type | VT_BYREF, place); }

Variant Owned(VARIANT value);  // takes over what it holds
Variant Text(std::wstring_view text);

struct Outcome {
    HRESULT result = S_OK;  // of Invoke itself
    Variant value{};
    HRESULT code = S_OK;  // what the member failed with
    std::wstring source{}, description{};
    UINT badArgument = static_cast<UINT>(-1);

    void Take(const EXCEPINFO& thrown);  // over, with its texts
};

DISPID IdOf(IDispatch* object, const wchar_t* name);  // "#-4" is the identifier itself

// The last arguments are named ones, with these identifiers in reading order; a property's value has its own.
Outcome Invoke(IDispatch* object, const wchar_t* name, WORD flags, std::vector<VARIANT> arguments,
               std::vector<DISPID> named = {});

// The same call as Invoke through the platform's generic implementation, as a reference.
Outcome InvokeByPlatform(IDispatch* object, const wchar_t* name, WORD flags, std::vector<VARIANT> arguments);

inline Outcome Call(IDispatch* object, const wchar_t* name, std::initializer_list<VARIANT> arguments = {}) {
    return Invoke(object, name, DISPATCH_METHOD | DISPATCH_PROPERTYGET, arguments);
}
inline Outcome Get(IDispatch* object, const wchar_t* name, std::initializer_list<VARIANT> arguments = {}) {
    return Invoke(object, name, DISPATCH_PROPERTYGET, arguments);
}
inline Outcome Let(IDispatch* object, const wchar_t* name, std::initializer_list<VARIANT> arguments) {
    return Invoke(object, name, DISPATCH_PROPERTYPUT, arguments);
}

// The text of a string result; a sentinel no member returns when it is none.
std::wstring TextOf(const VARIANT& value);

// What a member gives, as text: numbers in decimal, True and False.
std::wstring Fact(IDispatch* object, const wchar_t* name, std::initializer_list<VARIANT> arguments = {});

}  // namespace velk::test
