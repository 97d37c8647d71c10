// Reads members by name and compares what they give as text: numbers in decimal, True and False.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "support/late_bound.h"

namespace velk::test {

inline std::wstring Fact(IDispatch* object, const wchar_t* name, std::initializer_list<VARIANT> arguments = {}) {
    Outcome outcome = Call(object, name, arguments);
    EXPECT_EQ(S_OK, outcome.result) << name;
    VariantChangeTypeEx(&outcome.value, &outcome.value, LOCALE_INVARIANT, VARIANT_ALPHABOOL, VT_BSTR);
    return TextOf(outcome.value);
}

using Facts = std::initializer_list<std::pair<const wchar_t*, std::wstring>>;

inline void ExpectFacts(IDispatch* object, Facts facts, std::initializer_list<VARIANT> arguments = {}) {
    for (const auto& [name, value] : facts) EXPECT_EQ(value, Fact(object, name, arguments)) << name;
}

template <class Function>
void* Address(Function* function) {
    return reinterpret_cast<void*>(function);
}

}  // namespace velk::test
