#include <cstring>

#include "frame/shapes_test.h"
#include "support/value_object.h"

namespace velk::test {
namespace {

using DispatchValues = ShapesTest;

Variant Holding(VARTYPE type, const wchar_t* text) {
    Variant made = Text(text);
    EXPECT_EQ(S_OK, VariantChangeTypeEx(&made, &made, LOCALE_INVARIANT, 0, type));
    return made;
}
Variant Holding(IDispatch* object) {
    Variant made;
    made.vt = VT_DISPATCH;
    made.pdispVal = ComPtr<IDispatch>(object).Detach();
    return made;
}

ComPtr<IFontDisp> MakeFont() {
    FONTDESC description{sizeof(FONTDESC), const_cast<LPOLESTR>(L"Tahoma"), {}, FW_NORMAL, 0, FALSE, FALSE, FALSE};
    description.cySize.int64 = 80000;
    ComPtr<IFontDisp> font;
    EXPECT_EQ(S_OK, OleCreateFontIndirect(&description, IID_IFontDisp, font.ReceiveVoid()));
    return font;
}

// The platform's own generic call is the reference for what is passed by value, whatever the member takes.
TEST_F(DispatchValues, ArriveAndReturnAsThroughThePlatform) {
    const Variant text = Text(L"text"), number = Text(L" -41 "), none = Text(L""), null = Holding(VT_NULL, L"");
    const auto value = ValueObject::Make(Arg(5L)), word = ValueObject::Make(text), large = ValueObject::Make(Arg(1e10));
    const auto failing = ValueObject::Make(Arg(5L)), bare = ValueObject::Make(Arg(5L));
    failing->answer = DISP_E_EXCEPTION;
    bare->answer = DISP_E_MEMBERNOTFOUND;
    const auto font = MakeFont();
    SHORT small = -9;
    std::vector<VARIANT> values = {text, number, none, null, VARIANT{}, Ref(VT_I2, &small), Arg(true)};
    for (const LONG whole : {-7, 255, 32767, 32768, -2147483647}) values.push_back(Arg(whole));
    for (const double fraction : {2.5, 3.5, -1e300, 1e10}) values.push_back(Arg(fraction));
    for (IDispatch* object : std::initializer_list<IDispatch*>{font.get(), value.get(), word.get(), large.get(),
                                                               failing.get(), bare.get(), nullptr}) {
        values.push_back(Arg(object));
    }
    shapes_->put_Step(0);
    for (const auto& [byValue, byReference] : {std::pair(L"EchoLong", L"BumpLong"),
                                               {L"EchoLong", L"BumpKind"},
                                               {L"EchoDouble", L"EchoDouble"},
                                               {L"EchoString", L"BumpString"},
                                               {L"EchoVariant", L"BumpVariant"},
                                               {L"EchoObject", L"SwapObject"}}) {
        for (const VARIANT& argument : values) {
            SCOPED_TRACE(testing::Message() << byValue << " " << Describe(argument));
            const Outcome platform =
                InvokeByPlatform(shapes_.get(), byValue, DISPATCH_METHOD | DISPATCH_PROPERTYGET, {argument});
            // Deliberately another text than the platform's "-1".
            const bool asWord = argument.vt == VT_BOOL && platform.value.vt == VT_BSTR;
            for (const wchar_t* member : {byValue, byReference}) {
                const Outcome ours = Call(shapes_.get(), member, {argument});
                EXPECT_EQ(platform.result, ours.result);
                EXPECT_EQ(asWord ? L"8:True" : Describe(platform.value), Describe(ours.value));
                EXPECT_EQ(FAILED(ours.result) ? 0u : static_cast<UINT>(-1), ours.badArgument);
            }
        }
    }
    for (ValueObject* object : {value.get(), word.get(), large.get(), failing.get(), bare.get()}) {
        EXPECT_EQ(1u, object->count());
    }
}

TEST_F(DispatchValues, EightByteArgumentsBetweenFourByteOnesKeepTheirPlaces) {
    DOUBLE d = 4.5;
    Bstr e(L"e");
    const Variant g = Text(L"g");
    const std::vector<VARIANT> good = {Arg(-1L), Arg(-2.25), Arg(3L), Ref(VT_R8, &d), Ref(VT_BSTR, e.Receive()),
                                       Arg(1e9), g,          Arg(8.5)};
    EXPECT_EQ(L"-1 -2.250 3 4.500  5:1000000000 g 8.500",
              TextOf(InvokeNamed(shapes_.get(), L"Mixed", DISPATCH_METHOD, good, {}).value));
    EXPECT_EQ(5.5, d);
    EXPECT_EQ(L"!", View(e.get()));
    e = Bstr(std::wstring_view(L"a\0b", 3));
    EXPECT_EQ(View(e.get()), TextOf(Call(shapes_.get(), L"EchoString", {Arg(e.get())}).value));

    // A bad one is named by its place in the caller's array, which is laid down in reverse.
    for (const UINT bad : {0u, 1u, 2u, 7u}) {
        std::vector<VARIANT> arguments = good;
        arguments[bad] = g;
        const Outcome outcome = InvokeNamed(shapes_.get(), L"Mixed", DISPATCH_METHOD, arguments, {});
        EXPECT_EQ(DISP_E_TYPEMISMATCH, outcome.result) << bad;
        EXPECT_EQ(7 - bad, outcome.badArgument);
    }
    EXPECT_EQ(5.5, d);
}

struct VariableCase {
    const wchar_t* member;
    VARTYPE type;  // of the variable before the call
    const wchar_t* held;
    LONG step;
    const wchar_t* result;
    const wchar_t* after;
};

// What comes back is of the member's type; a variable that the member left alone keeps its own type and value.
constexpr VariableCase kVariables[] = {
    {L"BumpShort", VT_I2, L"5", 1, L"2:5", L"2:6"},         {L"BumpShort", VT_R8, L"2.5", 1, L"2:2", L"2:3"},
    {L"BumpShort", VT_R8, L"2.5", 0, L"2:2", L"5:2.5"},     {L"BumpLong", VT_I2, L"5", 1, L"3:5", L"3:6"},
    {L"BumpLong", VT_BSTR, L"05", 1, L"3:5", L"3:6"},       {L"BumpLong", VT_BSTR, L"05", 0, L"3:5", L"8:05"},
    {L"BumpLong", VT_EMPTY, L"", 0, L"3:0", L"3:0"},  // never set: typed all the same
    {L"BumpBoolean", VT_I4, L"5", 1, L"11:-1", L"11:0"},    {L"BumpString", VT_BSTR, L"a", 1, L"8:a", L"8:a!"},
    {L"BumpString", VT_I4, L"5", 1, L"8:5", L"8:5!"},       {L"BumpString", VT_I4, L"5", 0, L"8:5", L"3:5"},
    {L"BumpString", VT_EMPTY, L"", 1, L"8:", L"8:!"},       {L"BumpVariant", VT_BSTR, L"a", 1, L"8:a", L"8:changed"},
    {L"BumpVariant", VT_I2, L"5", 1, L"2:5", L"8:changed"}, {L"BumpKind", VT_I4, L"5", 1, L"3:5", L"3:6"}};

TEST_F(DispatchValues, VariablesReceiveWhatTheMemberWroteAndLiteralsStay) {
    for (const VariableCase& c : kVariables) {
        SCOPED_TRACE(testing::Message() << c.member << " " << c.type << " " << c.held << " step " << c.step);
        shapes_->put_Step(c.step);
        Variant held = Holding(c.type, c.held);
        VARIANT literal = held;
        DISPPARAMS parameters{&literal, nullptr, 1, 0};
        EXPECT_EQ(S_OK, shapes_->Invoke(IdOf(shapes_.get(), c.member), IID_NULL, 0, DISPATCH_METHOD, &parameters,
                                        nullptr, nullptr, nullptr));
        EXPECT_EQ(0, std::memcmp(&literal, &held, sizeof(VARIANT)));
        const Outcome outcome = Call(shapes_.get(), c.member, {Arg(&held)});
        EXPECT_EQ(S_OK, outcome.result);
        EXPECT_EQ(c.result, Describe(outcome.value));
        EXPECT_EQ(c.after, Describe(held));
    }
}

TEST_F(DispatchValues, TypedReferencesArePassedStraightAndForeignOnesConvertedThereAndBack) {
    LONG number = 5;
    SHORT small = 32767;
    BSTR place = Bstr(L"a").Detach();
    EXPECT_EQ(L"3:5", Describe(Call(shapes_.get(), L"BumpLong", {Ref(VT_I4, &number)}).value));
    EXPECT_EQ(6, number);
    const std::pair<VARTYPE, std::size_t> sizes[] = {{VT_I1, 1}, {VT_UI1, 1}, {VT_I2, 2},   {VT_UI2, 2}, {VT_UI4, 4},
                                                     {VT_R4, 4}, {VT_INT, 4}, {VT_UINT, 4}, {VT_I8, 8},  {VT_UI8, 8},
                                                     {VT_R8, 8}, {VT_CY, 8},  {VT_DATE, 8}};
    for (const auto& [type, size] : sizes) {
        LONGLONG places[] = {-1, -1};
        for (LONG i : {0, 1}) {
            VARIANT whole = Arg(5 + i), value{};
            EXPECT_EQ(S_OK, VariantChangeType(&value, &whole, 0, type));
            memcpy(&places[i], &value.llVal, size);
        }
        EXPECT_EQ(L"3:5", Describe(Call(shapes_.get(), L"BumpLong", {Ref(type, &places[0])}).value)) << type;
        EXPECT_EQ(places[1], places[0]) << type;
    }
    EXPECT_EQ(DISP_E_OVERFLOW, Call(shapes_.get(), L"BumpLong", {Ref(VT_I2, &small)}).result);
    EXPECT_EQ(32767, small);
    double fraction = 2.5;
    shapes_->put_Step(0);
    EXPECT_EQ(L"2:2", Describe(Call(shapes_.get(), L"BumpShort", {Ref(VT_R8, &fraction)}).value));
    EXPECT_EQ(2.5, fraction) << "a member that leaves it alone rounds nothing";
    shapes_->put_Step(1);
    EXPECT_EQ(L"2:2", Describe(Call(shapes_.get(), L"BumpShort", {Ref(VT_R8, &fraction)}).value));
    EXPECT_EQ(3, fraction);
    Variant digits = Text(L"05"), object = Holding(ValueObject::Make(Arg(5L)).get());
    EXPECT_EQ(L"3:5", Describe(Call(shapes_.get(), L"BumpLong", {Ref(VT_BSTR, &digits.bstrVal)}).value));
    EXPECT_EQ(L"8:6", Describe(digits));
    EXPECT_EQ(L"3:5", Describe(Call(shapes_.get(), L"BumpLong", {Ref(VT_DISPATCH, &object.pdispVal)}).value));
    EXPECT_EQ(L"3:5", Describe(Call(shapes_.get(), L"BumpLong", {Arg(object.pdispVal)}).value)) << "an object stays";
    EXPECT_EQ(L"8:a", Describe(Call(shapes_.get(), L"BumpString", {Ref(VT_BSTR, &place)}).value));
    Bstr text;
    *text.Receive() = place;
    EXPECT_EQ(L"a!", View(text.get()));

    // A variable that is itself a reference, as a script's own by-reference arguments are.
    Variant variable;
    static_cast<VARIANT&>(variable) = Ref(VT_I4, &number);
    EXPECT_EQ(L"3:6", Describe(Call(shapes_.get(), L"BumpLong", {Arg(&variable)}).value));
    EXPECT_EQ(L"3:7", Describe(variable));

    // The result may go where an argument stood.
    VARIANT argument = Arg(&variable);
    DISPPARAMS parameters{&argument, nullptr, 1, 0};
    EXPECT_EQ(S_OK, shapes_->Invoke(IdOf(shapes_.get(), L"EchoString"), IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD,
                                    &parameters, &variable, nullptr, nullptr));
    EXPECT_EQ(L"8:7", Describe(variable));
}

// While one argument is converted, foreign code replaces what another argument points to. A pointer that was taken too
// early would then point to a freed string.
TEST_F(DispatchValues, ADefaultPropertyMayChangeTheCallersOtherVariables) {
    for (const UINT changing : {0u, 2u, 7u}) {
        const auto object = ValueObject::Make(Arg(5L)), late = ValueObject::Make(Arg(5L));
        Variant d, e = Text(L"an old text"), f = Text(L"an old value"), g = Text(L"another old text");
        object->onRead = [&] {
            d = Text(L"2");
            e = Text(L"new e");
            f = Text(L"new f");
            g = Text(L"new g");
        };
        std::vector<VARIANT> arguments = {Arg(5L), Arg(1.0), Arg(5L), Arg(&d), Arg(&e), Arg(&f), Arg(&g), Arg(5L)};
        arguments[changing] = Arg(object.get());
        const auto call = [&] { return InvokeNamed(shapes_.get(), L"Mixed", DISPATCH_METHOD, arguments, {}); };
        EXPECT_EQ(L"5 1.000 5 2.000 new e 8:new f new g 5.000", TextOf(call().value));
        EXPECT_EQ(L"5:3", Describe(d));
        EXPECT_EQ(L"8:new e!", Describe(e));

        // An object that comes in that way behind the arguments that are settled is not read any more.
        if (changing != 7) continue;
        late->onRead = [] { ADD_FAILURE() << "was read"; };
        object->onRead = [&] { d = Holding(late.get()); };
        const Outcome refused = call();
        EXPECT_EQ(DISP_E_TYPEMISMATCH, refused.result);
        EXPECT_EQ(4u, refused.badArgument);
    }
}

TEST_F(DispatchValues, ObjectsPassInBothDirections) {
    const auto object = ValueObject::Make(Arg(5L));
    const auto font = MakeFont();
    IDispatch* const self = shapes_.get();
    EXPECT_EQ(object.get(), Call(self, L"EchoObject", {Arg(object.get())}).value.pdispVal);
    EXPECT_EQ(font.get(), Call(self, L"EchoFont", {Arg(font.get())}).value.pdispVal);
    for (const wchar_t* member : {L"EchoFont", L"SwapFont"}) {
        IDispatch* noFont = object.get();
        for (const VARIANT& given : {Arg(noFont), Ref(VT_DISPATCH, &noFont)}) {
            EXPECT_EQ(DISP_E_TYPEMISMATCH, Call(self, member, {given}).result);
        }
    }

    Variant variable;
    for (const VARIANT& given : {Arg(&variable), Ref(VT_DISPATCH, &variable.pdispVal)}) {
        variable = Holding(object.get());
        EXPECT_EQ(object.get(), Call(self, L"SwapObject", {given}).value.pdispVal);
        EXPECT_EQ(self, variable.pdispVal);
    }
    variable = Holding(font.get());
    EXPECT_EQ(font.get(), Call(self, L"SwapFont", {Arg(&variable)}).value.pdispVal);
    EXPECT_EQ(L"9:nothing", Describe(variable));

    // Where a value is wanted it is the object's, and comes back only if the member wrote.
    for (const LONG step : {0, 1}) {
        shapes_->put_Step(step);
        variable = Holding(object.get());
        EXPECT_EQ(L"3:5", Describe(Call(self, L"BumpLong", {Arg(&variable)}).value));
        EXPECT_EQ(step ? L"3:6" : L"9:object", Describe(variable));
    }
    EXPECT_EQ(1u, object->count());
    font->AddRef();
    EXPECT_EQ(1u, font->Release());
}

}  // namespace
}  // namespace velk::test
