#include "frame/shapes_test.h"
#include "support/value_object.h"

namespace velk::test {
namespace {

using DispatchArguments = ShapesTest;

// Each argument left out, passed as missing or given, in every combination; the last ones also by name, the other way
// round. Numbers of four and of eight bytes take turns.
TEST_F(DispatchArguments, OmittedOnesTakeTheirDefaultsAndNamedOnesGoWhereTheirNamesSay) {
    constexpr int kCount = 8;
    enum { kLeftOut, kMissing, kGiven, kStates };
    const Variant text = Text(L"t");
    Variant f = Text(L"16");
    LONG c = 13;
    Bstr h(L"z");
    const VARIANT values[kCount] = {Arg(-1L), Arg(-2.25), Ref(VT_I4, &c), text,
                                    Arg(1e9), Arg(&f),    Arg(8.5),       Arg(h.get())};
    const wchar_t* const given[] = {L"-1", L" -2.25", L" 13", L" t", L" 5:1000000000", L" 8:16", L" 8.5", L" z"};
    const wchar_t* const defaults[] = {L"", L" 0", L" 8", L" x", L" missing", L" missing", L" 0", L" "};
    for (int combination = 0; combination < 6561; ++combination) {
        int states[kCount];
        std::wstring expected;
        for (int i = 0, rest = combination; i < kCount; ++i, rest /= kStates) {
            states[i] = rest % kStates;
            expected += states[i] == kGiven ? given[i] : defaults[i];
        }
        const bool valid = states[0] == kGiven;
        for (int positional = 0; positional == 0 || (positional <= kCount && states[positional - 1] != kLeftOut);
             ++positional) {
            std::vector<VARIANT> arguments;
            std::vector<DISPID> named;
            const auto pass = [&](int i) { arguments.push_back(states[i] == kGiven ? values[i] : Missing()); };
            for (int i = 0; i < positional; ++i) pass(i);
            for (int i = kCount - 1; i >= positional; --i) {
                if (states[i] != kLeftOut) pass(i), named.push_back(i);
            }
            SCOPED_TRACE(testing::Message() << combination << ", " << positional);
            c = 13;
            const Outcome outcome = InvokeNamed(shapes_.get(), L"Mixed", DISPATCH_METHOD, arguments, named);
            const auto bad = static_cast<UINT>(valid ? -1 : positional ? static_cast<int>(arguments.size()) - 1 : 0);
            EXPECT_EQ(valid ? S_OK : DISP_E_PARAMNOTOPTIONAL, outcome.result);
            EXPECT_EQ(valid ? expected : L"<no string>", TextOf(outcome.value));
            EXPECT_EQ(bad, outcome.badArgument);
            EXPECT_EQ(valid && states[2] == kGiven ? 14 : 13, c);
        }
    }
}

TEST_F(DispatchArguments, BadOnesAreNamedByTheirPlaceInTheClientsArray) {
    const Variant text = Text(L"t");
    const VARIANT one = Arg(1L);
    const auto expect = [&](HRESULT result, int bad, std::vector<VARIANT> arguments, std::vector<DISPID> named) {
        const Outcome outcome = InvokeNamed(shapes_.get(), L"Mixed", DISPATCH_METHOD, arguments, named);
        EXPECT_EQ(result, outcome.result) << arguments.size() << testing::PrintToString(named);
        EXPECT_EQ(bad, static_cast<int>(outcome.badArgument)) << arguments.size() << testing::PrintToString(named);
    };
    expect(DISP_E_BADPARAMCOUNT, -1, std::vector<VARIANT>(9, one), {});
    for (const DISPID no : {0, -7, DISPID_PROPERTYPUT}) expect(DISP_E_PARAMNOTFOUND, 0, {one, one}, {no});
    expect(DISP_E_PARAMNOTFOUND, 1, {one, one, one}, {1, 1});
    expect(DISP_E_PARAMNOTFOUND, 0, {one, one, one}, {1, 8});
    expect(DISP_E_TYPEMISMATCH, 0, {one, text}, {1});
    expect(DISP_E_TYPEMISMATCH, 2, {text, one, one}, {});
    expect(DISP_E_TYPEMISMATCH, 0, {one, one, one, one, one, one, text}, {});
}

TEST_F(DispatchArguments, NamesOfMembersAndParameters) {
    const auto look = [&](HRESULT result, std::vector<const wchar_t*> names, std::vector<DISPID> wanted) {
        std::vector<DISPID> ids(names.size(), 12345);
        EXPECT_EQ(result, shapes_->GetIDsOfNames(IID_NULL, const_cast<LPOLESTR*>(names.data()),
                                                 static_cast<UINT>(names.size()), 0, ids.data()));
        EXPECT_EQ(wanted, ids);
    };
    look(S_OK, {L"ECHODOUBLE", L"value", L"VALUE"}, {2, 0, 0});
    look(S_OK, {L"Mixed", L"h", L"A"}, {18, 7, 0});
    look(DISP_E_UNKNOWNNAME, {L"EchoDouble", L"result"}, {2, -1});
    look(DISP_E_UNKNOWNNAME, {L"Mixed", L"nothing", L"b"}, {18, -1, 1});
    look(DISP_E_UNKNOWNNAME, {L"Item", L"index", L""}, {22, 0, -1});
    look(DISP_E_UNKNOWNNAME, {L"Nothing", L"value"}, {-1, -1});
    look(DISP_E_UNKNOWNNAME, {L""}, {-1});
    look(E_INVALIDARG, {L"EchoDouble", nullptr}, {-1, -1});
    look(E_INVALIDARG, {nullptr}, {-1});
    look(E_INVALIDARG, {}, {});
    auto* name = const_cast<LPOLESTR>(L"EchoLong");
    DISPID id = 0;
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
    const auto echo = [&](DISPPARAMS parameters) {
        VARIANT result = Arg(77L);
        const HRESULT answer = invoke(1, IID_NULL, DISPATCH_METHOD, &parameters, &result);
        EXPECT_EQ(FAILED(answer) ? L"0:" : L"3:5", Describe(result));
        EXPECT_EQ(answer, invoke(1, IID_NULL, DISPATCH_METHOD, &parameters, nullptr));
        return answer;
    };
    EXPECT_EQ(S_OK, echo({&one, nullptr, 1, 0}));
    EXPECT_EQ(S_OK, echo({&one, &first, 1, 1}));
    EXPECT_EQ(DISP_E_PARAMNOTOPTIONAL, echo({nullptr, nullptr, 0, 0}));
    EXPECT_EQ(DISP_E_BADPARAMCOUNT, echo({nullptr, nullptr, 1, 0}));
    EXPECT_EQ(DISP_E_BADPARAMCOUNT, echo({&one, nullptr, 1, 1}));
    EXPECT_EQ(DISP_E_BADPARAMCOUNT, echo({&one, &first, 1, 2}));
    EXPECT_EQ(DISP_E_BADPARAMCOUNT, echo({&one, nullptr, 0xFFFFFFFF, 0}));
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
        const bool refers = argument.vt & VT_BYREF;
        for (const wchar_t* member :
             {L"EchoLong", L"EchoVariant", L"EchoFont", L"BumpString", L"BumpVariant", L"BumpObject"}) {
            SCOPED_TRACE(testing::Message() << member << " " << argument.vt);
            EXPECT_EQ(refers ? DISP_E_TYPEMISMATCH : DISP_E_BADVARTYPE, Call(shapes_.get(), member, {argument}).result);
            EXPECT_TRUE(FAILED(Call(shapes_.get(), member, {Arg(&argument)}).result));
        }
        EXPECT_TRUE(FAILED(Call(shapes_.get(), L"FillStrings", {argument, Arg(1L)}).result));
    }
}

}  // namespace
}  // namespace velk::test
