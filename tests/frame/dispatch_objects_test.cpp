#include "frame/shapes_test.h"
#include "support/value_object.h"

namespace velk::test {
namespace {

using DispatchObjects = ShapesTest;

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

TEST_F(DispatchObjects, GiveTheirDefaultPropertyWhereAValueIsWanted) {
    struct Case {
        const wchar_t* member;
        VARIANT value;
        HRESULT answer;
        HRESULT result;
        const wchar_t* arrived;
    };
    const Variant text = Text(L"text"), number = Text(L"12");
    const Case cases[] = {
        {L"EchoLong", Arg(5L), S_OK, S_OK, L"3:5"},
        {L"EchoLong", number, S_OK, S_OK, L"3:12"},
        {L"EchoLong", Arg(1e10), S_OK, DISP_E_OVERFLOW, L"0:"},
        {L"EchoLong", text, S_OK, DISP_E_TYPEMISMATCH, L"0:"},
        {L"EchoLong", Arg(5L), DISP_E_EXCEPTION, DISP_E_TYPEMISMATCH, L"0:"},
        {L"EchoLong", Arg(5L), DISP_E_MEMBERNOTFOUND, DISP_E_TYPEMISMATCH, L"0:"},
        {L"EchoString", Arg(5L), S_OK, S_OK, L"8:5"},
        {L"EchoVariant", Arg(5L), S_OK, S_OK, L"9:object"},
        {L"EchoObject", Arg(5L), S_OK, S_OK, L"9:object"},
        {L"EchoFont", Arg(5L), S_OK, DISP_E_TYPEMISMATCH, L"0:"},
        {L"BumpLong", Arg(5L), S_OK, S_OK, L"3:5"},
        {L"SwapFont", Arg(5L), S_OK, DISP_E_TYPEMISMATCH, L"0:"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.member << " " << c.result);
        const auto object = ValueObject::Make(c.value);
        object->answer = c.answer;
        {
            Variant variable = Holding(object.get());
            for (const VARIANT& given : {Arg(object.get()), Arg(&variable)}) {
                const Outcome outcome = Call(shapes_.get(), c.member, {given});
                EXPECT_EQ(c.result, outcome.result);
                EXPECT_EQ(c.arrived, Describe(outcome.value));
                EXPECT_EQ(FAILED(c.result) ? 0u : static_cast<UINT>(-1), outcome.badArgument);
            }
        }
        EXPECT_EQ(1u, object->count());
    }
}

TEST_F(DispatchObjects, AVariableWithAnObjectReceivesTheValueOnlyIfTheMemberWrote) {
    const auto object = ValueObject::Make(Arg(5L));
    Variant variable = Holding(object.get());
    shapes_->put_Step(0);
    EXPECT_EQ(S_OK, Call(shapes_.get(), L"BumpLong", {Arg(&variable)}).result);
    EXPECT_EQ(object.get(), variable.pdispVal);
    shapes_->put_Step(1);
    EXPECT_EQ(S_OK, Call(shapes_.get(), L"BumpLong", {Arg(&variable)}).result);
    EXPECT_EQ(L"3:6", Describe(variable));
    EXPECT_EQ(1u, object->count());
}

// While one argument is converted, foreign code replaces what another argument points to. A pointer that was taken too
// early would then point to a freed string.
TEST_F(DispatchObjects, ADefaultPropertyMayChangeTheCallersOtherVariables) {
    for (const UINT changing : {0u, 2u, 7u}) {
        const auto object = ValueObject::Make(Arg(5L));
        Variant d, e = Text(L"an old text"), f = Text(L"an old value"), g = Text(L"another old text");
        object->onRead = [&] {
            d = Text(L"2");
            e = Text(L"new e");
            f = Text(L"new f");
            g = Text(L"new g");
        };
        std::vector<VARIANT> arguments = {Arg(5L), Arg(1.0), Arg(5L), Arg(&d), Arg(&e), Arg(&f), Arg(&g), Arg(5L)};
        arguments[changing] = Arg(object.get());
        const Outcome outcome = InvokeNamed(shapes_.get(), L"Mixed", DISPATCH_METHOD, arguments, {});
        EXPECT_EQ(L"5 1.000 5 2.000 new e 8:new f new g 5.000", TextOf(outcome.value));
        EXPECT_EQ(L"5:3", Describe(d));
        EXPECT_EQ(L"8:new e!", Describe(e));
    }
}

TEST_F(DispatchObjects, ALateObjectInAVariableIsRefusedAndNotRun) {
    const auto first = ValueObject::Make(Arg(5L)), second = ValueObject::Make(Arg(5L));
    Variant c;
    bool ran = false;
    first->onRead = [&] { c = Holding(second.get()); };
    second->onRead = [&] { ran = true; };
    DOUBLE d = 0;
    const auto arguments = {Arg(1L), Arg(1L), Arg(&c), Ref(VT_R8, &d), Arg(1L), Arg(1L), Arg(1L), Arg(first.get())};
    const Outcome outcome = Call(shapes_.get(), L"Mixed", arguments);
    EXPECT_EQ(DISP_E_TYPEMISMATCH, outcome.result);
    EXPECT_EQ(5u, outcome.badArgument);
    EXPECT_FALSE(ran);
}

TEST_F(DispatchObjects, PassInBothDirections) {
    const auto object = ValueObject::Make(Arg(5L));
    const auto font = MakeFont();
    IDispatch* const self = shapes_.get();

    EXPECT_EQ(object.get(), Call(self, L"EchoObject", {Arg(object.get())}).value.pdispVal);
    EXPECT_EQ(font.get(), Call(self, L"EchoFont", {Arg(font.get())}).value.pdispVal);
    EXPECT_EQ(L"9:nothing", Describe(Call(self, L"EchoFont", {Arg(static_cast<IDispatch*>(nullptr))}).value));

    Variant variable = Holding(object.get());
    EXPECT_EQ(object.get(), Call(self, L"SwapObject", {Arg(&variable)}).value.pdispVal);
    EXPECT_EQ(self, variable.pdispVal);
    variable = Holding(object.get());
    EXPECT_EQ(object.get(), Call(self, L"SwapObject", {Ref(VT_DISPATCH, &variable.pdispVal)}).value.pdispVal);
    EXPECT_EQ(self, variable.pdispVal);
    EXPECT_EQ(L"9:object", Describe(Call(self, L"SwapObject", {variable}).value));
    EXPECT_EQ(self, variable.pdispVal);

    variable = Holding(font.get());
    EXPECT_EQ(font.get(), Call(self, L"SwapFont", {Arg(&variable)}).value.pdispVal);
    EXPECT_EQ(L"9:nothing", Describe(variable));
    EXPECT_EQ(S_OK, Invoke(self, L"Owner", DISPATCH_PROPERTYPUTREF, {Arg(font.get())}).result);
    EXPECT_EQ(font.get(), Get(self, L"Owner").value.pdispVal);
    shapes_->putref_Owner(nullptr);

    EXPECT_EQ(1u, object->count());
    font->AddRef();
    EXPECT_EQ(1u, font->Release());
}

}  // namespace
}  // namespace velk::test
