#include <bit>

#include "frame/shapes_test.h"

namespace velk::test {
namespace {

using DispatchValues = ShapesTest;

struct Case {
    const wchar_t* member;
    VARIANT argument;
    HRESULT result;
    const wchar_t* value;
};

VARIANT OfType(VARTYPE type, LONGLONG bits) {
    VARIANT made{};
    made.vt = type;
    made.llVal = bits;
    return made;
}

VARIANT Single(FLOAT value) { return OfType(VT_R4, std::bit_cast<LONG>(value)); }

TEST_F(DispatchValues, ArriveAndReturnConvertedAsThePlatformDoesIt) {
    const Variant text = Text(L"text"), number = Text(L" -41 "), fraction = Text(L"2.5"), none = Text(L"");
    Variant withNul;
    withNul.vt = VT_BSTR;
    withNul.bstrVal = Bstr(std::wstring_view(L"a\0b", 3)).Detach();
    SHORT small = -9;
    const Case cases[] = {
        {L"EchoShort", OfType(VT_I2, -7), S_OK, L"2:-7"},
        {L"EchoShort", Arg(32767L), S_OK, L"2:32767"},
        {L"EchoShort", Arg(32768L), DISP_E_OVERFLOW, L"0:"},
        {L"EchoShort", Arg(2.5), S_OK, L"2:2"},
        {L"EchoShort", Arg(-32769.0), DISP_E_OVERFLOW, L"0:"},
        {L"EchoLong", Arg(-2147483647L), S_OK, L"3:-2147483647"},
        {L"EchoLong", Ref(VT_I2, &small), S_OK, L"3:-9"},
        {L"EchoLong", Arg(number.bstrVal), S_OK, L"3:-41"},
        {L"EchoLong", Arg(text.bstrVal), DISP_E_TYPEMISMATCH, L"0:"},
        {L"EchoLong", Arg(none.bstrVal), DISP_E_TYPEMISMATCH, L"0:"},
        {L"EchoLong", Arg(1e10), DISP_E_OVERFLOW, L"0:"},
        {L"EchoLong", OfType(VT_EMPTY, 0), S_OK, L"3:0"},
        {L"EchoLong", OfType(VT_NULL, 0), DISP_E_TYPEMISMATCH, L"0:"},
        {L"EchoSingle", Single(-1.25f), S_OK, L"4:-1.25"},
        {L"EchoSingle", Arg(1e300), DISP_E_OVERFLOW, L"0:"},
        {L"EchoDouble", Arg(-1e300), S_OK, L"5:-1E+300"},
        {L"EchoDouble", Arg(7L), S_OK, L"5:7"},
        {L"EchoBoolean", Arg(true), S_OK, L"11:-1"},
        {L"EchoBoolean", Arg(5L), S_OK, L"11:-1"},
        {L"EchoString", Arg(text.bstrVal), S_OK, L"8:text"},
        {L"EchoString", Arg(static_cast<BSTR>(nullptr)), S_OK, L"8:"},
        {L"EchoString", Arg(-5L), S_OK, L"8:-5"},
        {L"EchoVariant", Arg(2.5), S_OK, L"5:2.5"},
        {L"EchoVariant", OfType(VT_NULL, 0), S_OK, L"1:"},
        {L"EchoVariant", Ref(VT_I2, &small), S_OK, L"2:-9"},
        {L"EchoKind", Arg(3L), S_OK, L"3:3"},
        {L"EchoColour", Arg(255L), S_OK, L"19:255"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.member << " " << Describe(c.argument));
        const Outcome ours = Call(shapes_.get(), c.member, {c.argument});
        EXPECT_EQ(c.result, ours.result);
        EXPECT_EQ(c.value, Describe(ours.value));
        EXPECT_EQ(FAILED(c.result) ? 0u : static_cast<UINT>(-1), ours.badArgument);
        const Outcome platform =
            InvokeByPlatform(shapes_.get(), c.member, DISPATCH_METHOD | DISPATCH_PROPERTYGET, {c.argument});
        EXPECT_EQ(platform.result, ours.result);
        EXPECT_EQ(Describe(platform.value), Describe(ours.value));
    }
    EXPECT_EQ(std::wstring(L"a\0b", 3), TextOf(Call(shapes_.get(), L"EchoString", {withNul}).value));
}

// A colour with the high bit set is a negative number to most clients.
TEST_F(DispatchValues, ASystemColourArrives) {
    const VARIANT colour = Arg(static_cast<LONG>(0x80000005));
    EXPECT_EQ(0x80000005u, Call(shapes_.get(), L"EchoColour", {colour}).value.ulVal);
}

TEST_F(DispatchValues, EightByteArgumentsBetweenFourByteOnesKeepTheirPlaces) {
    DOUBLE d = 4.5;
    Bstr e(L"e");
    const Variant g = Text(L"g");
    const std::initializer_list<VARIANT> arguments = {OfType(VT_I2, -1),         Arg(-2.25), Arg(3L), Ref(VT_R8, &d),
                                                      Ref(VT_BSTR, e.Receive()), Arg(1e9),   g,       Single(8.5f)};
    const wchar_t* const arrived = L"-1 -2.250 3 4.500  5:1000000000 g 8.500";
    EXPECT_EQ(arrived, TextOf(Call(shapes_.get(), L"Mixed", arguments).value));
    EXPECT_EQ(5.5, d);
    EXPECT_EQ(L"!", View(e.get()));

    d = 4.5;
    Bstr f, early;
    EXPECT_EQ(S_OK, shapes_->Mixed(-1, -2.25, 3, &d, f.Receive(), Arg(1e9), g.bstrVal, 8.5f, early.Receive()));
    EXPECT_EQ(arrived, View(early.get()));
    EXPECT_EQ(5.5, d);
}

TEST_F(DispatchValues, ABadArgumentIsNamedByItsPlaceInTheCallersArray) {
    DOUBLE d = 0;
    BSTR e = nullptr;
    const VARIANT good[] = {Arg(1L), Arg(1L), Arg(1L), Ref(VT_R8, &d), Ref(VT_BSTR, &e), Arg(1L), Arg(1L), Arg(1L)};
    const Variant text = Text(L"text");
    for (const UINT bad : {0u, 1u, 2u, 7u}) {
        std::vector<VARIANT> arguments(std::begin(good), std::end(good));
        arguments[bad] = text;
        const Outcome outcome = InvokeNamed(shapes_.get(), L"Mixed", DISPATCH_METHOD, arguments, {});
        EXPECT_EQ(DISP_E_TYPEMISMATCH, outcome.result) << bad;
        EXPECT_EQ(7 - bad, outcome.badArgument);
    }
    EXPECT_EQ(0.0, d);
}

TEST_F(DispatchValues, MembersWithoutArguments) {
    shapes_->put_Item(0, Arg(true));
    EXPECT_EQ(L"11:-1", Describe(Get(shapes_.get(), L"First").value));
    EXPECT_EQ(L"5:10", Describe(Get(shapes_.get(), L"Share").value));
}

}  // namespace
}  // namespace velk::test
