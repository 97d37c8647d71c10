// Reads members by name, as text: numbers in decimal, True and False.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "support/late_bound.h"

namespace velk::test {

inline std::wstring Fact(IDispatch* object, const wchar_t* name, std::initializer_list<VARIANT> arguments = {}) {
    Outcome outcome = Call(object, name, arguments);
    EXPECT_EQ(S_OK, outcome.result) << name;
    VariantChangeTypeEx(&outcome.value, &outcome.value, LOCALE_INVARIANT, VARIANT_ALPHABOOL, VT_BSTR);
    return TextOf(outcome.value);
}

// The values of several members, each followed by "|".
inline std::wstring Facts(IDispatch* object, std::initializer_list<const wchar_t*> names,
                          std::initializer_list<VARIANT> arguments = {}) {
    std::wstring values;
    for (const wchar_t* name : names) values += Fact(object, name, arguments) + L"|";
    return values;
}

inline std::wstring YesNo(bool value) { return value ? L"True|" : L"False|"; }

template <class Function>
void* Address(Function* function) {
    return reinterpret_cast<void*>(function);
}

}  // namespace velk::test
