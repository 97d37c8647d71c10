#include "support/late_bound.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "platform/text.h"

namespace velk::test {
namespace {

template <class T>
VARIANT Make(VARTYPE type, T value) {
    VARIANT made{};
    made.vt = type;
    std::memcpy(&made.llVal, &value, sizeof(value));
    return made;
}

std::vector<DISPID> PutName(WORD flags) {
    if (flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) return {DISPID_PROPERTYPUT};
    return {};
}

template <class Target>
Outcome Run(Target call, std::vector<VARIANT> arguments, std::vector<DISPID> named) {
    std::reverse(arguments.begin(), arguments.end());
    std::reverse(named.begin(), named.end());
    DISPPARAMS parameters{arguments.data(), named.data(), static_cast<UINT>(arguments.size()),
                          static_cast<UINT>(named.size())};
    EXCEPINFO exception{};
    Outcome outcome;
    outcome.result = call(&parameters, &outcome.value, &exception, &outcome.badArgument);
    outcome.Take(exception);
    return outcome;
}

}  // namespace

void Outcome::Take(const EXCEPINFO& thrown) {
    code = thrown.scode;
    source = View(thrown.bstrSource);
    description = View(thrown.bstrDescription);
    for (const BSTR text : {thrown.bstrSource, thrown.bstrDescription, thrown.bstrHelpFile}) SysFreeString(text);
}

VARIANT Arg(LONG value) { return Make(VT_I4, value); }
VARIANT Arg(bool value) { return Make(VT_BOOL, value ? VARIANT_TRUE : VARIANT_FALSE); }
VARIANT Arg(double value) { return Make(VT_R8, value); }
VARIANT Arg(BSTR text) { return Make(VT_BSTR, text); }
VARIANT Arg(IDispatch* object) { return Make(VT_DISPATCH, object); }
VARIANT Arg(VARIANT* variable) { return Make(VT_BYREF | VT_VARIANT, variable); }
VARIANT Missing() { return Make(VT_ERROR, DISP_E_PARAMNOTFOUND); }
VARIANT Ref(VARTYPE type, void* place) { return Make(type | VT_BYREF, place); }

Variant Text(std::wstring_view text) {
    Variant made;
    made.vt = VT_BSTR;
    made.bstrVal = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    return made;
}

DISPID IdOf(IDispatch* object, const wchar_t* name) {
    DISPID id = DISPID_UNKNOWN;
    if (name[0] == L'#') return std::stol(name + 1);
    auto* wanted = const_cast<LPOLESTR>(name);
    object->GetIDsOfNames(IID_NULL, &wanted, 1, LOCALE_USER_DEFAULT, &id);
    return id;
}

Outcome Invoke(IDispatch* object, const wchar_t* name, WORD flags, std::vector<VARIANT> arguments) {
    return InvokeNamed(object, name, flags, arguments, PutName(flags));
}

Outcome InvokeNamed(IDispatch* object, const wchar_t* name, WORD flags, std::vector<VARIANT> arguments,
                    std::vector<DISPID> named) {
    const auto call = [&](auto... rest) {
        return object->Invoke(IdOf(object, name), IID_NULL, LOCALE_USER_DEFAULT, flags, rest...);
    };
    return Run(call, std::move(arguments), std::move(named));
}

Outcome InvokeByPlatform(IDispatch* object, const wchar_t* name, WORD flags, std::vector<VARIANT> arguments) {
    ComPtr<ITypeInfo> info;
    object->GetTypeInfo(0, LOCALE_USER_DEFAULT, info.Receive());
    const auto call = [&](auto... rest) { return info->Invoke(object, IdOf(object, name), flags, rest...); };
    return Run(call, std::move(arguments), PutName(flags));
}

std::wstring TextOf(const VARIANT& value) {
    return value.vt == VT_BSTR ? std::wstring(View(value.bstrVal)) : L"<no string>";
}

}  // namespace velk::test
