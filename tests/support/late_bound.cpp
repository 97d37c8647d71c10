#include "support/late_bound.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

#include "platform/text.h"

namespace velk::test {
namespace {

template <class Target>
Outcome Run(Target call, WORD flags, std::vector<VARIANT> arguments, std::vector<DISPID> named = {}) {
    const bool puts = flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF);
    if (puts && named.empty()) named = {DISPID_PROPERTYPUT};
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

Variant Owned(VARIANT value) {
    Variant made;
    static_cast<VARIANT&>(made) = value;
    return made;
}
Variant Text(std::wstring_view text) { return Owned(Arg(Bstr(text).Detach())); }

DISPID IdOf(IDispatch* object, const wchar_t* name) {
    DISPID id = DISPID_UNKNOWN;
    if (name[0] == L'#') return std::stol(name + 1);
    auto* wanted = const_cast<LPOLESTR>(name);
    object->GetIDsOfNames(IID_NULL, &wanted, 1, LOCALE_USER_DEFAULT, &id);
    return id;
}

Outcome Invoke(IDispatch* object, const wchar_t* name, WORD flags, std::vector<VARIANT> arguments,
               std::vector<DISPID> named) {
    const auto call = [&](auto... rest) {
        return object->Invoke(IdOf(object, name), IID_NULL, LOCALE_USER_DEFAULT, flags, rest...);
    };
    return Run(call, flags, std::move(arguments), std::move(named));
}

Outcome InvokeByPlatform(IDispatch* object, const wchar_t* name, WORD flags, std::vector<VARIANT> arguments) {
    ComPtr<ITypeInfo> info;
    object->GetTypeInfo(0, LOCALE_USER_DEFAULT, info.Receive());
    const auto call = [&](auto... rest) { return info->Invoke(object, IdOf(object, name), flags, rest...); };
    return Run(call, flags, std::move(arguments));
}

std::wstring TextOf(const VARIANT& value) {
    return value.vt == VT_BSTR ? std::wstring(View(value.bstrVal)) : L"<no string>";
}

std::wstring Fact(IDispatch* object, const wchar_t* name, std::initializer_list<VARIANT> arguments) {
    Outcome outcome = Call(object, name, arguments);
    EXPECT_EQ(S_OK, outcome.result) << name;
    VariantChangeTypeEx(&outcome.value, &outcome.value, LOCALE_INVARIANT, VARIANT_ALPHABOOL, VT_BSTR);
    return TextOf(outcome.value);
}

}  // namespace velk::test
