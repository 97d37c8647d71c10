#include "frame/shapes_test.h"
#include "support/value_object.h"

namespace velk::test {
namespace {

using DispatchArguments = ShapesTest;

constexpr WORD kCall = DISPATCH_METHOD | DISPATCH_PROPERTYGET;

HRESULT IdsOf(IDispatch* object, std::vector<const wchar_t*> names, std::vector<DISPID>* ids) {
    ids->assign(names.size(), 12345);
    return object->GetIDsOfNames(IID_NULL, const_cast<LPOLESTR*>(names.data()), static_cast<UINT>(names.size()), 0,
                                 ids->data());
}

TEST_F(DispatchArguments, OmittedOnesTakeTheirDefaults) {
    const Variant text = Text(L"t");
    LONG number = 30;
    Variant last = Text(L"9");
    struct Case {
        std::vector<VARIANT> arguments;
        HRESULT result;
        const wchar_t* arrived;
    };
    const Case cases[] = {
        {{Arg(1L)}, S_OK, L"1 7 8 x missing missing"},
        {{Arg(1L), Arg(2L)}, S_OK, L"1 2 8 x missing missing"},
        {{Arg(1L), Missing(), Arg(3L)}, S_OK, L"1 7 3 x missing missing"},
        {{Arg(1L), Missing(), Ref(VT_I4, &number), text}, S_OK, L"1 7 30 t missing missing"},
        {{Arg(1L), Missing(), Missing(), Missing(), Missing(), Missing()}, S_OK, L"1 7 8 x missing missing"},
        {{Arg(1L), Arg(2L), Arg(3L), text, Arg(5L), Arg(6L)}, S_OK, L"1 2 3 t 3:5 3:6"},
        {{Arg(1L), Arg(2L), Arg(3L), text, Arg(5L), Arg(&last)}, S_OK, L"1 2 3 t 3:5 8:9"},
        {{}, DISP_E_PARAMNOTOPTIONAL, L"<no string>"},
        {{Missing(), Arg(1L)}, DISP_E_PARAMNOTOPTIONAL, L"<no string>"},
        {std::vector<VARIANT>(7, Arg(1L)), DISP_E_BADPARAMCOUNT, L"<no string>"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.arguments.size() << " giving " << c.arrived);
        const Outcome outcome = InvokeNamed(shapes_.get(), L"Optional", kCall, c.arguments, {});
        EXPECT_EQ(c.result, outcome.result);
        EXPECT_EQ(c.arrived, TextOf(outcome.value));
    }
    EXPECT_EQ(31, number);
    EXPECT_EQ(L"missing", Describe(Call(shapes_.get(), L"EchoVariant", {Missing()}).value));  // a value like any other
}

TEST_F(DispatchArguments, NamedOnesGoWhereTheirNamesSay) {
    const Variant text = Text(L"t");
    std::vector<DISPID> ids;
    ASSERT_EQ(S_OK, IdsOf(shapes_.get(), {L"optional", L"FIRST", L"number", L"Reference", L"text"}, &ids));
    const DISPID first = ids[1], number = ids[2], reference = ids[3], string = ids[4];
    struct Case {
        std::vector<VARIANT> arguments;
        std::vector<DISPID> named;
        HRESULT result;
        const wchar_t* arrived;
        UINT badArgument;
    };
    constexpr UINT kNone = static_cast<UINT>(-1);
    constexpr const wchar_t* kNothing = L"<no string>";
    const Case cases[] = {
        {{Arg(1L), text, Arg(2L)}, {string, number}, S_OK, L"1 2 8 t missing missing", kNone},
        {{text, Arg(3L), Arg(1L)}, {string, reference, first}, S_OK, L"1 7 3 t missing missing", kNone},
        {{Missing(), Arg(1L)}, {number, first}, S_OK, L"1 7 8 x missing missing", kNone},
        {{Arg(1L), Arg(2L)}, {first}, DISP_E_PARAMNOTFOUND, kNothing, 0},
        {{Arg(1L), Arg(2L), Arg(3L)}, {number, number}, DISP_E_PARAMNOTFOUND, kNothing, 1},
        {{Arg(1L), Arg(2L), Arg(3L)}, {number, 6}, DISP_E_PARAMNOTFOUND, kNothing, 0},
        {{Arg(1L), Arg(2L)}, {-7}, DISP_E_PARAMNOTFOUND, kNothing, 0},
        {{Arg(1L), Arg(2L)}, {DISPID_PROPERTYPUT}, DISP_E_PARAMNOTFOUND, kNothing, 0},
        {{Arg(2L)}, {number}, DISP_E_PARAMNOTOPTIONAL, kNothing, 0},
        {{Arg(1L), text}, {number}, DISP_E_TYPEMISMATCH, kNothing, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.named));
        const Outcome outcome = InvokeNamed(shapes_.get(), L"Optional", kCall, c.arguments, c.named);
        EXPECT_EQ(c.result, outcome.result);
        EXPECT_EQ(c.arrived, TextOf(outcome.value));
        EXPECT_EQ(c.badArgument, outcome.badArgument);
    }
}

TEST_F(DispatchArguments, NamesOfMembersAndParameters) {
    struct Case {
        std::vector<const wchar_t*> names;
        HRESULT result;
        std::vector<DISPID> ids;
    };
    const Case cases[] = {
        {{L"EchoLong"}, S_OK, {2}},
        {{L"ECHOLONG", L"VALUE"}, S_OK, {2, 0}},
        {{L"echolong", L"value", L"Value"}, S_OK, {2, 0, 0}},
        {{L"Mixed", L"h", L"A"}, S_OK, {24, 7, 0}},
        {{L"Item", L"index"}, S_OK, {29, 0}},
        {{L"EchoLong", L"result"}, DISP_E_UNKNOWNNAME, {2, DISPID_UNKNOWN}},
        {{L"Mixed", L"nothing", L"b"}, DISP_E_UNKNOWNNAME, {24, DISPID_UNKNOWN, 1}},
        {{L"Item", L""}, DISP_E_UNKNOWNNAME, {29, DISPID_UNKNOWN}},
        {{L"Step", L""}, DISP_E_UNKNOWNNAME, {26, DISPID_UNKNOWN}},
        {{L"Nothing", L"value"}, DISP_E_UNKNOWNNAME, {DISPID_UNKNOWN, DISPID_UNKNOWN}},
        {{L""}, DISP_E_UNKNOWNNAME, {DISPID_UNKNOWN}},
        {{nullptr}, E_INVALIDARG, {DISPID_UNKNOWN}},
        {{L"EchoLong", nullptr}, E_INVALIDARG, {DISPID_UNKNOWN, DISPID_UNKNOWN}},
    };
    for (const Case& c : cases) {
        std::vector<DISPID> ids;
        EXPECT_EQ(c.result, IdsOf(shapes_.get(), c.names, &ids)) << c.names[0];
        EXPECT_EQ(c.ids, ids) << c.names[0];
    }
    DISPID id = 0;
    auto* name = const_cast<LPOLESTR>(L"EchoLong");
    EXPECT_EQ(DISP_E_UNKNOWNINTERFACE, shapes_->GetIDsOfNames(IID_IUnknown, &name, 1, 0, &id));
    EXPECT_EQ(E_INVALIDARG, shapes_->GetIDsOfNames(IID_NULL, nullptr, 1, 0, &id));
    EXPECT_EQ(E_INVALIDARG, shapes_->GetIDsOfNames(IID_NULL, &name, 1, 0, nullptr));
    EXPECT_EQ(E_INVALIDARG, shapes_->GetIDsOfNames(IID_NULL, &name, 0, 0, &id));
}

TEST_F(DispatchArguments, OnlyTheWaysThatAMemberHasCanBeCalled) {
    const VARIANT object = Arg(static_cast<IDispatch*>(ValueObject::Make(Arg(1L)).Detach()));
    struct Case {
        const wchar_t* member;
        WORD flags;
        std::vector<VARIANT> arguments;
        HRESULT result;
    };
    const Case cases[] = {
        {L"EchoLong", DISPATCH_METHOD, {Arg(1L)}, S_OK},
        {L"EchoLong", DISPATCH_PROPERTYGET, {Arg(1L)}, DISP_E_MEMBERNOTFOUND},
        {L"EchoLong", DISPATCH_PROPERTYPUT, {Arg(1L)}, DISP_E_MEMBERNOTFOUND},
        {L"Step", DISPATCH_PROPERTYGET, {}, S_OK},
        {L"Step", DISPATCH_METHOD, {}, DISP_E_MEMBERNOTFOUND},
        {L"Step", DISPATCH_PROPERTYPUT, {Arg(1L)}, S_OK},
        {L"Step", DISPATCH_PROPERTYPUTREF, {Arg(1L)}, DISP_E_MEMBERNOTFOUND},
        {L"Owner", DISPATCH_PROPERTYPUTREF, {object}, S_OK},
        {L"Owner", DISPATCH_PROPERTYPUT, {object}, DISP_E_MEMBERNOTFOUND},
        {L"Item", DISPATCH_PROPERTYGET, {Arg(1L)}, S_OK},
        {L"Item", DISPATCH_PROPERTYPUT, {Arg(1L), Arg(2L)}, S_OK},
        {L"Item", DISPATCH_PROPERTYPUTREF, {Arg(1L), object}, S_OK},
        {L"Item", DISPATCH_PROPERTYPUTREF, {Arg(1L), Arg(2L)}, DISP_E_EXCEPTION},  // the set takes objects only
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.member << " " << c.flags);
        const WORD put = c.flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF);
        const std::vector<DISPID> named(put ? 1 : 0, DISPID_PROPERTYPUT);
        EXPECT_EQ(c.result, InvokeNamed(shapes_.get(), c.member, c.flags, c.arguments, named).result);
        EXPECT_EQ(c.result, InvokeByPlatform(shapes_.get(), c.member, c.flags, c.arguments).result);
    }
    EXPECT_EQ(Describe(object), Describe(Get(shapes_.get(), L"Item", {Arg(1L)}).value));
    EXPECT_EQ(DISP_E_PARAMNOTFOUND, InvokeNamed(shapes_.get(), L"Step", DISPATCH_PROPERTYPUT, {Arg(9L)}, {}).result);
    EXPECT_EQ(DISP_E_BADPARAMCOUNT, Let(shapes_.get(), L"Step", {Arg(9L), Arg(9L)}).result);
    EXPECT_EQ(DISP_E_BADPARAMCOUNT, Get(shapes_.get(), L"Step", {Arg(9L)}).result);
    EXPECT_EQ(1, Get(shapes_.get(), L"Step").value.lVal);
    EXPECT_EQ(
        S_OK,
        InvokeNamed(shapes_.get(), L"Item", DISPATCH_PROPERTYPUT, {Arg(3L), Arg(0L)}, {DISPID_PROPERTYPUT, 0}).result);
    EXPECT_EQ(L"3:3", Describe(Get(shapes_.get(), L"Item", {Arg(0L)}).value));
    object.pdispVal->Release();
}

