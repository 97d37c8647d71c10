// CStack as its clients see it. When its slots come and go is compared with the literal rules in value_stack_test.cpp.
#include <gtest/gtest.h>

#include "support/client.h"
#include "support/late_bound.h"

namespace velk::test {
namespace {

TEST(Stack, AStepThatMakesNoSlotFailsThePushWithARunTimeError) {
    const auto stack = CreateObject<IDispatch>(__uuidof(::CStack));
    const auto get = [&](const wchar_t* member) { return Get(stack.get(), member).value.lVal; };
    EXPECT_EQ(10, get(L"GrowBy"));
    EXPECT_EQ(S_OK, Let(stack.get(), L"GrowBy", {Arg(LONG{0})}).result);
    const Outcome outcome = Call(stack.get(), L"Push", {Arg(LONG{1})});
    EXPECT_EQ(static_cast<HRESULT>(0x800A0009), outcome.code);
    EXPECT_EQ(L"VelkSupport", outcome.source);
    EXPECT_EQ(1, get(L"Count"));
    // With no slot behind the count, everything else is a failure of the component.
    const Outcome failed = Call(stack.get(), L"Pop");
    EXPECT_EQ(eErrStack_ComponentFailure, failed.code);
    EXPECT_EQ(L"CStack component failure", failed.description);
    EXPECT_EQ(L"VelkSprt.CStack", failed.source);
    Call(stack.get(), L"Clear");
    EXPECT_EQ(0, get(L"Count"));
    EXPECT_EQ(0, get(L"GrowBy"));
}

}  // namespace
}  // namespace velk::test
