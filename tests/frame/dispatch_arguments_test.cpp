#include "frame/shapes_test.h"
#include "support/value_object.h"

namespace velk::test {
namespace {

using DispatchArguments = ShapesTest;

constexpr WORD kCall = DISPATCH_METHOD | DISPATCH_PROPERTYGET;
constexpr const wchar_t* kNothing = L"<no string>";

TEST_F(DispatchArguments, OmittedOnesTakeTheirDefaultsAndNamedOnesGoWhereTheirNamesSay) {
    const Variant text = Text(L"t");
    LONG number = 30;
    Variant last = Text(L"9");
    constexpr DISPID kFirst = 0, kNumber = 1, kReference = 2, kText = 3;
    struct Case {
        std::vector<VARIANT> arguments;
        std::vector<DISPID> named;
        HRESULT result;
        const wchar_t* arrived;
        UINT bad = static_cast<UINT>(-1);
    };
    const Case cases[] = {
        {{Arg(1L)}, {}, S_OK, L"1 7 8 x missing missing"},
        {{Arg(1L), Missing(), Ref(VT_I4, &number), text}, {}, S_OK, L"1 7 30 t missing missing"},
        {{Arg(1L), Missing(), Missing(), Missing(), Missing(), Missing()}, {}, S_OK, L"1 7 8 x missing missing"},
        {{Arg(1L), Arg(2L), Arg(3L), text, Arg(5L), Arg(6L)}, {}, S_OK, L"1 2 3 t 3:5 3:6"},
        {{Arg(1L), Arg(2L), Arg(3L), text, Arg(5L), Arg(&last)}, {}, S_OK, L"1 2 3 t 3:5 8:9"},
        {{}, {}, DISP_E_PARAMNOTOPTIONAL, kNothing, 0},
        {{Missing(), Arg(1L)}, {}, DISP_E_PARAMNOTOPTIONAL, kNothing, 1},
        {std::vector<VARIANT>(7, Arg(1L)), {}, DISP_E_BADPARAMCOUNT, kNothing},
        {{Arg(1L), text, Arg(2L)}, {kText, kNumber}, S_OK, L"1 2 8 t missing missing"},
        {{text, Arg(3L), Arg(1L)}, {kText, kReference, kFirst}, S_OK, L"1 7 3 t missing missing"},
        {{Missing(), Arg(1L)}, {kNumber, kFirst}, S_OK, L"1 7 8 x missing missing"},
        {{Arg(1L), Arg(2L)}, {kFirst}, DISP_E_PARAMNOTFOUND, kNothing, 0},
        {{Arg(1L), Arg(2L), Arg(3L)}, {kNumber, kNumber}, DISP_E_PARAMNOTFOUND, kNothing, 1},
        {{Arg(1L), Arg(2L), Arg(3L)}, {kNumber, 6}, DISP_E_PARAMNOTFOUND, kNothing, 0},
        {{Arg(1L), Arg(2L)}, {-7}, DISP_E_PARAMNOTFOUND, kNothing, 0},
        {{Arg(1L), Arg(2L)}, {DISPID_PROPERTYPUT}, DISP_E_PARAMNOTFOUND, kNothing, 0},
        {{Arg(2L)}, {kNumber}, DISP_E_PARAMNOTOPTIONAL, kNothing, 0},
        {{Arg(1L), text}, {kNumber}, DISP_E_TYPEMISMATCH, kNothing, 0}};
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << &c - cases);
        const Outcome outcome = InvokeNamed(shapes_.get(), L"Optional", kCall, c.arguments, c.named);
        EXPECT_EQ(c.result, outcome.result);
        EXPECT_EQ(c.arrived, TextOf(outcome.value));
        EXPECT_EQ(c.bad, outcome.badArgument);
    }
    EXPECT_EQ(31, number);
    EXPECT_EQ(L"missing", Describe(Call(shapes_.get(), L"EchoVariant", {Missing()}).value));  // a value like any other
}