// A call that no proper client makes gets an answer, too.
TEST_F(DispatchArguments, ParameterBlocksAreChecked) {
    VARIANT one = Arg(5L);
    DISPID first = 0;
    struct Case {
        DISPPARAMS parameters;
        HRESULT result;
    };
    Case cases[] = {
        {{&one, nullptr, 1, 0}, S_OK},
        {{&one, &first, 1, 1}, S_OK},
        {{nullptr, nullptr, 1, 0}, DISP_E_BADPARAMCOUNT},
        {{&one, nullptr, 1, 1}, DISP_E_BADPARAMCOUNT},
        {{&one, &first, 1, 2}, DISP_E_BADPARAMCOUNT},
        {{&one, nullptr, 0xFFFFFFFF, 0}, DISP_E_BADPARAMCOUNT},
        {{nullptr, nullptr, 0, 0}, DISP_E_PARAMNOTOPTIONAL},
    };
    const auto invoke = [&](DISPID id, REFIID iid, WORD flags, DISPPARAMS* parameters, VARIANT* result) {
        return shapes_->Invoke(id, iid, 0, flags, parameters, result, nullptr, nullptr);
    };
    for (Case& c : cases) {
        VARIANT result = Arg(77L);
        EXPECT_EQ(c.result, invoke(2, IID_NULL, DISPATCH_METHOD, &c.parameters, &result));
        EXPECT_EQ(FAILED(c.result) ? L"0:" : L"3:5", Describe(result));
        EXPECT_EQ(c.result, invoke(2, IID_NULL, DISPATCH_METHOD, &c.parameters, nullptr));
    }
    EXPECT_EQ(DISP_E_BADPARAMCOUNT, invoke(2, IID_NULL, DISPATCH_METHOD, nullptr, nullptr));
    DISPPARAMS none{};
    EXPECT_EQ(DISP_E_UNKNOWNINTERFACE, invoke(26, IID_IDispatch, DISPATCH_PROPERTYGET, &none, nullptr));
    for (const DISPID id : {-1, 0, 26, 34, 0x10000, 0x7FFFFFFF}) {  // 26 is a property
        EXPECT_EQ(DISP_E_MEMBERNOTFOUND, invoke(id, IID_NULL, 0, &none, nullptr)) << id;
    }
}

