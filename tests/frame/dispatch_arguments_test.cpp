#include "frame/shapes_test.h"
#include "support/value_object.h"

namespace velk::test {
namespace {

using DispatchArguments = ShapesTest;

constexpr WORD kCall = DISPATCH_METHOD | DISPATCH_PROPERTYGET;

// Each argument of Optional left out, passed as missing or given, in every combination; the last ones also by name.
TEST_F(DispatchArguments, OmittedOnesTakeTheirDefaultsAndNamedOnesGoWhereTheirNamesSay) {
    enum { kLeftOut, kMissing, kGiven, kStates };
    const Variant text = Text(L"t");
    Variant last = Text(L"16");
    LONG reference = 13;
    const VARIANT values[] = {Arg(11L), Arg(12L), Ref(VT_I4, &reference), text, Arg(15L), Arg(&last)};
    const wchar_t* const given[] = {L"11", L" 12", L" 13", L" t", L" 3:15", L" 8:16"};
    const wchar_t* const defaults[] = {L"", L" 7", L" 8", L" x", L" missing", L" missing"};
    for (int combination = 0; combination < 729; ++combination) {
        int states[6];
        std::wstring expected;
        for (int i = 0, rest = combination; i < 6; ++i, rest /= kStates) {
            states[i] = rest % kStates;
            expected += states[i] == kGiven ? given[i] : defaults[i];
        }
        for (int positional = 0; positional == 0 || (positional <= 6 && states[positional - 1] != kLeftOut);
             ++positional) {
            std::vector<VARIANT> arguments;
            std::vector<DISPID> named;
            const auto pass = [&](int i) { arguments.push_back(states[i] == kGiven ? values[i] : Missing()); };
            for (int i = 0; i < positional; ++i) pass(i);
            for (int i = 5; i >= positional; --i) {
                if (states[i] != kLeftOut) pass(i), named.push_back(i);
            }
            SCOPED_TRACE(testing::Message() << combination << ", " << positional);
            reference = 13;
            const Outcome outcome = InvokeNamed(shapes_.get(), L"Optional", kCall, arguments, named);
            const bool valid = states[0] == kGiven;
            EXPECT_EQ(valid ? S_OK : DISP_E_PARAMNOTOPTIONAL, outcome.result);
            EXPECT_EQ(valid ? expected : L"<no string>", TextOf(outcome.value));
            EXPECT_EQ(valid        ? -1
                      : positional ? static_cast<int>(arguments.size()) - 1
                                   : 0,
                      static_cast<int>(outcome.badArgument));
            EXPECT_EQ(valid && states[2] == kGiven ? 14 : 13, reference);
        }
    }
}

TEST_F(DispatchArguments, MisplacedOnesAreNamedByTheirPlaceInTheClientsArray) {
    constexpr DISPID kFirst = 0, kNumber = 1;
    const Variant text = Text(L"t");
    struct Case {
        std::vector<VARIANT> arguments;
        std::vector<DISPID> named;
        HRESULT result;
        UINT bad;
    };
    const Case cases[] = {{std::vector<VARIANT>(7, Arg(1L)), {}, DISP_E_BADPARAMCOUNT, static_cast<UINT>(-1)},
                          {{Arg(1L), Arg(2L)}, {kFirst}, DISP_E_PARAMNOTFOUND, 0},
                          {{Arg(1L), Arg(2L), Arg(3L)}, {kNumber, kNumber}, DISP_E_PARAMNOTFOUND, 1},
                          {{Arg(1L), Arg(2L), Arg(3L)}, {kNumber, 6}, DISP_E_PARAMNOTFOUND, 0},
                          {{Arg(1L), Arg(2L)}, {-7}, DISP_E_PARAMNOTFOUND, 0},
                          {{Arg(1L), Arg(2L)}, {DISPID_PROPERTYPUT}, DISP_E_PARAMNOTFOUND, 0},
                          {{Arg(1L), text}, {kNumber}, DISP_E_TYPEMISMATCH, 0}};
    for (const Case& c : cases) {
        const Outcome outcome = InvokeNamed(shapes_.get(), L"Optional", kCall, c.arguments, c.named);
        EXPECT_EQ(c.result, outcome.result) << &c - cases;
        EXPECT_EQ(c.bad, outcome.badArgument) << &c - cases;
    }
}

TEST_F(DispatchArguments, NamesOfMembersAndParameters) {
    struct Case {
        std::vector<const wchar_t*> names;
        HRESULT result;
        std::vector<DISPID> ids;
    };
    const Case cases[] = {{{L"ECHODOUBLE", L"value", L"VALUE"}, S_OK, {2, 0, 0}},
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
    const std::pair<const wchar_t*, std::vector<VARIANT>> members[] = {
        {L"EchoLong", {Arg(1L)}}, {L"Step", {}}, {L"Item", {Arg(1L)}}};
    for (auto [member, arguments] : members) {
        for (const WORD flags :
             {DISPATCH_METHOD, DISPATCH_PROPERTYGET, DISPATCH_PROPERTYPUT, DISPATCH_PROPERTYPUTREF}) {
            const bool put = flags >= DISPATCH_PROPERTYPUT;
            if (flags == DISPATCH_PROPERTYPUT && *member != 'E') arguments.push_back(Arg(object.get()));
            const Outcome ours =
                InvokeNamed(shapes_.get(), member, flags, arguments, std::vector<DISPID>(put, DISPID_PROPERTYPUT));
            EXPECT_EQ(InvokeByPlatform(shapes_.get(), member, flags, arguments).result, ours.result)
                << member << " " << flags;
        }
    }
    EXPECT_EQ(object.get(), Get(shapes_.get(), L"Item", {Arg(1L)}).value.pdispVal);
    EXPECT_EQ(DISP_E_PARAMNOTFOUND, InvokeNamed(shapes_.get(), L"Step", DISPATCH_PROPERTYPUT, {Arg(9L)}, {}).result);
    EXPECT_EQ(DISP_E_BADPARAMCOUNT, Let(shapes_.get(), L"Step", {Arg(9L), Arg(9L)}).result);
    EXPECT_EQ(DISP_E_BADPARAMCOUNT, Get(shapes_.get(), L"Step", {Arg(9L)}).result);
    const std::vector<DISPID> named = {DISPID_PROPERTYPUT, 0};
    EXPECT_EQ(S_OK, InvokeNamed(shapes_.get(), L"Item", DISPATCH_PROPERTYPUT, {Arg(3L), Arg(0L)}, named).result);
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
    EXPECT_EQ(DISP_E_UNKNOWNINTERFACE, invoke(20, IID_IDispatch, DISPATCH_PROPERTYGET, &none, nullptr));
    for (const DISPID id : {-1, 0, 20, 24, 0x10000, 0x7FFFFFFF}) {
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
             {L"EchoLong", L"EchoVariant", L"EchoFont", L"BumpString", L"BumpVariant", L"BumpObject"}) {
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