TEST_F(DispatchArguments, NamesOfMembersAndParameters) {
    struct Case {
        std::vector<const wchar_t*> names;
        HRESULT result;
        std::vector<DISPID> ids;
    };
    const Case cases[] = {{{L"EchoDouble"}, S_OK, {2}},
                          {{L"ECHODOUBLE", L"value", L"VALUE"}, S_OK, {2, 0, 0}},
                          {{L"Mixed", L"h", L"A"}, S_OK, {18, 7, 0}},
                          {{L"EchoDouble", L"result"}, DISP_E_UNKNOWNNAME, {2, -1}},
                          {{L"Mixed", L"nothing", L"b"}, DISP_E_UNKNOWNNAME, {18, -1, 1}},
                          {{L"Item", L"index", L""}, DISP_E_UNKNOWNNAME, {22, 0, -1}},
                          {{L"Nothing", L"value"}, DISP_E_UNKNOWNNAME, {-1, -1}},
                          {{L""}, DISP_E_UNKNOWNNAME, {-1}},
                          {{L"EchoDouble", nullptr}, E_INVALIDARG, {-1, -1}},
                          {{nullptr}, E_INVALIDARG, {-1}},
                          {{}, E_INVALIDARG, {}}};
    for (const Case& c : cases) {
        std::vector<DISPID> ids(c.names.size(), 12345);
        EXPECT_EQ(c.result, shapes_->GetIDsOfNames(IID_NULL, const_cast<LPOLESTR*>(c.names.data()),
                                                   static_cast<UINT>(c.names.size()), 0, ids.data()));
        EXPECT_EQ(c.ids, ids) << testing::PrintToString(c.ids);
    }
    DISPID id = 0;
    auto* name = const_cast<LPOLESTR>(L"EchoLong");
    EXPECT_EQ(DISP_E_UNKNOWNINTERFACE, shapes_->GetIDsOfNames(IID_IUnknown, &name, 1, 0, &id));
    EXPECT_EQ(E_INVALIDARG, shapes_->GetIDsOfNames(IID_NULL, nullptr, 1, 0, &id));
    EXPECT_EQ(E_INVALIDARG, shapes_->GetIDsOfNames(IID_NULL, &name, 1, 0, nullptr));
}

TEST_F(DispatchArguments, OnlyTheWaysThatAMemberHasCanBeCalled) {
    const auto object = ValueObject::Make(Arg(1L));
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
        {L"Item", DISPATCH_PROPERTYGET, {Arg(1L)}, S_OK},
        {L"Item", DISPATCH_PROPERTYPUT, {Arg(1L), Arg(2L)}, S_OK},
        {L"Item", DISPATCH_PROPERTYPUTREF, {Arg(1L), Arg(2L)}, DISP_E_EXCEPTION},  // the set takes objects only
        {L"Item", DISPATCH_PROPERTYPUTREF, {Arg(1L), Arg(object.get())}, S_OK}};
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.member << " " << c.flags);
        EXPECT_EQ(c.result, InvokeByPlatform(shapes_.get(), c.member, c.flags, c.arguments).result);
        const WORD put = c.flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF);
        const std::vector<DISPID> named(put ? 1 : 0, DISPID_PROPERTYPUT);
        EXPECT_EQ(c.result, InvokeNamed(shapes_.get(), c.member, c.flags, c.arguments, named).result);
    }
    EXPECT_EQ(object.get(), Get(shapes_.get(), L"Item", {Arg(1L)}).value.pdispVal);
    EXPECT_EQ(DISP_E_PARAMNOTFOUND, InvokeNamed(shapes_.get(), L"Step", DISPATCH_PROPERTYPUT, {Arg(9L)}, {}).result);
    EXPECT_EQ(DISP_E_BADPARAMCOUNT, Let(shapes_.get(), L"Step", {Arg(9L), Arg(9L)}).result);
    EXPECT_EQ(DISP_E_BADPARAMCOUNT, Get(shapes_.get(), L"Step", {Arg(9L)}).result);
    EXPECT_EQ(1, Get(shapes_.get(), L"Step").value.lVal);
    EXPECT_EQ(
        S_OK,
        InvokeNamed(shapes_.get(), L"Item", DISPATCH_PROPERTYPUT, {Arg(3L), Arg(0L)}, {DISPID_PROPERTYPUT, 0}).result);
    EXPECT_EQ(L"3:3", Describe(Get(shapes_.get(), L"Item", {Arg(0L)}).value));
}