TEST_F(DispatchArguments, ReferencesToNothingAndTypesThatDoNotExistAreRefused) {
    VARIANT inner = Arg(1L), outer = Arg(&inner);
    std::vector<VARIANT> bad = {Arg(&outer)};  // a variable behind a variable
    for (const int type : {+VT_I4, +VT_BSTR, +VT_VARIANT, +VT_DISPATCH, VT_ARRAY | VT_BSTR}) {
        bad.push_back(Ref(static_cast<VARTYPE>(type), nullptr));
    }
    for (const int type : {+VT_VARIANT, 0x0FFF}) {
        bad.push_back(Arg(1L));
        bad.back().vt = static_cast<VARTYPE>(type);
    }
    for (VARIANT& argument : bad) {
        const HRESULT expected = argument.vt & VT_BYREF ? DISP_E_TYPEMISMATCH : DISP_E_BADVARTYPE;
        for (const wchar_t* member : {L"EchoLong", L"EchoString", L"EchoVariant", L"EchoObject", L"EchoFont",
                                      L"BumpLong", L"BumpString", L"BumpVariant", L"SwapObject", L"SwapFont"}) {
            SCOPED_TRACE(testing::Message() << member << " " << argument.vt);
            EXPECT_EQ(expected, Call(shapes_.get(), member, {argument}).result);
            EXPECT_TRUE(FAILED(Call(shapes_.get(), member, {Arg(&argument)}).result));
        }
    }
    EXPECT_EQ(DISP_E_TYPEMISMATCH, Call(shapes_.get(), L"FillStrings", {bad[0], Arg(1L)}).result);
    EXPECT_EQ(DISP_E_TYPEMISMATCH, Call(shapes_.get(), L"FillStrings", {bad[5], Arg(1L)}).result);
}

}  // namespace
}  // namespace velk::test
