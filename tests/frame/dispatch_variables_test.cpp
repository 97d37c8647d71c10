#include <cstring>

#include "frame/shapes_test.h"

namespace velk::test {
namespace {

using DispatchVariables = ShapesTest;

struct Case {
    const wchar_t* member;
    VARTYPE type;  // of the variable before the call
    const wchar_t* held;
    LONG step;
    const wchar_t* result;
    const wchar_t* after;
};

Variant Holding(VARTYPE type, const wchar_t* text) {
    Variant made = Text(text);
    EXPECT_EQ(S_OK, VariantChangeTypeEx(&made, &made, LOCALE_INVARIANT, 0, type));
    return made;
}

constexpr Case kCases[] = {
    {L"BumpShort", VT_I2, L"5", 1, L"2:5", L"2:6"},
    {L"BumpLong", VT_I4, L"5", 1, L"3:5", L"3:6"},
    {L"BumpSingle", VT_R4, L"0.5", 1, L"4:0.5", L"4:1.5"},
    {L"BumpDouble", VT_R8, L"0.5", 1, L"5:0.5", L"5:1.5"},
    {L"BumpBoolean", VT_BOOL, L"-1", 1, L"11:-1", L"11:0"},
    {L"BumpString", VT_BSTR, L"a", 1, L"8:a", L"8:a!"},
    {L"BumpVariant", VT_BSTR, L"a", 1, L"8:a", L"8:changed"},
    {L"BumpVariant", VT_I2, L"5", 1, L"2:5", L"8:changed"},
    {L"BumpKind", VT_I4, L"5", 1, L"3:5", L"3:6"},
    {L"BumpColour", VT_UI4, L"5", 1, L"19:5", L"19:6"},
    // Of another type: what comes back is of the member's type.
    {L"BumpShort", VT_R8, L"2.5", 1, L"2:2", L"2:3"},
    {L"BumpLong", VT_I2, L"5", 1, L"3:5", L"3:6"},
    {L"BumpLong", VT_BSTR, L"5", 1, L"3:5", L"3:6"},
    {L"BumpLong", VT_EMPTY, L"", 1, L"3:0", L"3:1"},
    {L"BumpSingle", VT_R8, L"0.5", 1, L"4:0.5", L"4:1.5"},
    {L"BumpDouble", VT_BSTR, L"7", 1, L"5:7", L"5:8"},
    {L"BumpBoolean", VT_I4, L"5", 1, L"11:-1", L"11:0"},
    {L"BumpString", VT_I4, L"5", 1, L"8:5", L"8:5!"},
    {L"BumpString", VT_EMPTY, L"", 1, L"8:", L"8:!"},
    {L"BumpColour", VT_I4, L"5", 1, L"19:5", L"19:6"},
    {L"BumpLong", VT_EMPTY, L"", 0, L"3:0", L"3:0"},  // never set: typed all the same
    // Left as it was: the variable keeps its own type and value.
    {L"BumpShort", VT_R8, L"2.5", 0, L"2:2", L"5:2.5"},
    {L"BumpLong", VT_BSTR, L"05", 0, L"3:5", L"8:05"},
    {L"BumpBoolean", VT_I4, L"5", 0, L"11:-1", L"3:5"},
    {L"BumpString", VT_I4, L"5", 0, L"8:5", L"3:5"},
};

TEST_F(DispatchVariables, AreConvertedInAndReceiveWhatTheMemberWrote) {
    for (const Case& c : kCases) {
        SCOPED_TRACE(testing::Message() << c.member << " " << c.type << " " << c.held << " step " << c.step);
        shapes_->put_Step(c.step);
        Variant variable = Holding(c.type, c.held);
        const Outcome outcome = Call(shapes_.get(), c.member, {Arg(&variable)});
        EXPECT_EQ(S_OK, outcome.result);
        EXPECT_EQ(c.result, Describe(outcome.value));
        EXPECT_EQ(c.after, Describe(variable));
    }
}

// The member always writes here, so a literal that it got its hands on would be changed or freed.
TEST_F(DispatchVariables, LiteralsStayAsTheyAre) {
    for (const Case& c : kCases) {
        SCOPED_TRACE(testing::Message() << c.member << " " << c.type << " " << c.held);
        const Variant literal = Holding(c.type, c.held);
        VARIANT laidDown = literal;
        const std::wstring before = Describe(literal);
        DISPPARAMS parameters{&laidDown, nullptr, 1, 0};
        EXPECT_EQ(S_OK, shapes_->Invoke(IdOf(shapes_.get(), c.member), IID_NULL, 0, DISPATCH_METHOD, &parameters,
                                        nullptr, nullptr, nullptr));
        EXPECT_EQ(0, std::memcmp(&literal, &laidDown, sizeof(VARIANT)));
        EXPECT_EQ(before, Describe(literal));
    }
}

TEST_F(DispatchVariables, TypedReferencesArePassedStraightAndForeignOnesAsCopies) {
    LONG number = 5;
    SHORT small = 5;
    Bstr text(L"a");
    BSTR place = text.Detach();
    EXPECT_EQ(L"3:5", Describe(Call(shapes_.get(), L"BumpLong", {Ref(VT_I4, &number)}).value));
    EXPECT_EQ(6, number);
    EXPECT_EQ(L"3:5", Describe(Call(shapes_.get(), L"BumpLong", {Ref(VT_I2, &small)}).value));
    EXPECT_EQ(5, small);
    EXPECT_EQ(L"8:a", Describe(Call(shapes_.get(), L"BumpString", {Ref(VT_BSTR, &place)}).value));
    *text.Receive() = place;
    EXPECT_EQ(L"a!", View(text.get()));

    // A variable that is itself a reference, as a script's own by-reference arguments are.
    Variant variable;
    static_cast<VARIANT&>(variable) = Ref(VT_I4, &number);
    EXPECT_EQ(L"3:6", Describe(Call(shapes_.get(), L"BumpLong", {Arg(&variable)}).value));
    EXPECT_EQ(L"3:7", Describe(variable));
}

TEST_F(DispatchVariables, TheResultMayGoWhereAnArgumentStood) {
    Variant variable = Holding(VT_I4, L"12");
    VARIANT argument = Arg(&variable);
    DISPPARAMS parameters{&argument, nullptr, 1, 0};
    EXPECT_EQ(S_OK, shapes_->Invoke(IdOf(shapes_.get(), L"EchoLong"), IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD,
                                    &parameters, &variable, nullptr, nullptr));
    EXPECT_EQ(L"3:12", Describe(variable));
}

}  // namespace
}  // namespace velk::test