// A call that no proper client makes gets an answer, too.
TEST_F(DispatchArguments, ParameterBlocksAreChecked) {
    VARIANT one = Arg(5L);
    DISPID first = 0;
    const auto invoke = [&](DISPID id, REFIID iid, WORD flags, DISPPARAMS* parameters, VARIANT* result) {
        return shapes_->Invoke(id, iid, 0, flags, parameters, result, nullptr, nullptr);
    };
    std::pair<DISPPARAMS, HRESULT> cases[] = {{{&one, nullptr, 1, 0}, S_OK},
                                              {{&one, &first, 1, 1}, S_OK},
                                              {{nullptr, nullptr, 1, 0}, DISP_E_BADPARAMCOUNT},
                                              {{&one, nullptr, 1, 1}, DISP_E_BADPARAMCOUNT},
                                              {{&one, &first, 1, 2}, DISP_E_BADPARAMCOUNT},
                                              {{&one, nullptr, 0xFFFFFFFF, 0}, DISP_E_BADPARAMCOUNT},
                                              {{nullptr, nullptr, 0, 0}, DISP_E_PARAMNOTOPTIONAL}};
    for (auto& [parameters, answer] : cases) {
        VARIANT result = Arg(77L);
        EXPECT_EQ(answer, invoke(1, IID_NULL, DISPATCH_METHOD, &parameters, &result));
        EXPECT_EQ(FAILED(answer) ? L"0:" : L"3:5", Describe(result));
        EXPECT_EQ(answer, invoke(1, IID_NULL, DISPATCH_METHOD, &parameters, nullptr));
    }
    EXPECT_EQ(DISP_E_BADPARAMCOUNT, invoke(1, IID_NULL, DISPATCH_METHOD, nullptr, nullptr));
    DISPPARAMS none{};
    const DISPID step = IdOf(shapes_.get(), L"Step");
    EXPECT_EQ(DISP_E_UNKNOWNINTERFACE, invoke(step, IID_IDispatch, DISPATCH_PROPERTYGET, &none, nullptr));
    for (const DISPID id : {-1, 0, static_cast<int>(step), 24, 0x10000, 0x7FFFFFFF}) {
        EXPECT_EQ(DISP_E_MEMBERNOTFOUND, invoke(id, IID_NULL, 0, &none, nullptr)) << id;
    }
}

TEST_F(DispatchArguments, ReferencesToNothingAndTypesThatDoNotExistAreRefused) {
    VARIANT inner = Arg(1L), outer = Arg(&inner), bare{}, unknown{};
    bare.vt = VT_VARIANT;
    unknown.vt = 0x0FFF;
    VARIANT bad[] = {Arg(&outer),
                     bare,
                     unknown,
                     Ref(VT_I4, nullptr),
                     Ref(VT_VARIANT, nullptr),
                     Ref(VT_DISPATCH, nullptr),
                     Ref(VT_ARRAY | VT_BSTR, nullptr)};
    for (VARIANT& argument : bad) {
        const HRESULT expected = argument.vt & VT_BYREF ? DISP_E_TYPEMISMATCH : DISP_E_BADVARTYPE;
        for (const wchar_t* member :
             {L"EchoLong", L"EchoVariant", L"EchoFont", L"BumpString", L"BumpVariant", L"SwapObject"}) {
            SCOPED_TRACE(testing::Message() << member << " " << argument.vt);
            EXPECT_EQ(expected, Call(shapes_.get(), member, {argument}).result);
            EXPECT_TRUE(FAILED(Call(shapes_.get(), member, {Arg(&argument)}).result));
        }
    }
    for (const VARIANT& argument : {bad[0], bad[6]}) {
        EXPECT_EQ(DISP_E_TYPEMISMATCH, Call(shapes_.get(), L"FillStrings", {argument, Arg(1L)}).result);
    }
}

}  // namespace
}  // namespace velk::test
