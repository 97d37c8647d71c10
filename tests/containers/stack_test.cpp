// CStack as its clients see it.
#include <gtest/gtest.h>

#include "frame/text.h"
#include "support/client.h"
#include "support/late_bound.h"

namespace velk::test {
namespace {

class Stack : public testing::Test {
  protected:
    LONG Count() { return Get(stack_.get(), L"Count").value.lVal; }

    ComPtr<IDispatch> stack_ = CreateObject<IDispatch>(__uuidof(::CStack));
};

TEST_F(Stack, GivesBackTheLastValueFirst) {
    EXPECT_EQ(VT_EMPTY, Call(stack_.get(), L"Pop").value.vt);
    EXPECT_EQ(VT_EMPTY, Get(stack_.get(), L"Peak").value.vt);
    Variant text = Text(L"kept");
    Call(stack_.get(), L"Push", {Arg(&text)});
    VariantClear(&text);
    Call(stack_.get(), L"Push", {Arg(stack_.get())});
    EXPECT_EQ(2, Count());
    EXPECT_EQ(stack_.get(), Get(stack_.get(), L"Peak").value.pdispVal);
    EXPECT_EQ(stack_.get(), Call(stack_.get(), L"Pop").value.pdispVal);
    EXPECT_EQ(L"kept", TextOf(Call(stack_.get(), L"Pop").value));
    EXPECT_EQ(0, Count());
}

TEST_F(Stack, AStepThatMakesNoSlotFailsThePushWithARunTimeError) {
    EXPECT_EQ(10, Get(stack_.get(), L"GrowBy").value.lVal);
    EXPECT_EQ(S_OK, Let(stack_.get(), L"GrowBy", {Arg(LONG{0})}).result);
    const Outcome outcome = Call(stack_.get(), L"Push", {Arg(LONG{1})});
    EXPECT_EQ(static_cast<HRESULT>(0x800A0009), outcome.code);
    EXPECT_EQ(L"VelkSupport", outcome.source);
    EXPECT_EQ(1, Count());
    // With no slot behind the count, everything else is a failure of the component.
    const Outcome failed = Call(stack_.get(), L"Pop");
    EXPECT_EQ(eErrStack_ComponentFailure, failed.code);
    EXPECT_EQ(L"CStack component failure", failed.description);
    EXPECT_EQ(L"VelkSprt.CStack", failed.source);
    Call(stack_.get(), L"Clear");
    EXPECT_EQ(0, Count());
    EXPECT_EQ(0, Get(stack_.get(), L"GrowBy").value.lVal);
}

TEST_F(Stack, SurvivesAnEmptyReferenceAndAHugeStep) {
    EXPECT_EQ(S_OK, Let(stack_.get(), L"GrowBy", {Arg(LONG{0x7FFFFFFF})}).result);
    EXPECT_EQ(static_cast<HRESULT>(0x800A0007), Call(stack_.get(), L"Push", {Arg(LONG{1})}).code);
    Call(stack_.get(), L"Clear");
    EXPECT_EQ(S_OK, Let(stack_.get(), L"GrowBy", {Arg(LONG{10})}).result);
    EXPECT_EQ(S_OK, Call(stack_.get(), L"Push", {Arg(static_cast<IDispatch*>(nullptr))}).result);
    EXPECT_EQ(VT_DISPATCH, Call(stack_.get(), L"Pop").value.vt);
}

}  // namespace
}  // namespace velk::test
