// Calls members by name, as scripts do.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "platform/com_ptr.h"
#include "platform/platform.h"
#include "platform/variant.h"

namespace velk::test {

// Arguments: values by value, pointers to variants as a script's variables, Missing() for one that is left out.
VARIANT Arg(LONG value);
VARIANT Arg(bool value);
VARIANT Arg(double value);
VARIANT Arg(BSTR text);
VARIANT Arg(IDispatch* object);
VARIANT Arg(VARIANT* variable);
VARIANT Missing();
VARIANT Ref(VARTYPE type, void* place);  // a reference to a value of the type

Variant Text(std::wstring_view text);

struct Outcome {
    HRESULT result = S_OK;  // of Invoke itself
    Variant value;
    HRESULT code = S_OK;  // what the member failed with
    std::wstring source;
    std::wstring description;
    UINT badArgument = static_cast<UINT>(-1);

    void Take(const EXCEPINFO& thrown);  // over, with its texts
};

DISPID IdOf(IDispatch* object, const wchar_t* name);  // "#-4" is the identifier itself
Outcome Invoke(IDispatch* object, const wchar_t* name, WORD flags, std::vector<VARIANT> arguments);

// The last arguments are named ones, with these identifiers in reading order.
Outcome InvokeNamed(IDispatch* object, const wchar_t* name, WORD flags, std::vector<VARIANT> arguments,
                    std::vector<DISPID> named);

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

}  // namespace velk::test
