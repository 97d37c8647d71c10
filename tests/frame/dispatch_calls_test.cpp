// Which member a late-bound call reaches, and with which arguments.
#include "frame/test_shapes.h"

namespace velk::test {
namespace {

using DispatchCalls = ShapesTest;

// Each argument left out, passed as missing, given, or Null; the last ones also by name, the other way round. Numbers
// of four and of eight bytes take turns.
TEST_F(DispatchCalls, OmittedArgumentsTakeTheirDefaultsAndNamedOnesGoWhereTheirNamesSay) {
    constexpr int kCount = 8;
    enum { kLeftOut, kMissing, kGiven, kNull };
    const Variant text = Text(L"t");
    Variant f = Text(L"16");
    LONG c = 13;
    Bstr h(L"z");
    const VARIANT values[kCount] = {Arg(-1L), Arg(-2.25), Ref(VT_I4, &c), text,
                                    Arg(1e9), Arg(&f),    Arg(8.5),       Arg(h.get())};
    const wchar_t* const given[] = {L"-1", L" -2.25", L" 13", L" t", L" 5:1000000000.0", LR"( 8:"16")", L" 8.5", L" z"};
    const wchar_t* const defaults[] = {L"", L" 0", L" 8", L" x", L" 10:Missing", L" 10:Missing", L" 0", L" "};
    const VARIANT null = Holding(VT_NULL);
    for (int combination = 0; combination < 1 << 2 * kCount; combination += 7) {
        const auto state = [=](int i) { return combination >> 2 * i & 3; };
        for (int positional = 0; positional == 0 || (positional <= kCount && state(positional - 1) != kLeftOut);
             ++positional) {
            std::vector<VARIANT> arguments;
            std::vector<DISPID> named;
            std::size_t places[kCount]{};
            const auto pass = [&](int i) {
                arguments.push_back(state(i) == kGiven ? values[i] : state(i) == kNull ? null : Missing());
                places[i] = arguments.size();
            };
            for (int i = 0; i < positional; ++i) pass(i);
            for (int i = kCount - 1; i >= positional; --i) {
                if (state(i) != kLeftOut) pass(i), named.push_back(i);
            }
            // The first argument has no default, and only variants can be Null.
            std::wstring expected;
            HRESULT result = S_OK;
            int bad = -1;
            for (int i = 0; i < kCount && result == S_OK; ++i) {
                const bool takesNull = i == 4 || i == 5;
                if (i == 0 && state(i) < kGiven) result = DISP_E_PARAMNOTOPTIONAL;
                if (state(i) == kNull && !takesNull) result = DISP_E_TYPEMISMATCH;
                if (FAILED(result)) bad = state(i) == kLeftOut ? 0 : static_cast<int>(arguments.size() - places[i]);
                expected += state(i) == kGiven ? given[i] : state(i) == kNull ? L" 1:Null" : defaults[i];
            }
            SCOPED_TRACE(testing::Message() << combination << ", " << positional);
            c = 13;
            const Outcome outcome = InvokeNamed(shapes_.get(), L"Mixed", DISPATCH_METHOD, arguments, named);
            EXPECT_EQ(result, outcome.result);
            EXPECT_EQ(result ? L"<no string>" : expected, TextOf(outcome.value));
            EXPECT_EQ(bad, static_cast<int>(outcome.badArgument));
            EXPECT_EQ(result == S_OK && state(2) == kGiven ? 14 : 13, c);
        }
    }
}

TEST_F(DispatchCalls, NamesOfMembersAndParameters) {
    const auto look = [&](HRESULT result, std::vector<const wchar_t*> names, std::vector<DISPID> wanted) {
        std::vector<DISPID> ids(names.size(), 12345);
        EXPECT_EQ(result, shapes_->GetIDsOfNames(IID_NULL, const_cast<LPOLESTR*>(names.data()),
                                                 static_cast<UINT>(names.size()), 0, ids.data()));
        EXPECT_EQ(wanted, ids);
    };
    look(S_OK, {L"ECHODOUBLE", L"value", L"VALUE"}, {2, 0, 0});
    look(S_OK, {L"Mixed", L"h", L"A"}, {18, 7, 0});
    look(DISP_E_UNKNOWNNAME, {L"Mixed", L"nothing", L"b", L"result"}, {18, -1, 1, -1});
    look(DISP_E_UNKNOWNNAME, {L"Item", L"index", L""}, {22, 0, -1});
    look(DISP_E_UNKNOWNNAME, {L"Nothing", L"value"}, {-1, -1});
    look(E_INVALIDARG, {L"EchoDouble", nullptr}, {-1, -1});
    look(E_INVALIDARG, {}, {});
    auto* name = const_cast<LPOLESTR>(L"EchoLong");
    DISPID id = 0;
    EXPECT_EQ(DISP_E_UNKNOWNINTERFACE, shapes_->GetIDsOfNames(IID_IUnknown, &name, 1, 0, &id));
    EXPECT_EQ(E_INVALIDARG, shapes_->GetIDsOfNames(IID_NULL, nullptr, 1, 0, &id));
    EXPECT_EQ(E_INVALIDARG, shapes_->GetIDsOfNames(IID_NULL, &name, 1, 0, nullptr));
}

// By each of the DISPATCH_ flags, and by two that go together.
TEST_F(DispatchCalls, OnlyTheWaysThatAMemberHasCanBeCalled) {
    const auto object = ValueObject::Make(Arg(1L));
    for (const auto& [member, count] : {std::pair(L"EchoLong", 1u), {L"Step", 0u}, {L"Item", 1u}}) {
        const auto call = [&, name = member, count = count](auto invoke, WORD flags) {
            shapes_->put_Step(7);
            shapes_->put_Item(1, Arg(7L));
            const std::vector<VARIANT> arguments(count + (flags >= DISPATCH_PROPERTYPUT), Arg(object.get()));
            const Outcome outcome = invoke(shapes_.get(), name, flags, arguments);
            return std::tuple(outcome.result, Describe(outcome.value), Describe(Get(shapes_.get(), L"Step").value),
                              Describe(Get(shapes_.get(), L"Item", {Arg(1L)}).value));
        };
        for (const WORD flags : {1, 2, 3, 4, 8, 12}) {
            EXPECT_EQ(call(InvokeByPlatform, flags), call(Invoke, flags)) << member << " " << flags;
        }
    }
}

// A call that no proper client makes gets an answer, too.
TEST_F(DispatchCalls, ParameterBlocksAreChecked) {
    VARIANT fives[9];
    std::fill_n(fives, 9, Arg(5L));
    DISPID first[] = {0, 0}, same[] = {1, 1}, beyond[] = {8, 1};
    const auto expect = [&](HRESULT result, int bad, DISPID id, DISPPARAMS parameters, WORD flags = DISPATCH_METHOD) {
        for (const bool answered : {false, true}) {
            Variant answer = Copy(Arg(77L));
            UINT at = ~0u;
            EXPECT_EQ(result, shapes_->Invoke(id, IID_NULL, 0, flags, &parameters, answered ? &answer : nullptr,
                                              nullptr, answered ? &at : nullptr));
            EXPECT_EQ(answered ? bad : -1, static_cast<int>(at));
            EXPECT_EQ(!answered ? L"3:77" : FAILED(result) ? L"0:Empty" : L"3:5", Describe(answer));
        }
    };
    constexpr DISPID kEchoLong = 1, kMixed = 18, kStep = 20;
    expect(S_OK, -1, kEchoLong, {fives, nullptr, 1, 0});
    expect(S_OK, -1, kEchoLong, {fives, first, 1, 1});
    expect(DISP_E_PARAMNOTOPTIONAL, 0, kEchoLong, {nullptr, nullptr, 0, 0});
    expect(DISP_E_BADPARAMCOUNT, -1, kEchoLong, {nullptr, nullptr, 1, 0});
    expect(DISP_E_BADPARAMCOUNT, -1, kEchoLong, {fives, nullptr, 1, 1});
    expect(DISP_E_BADPARAMCOUNT, -1, kEchoLong, {fives, first, 1, 2});
    expect(DISP_E_BADPARAMCOUNT, -1, kEchoLong, {fives, nullptr, 0xFFFFFFFF, 0});
    expect(DISP_E_BADPARAMCOUNT, -1, kMixed, {fives, nullptr, 9, 0});
    for (DISPID no : {0, -7, DISPID_PROPERTYPUT}) expect(DISP_E_PARAMNOTFOUND, 0, kMixed, {fives, &no, 2, 1});
    expect(DISP_E_PARAMNOTFOUND, 1, kMixed, {fives, same, 3, 2});
    expect(DISP_E_PARAMNOTFOUND, 0, kMixed, {fives, beyond, 3, 2});
    expect(DISP_E_PARAMNOTFOUND, -1, kStep, {fives, nullptr, 1, 0}, DISPATCH_PROPERTYPUT);
    for (const DISPID id : {-1, 0, 20, 24, 0x10000, 0x7FFFFFFF}) expect(DISP_E_MEMBERNOTFOUND, -1, id, {}, 0);
    DISPPARAMS none{};
    EXPECT_EQ(DISP_E_BADPARAMCOUNT, shapes_->Invoke(kEchoLong, IID_NULL, 0, DISPATCH_METHOD, nullptr, 0, 0, 0));
    EXPECT_EQ(DISP_E_UNKNOWNINTERFACE,
              shapes_->Invoke(kStep, IID_IDispatch, 0, DISPATCH_PROPERTYGET, &none, nullptr, nullptr, nullptr));
    const std::vector<DISPID> named = {DISPID_PROPERTYPUT, 0};
    EXPECT_EQ(S_OK, InvokeNamed(shapes_.get(), L"Item", DISPATCH_PROPERTYPUT, {Arg(3L), Arg(0L)}, named).result);
    EXPECT_EQ(L"3:3", Describe(Get(shapes_.get(), L"Item", {Arg(0L)}).value));
}

TEST_F(DispatchCalls, ReferencesToNothingAndTypesThatDoNotExistAreRefused) {
    VARIANT inner = Arg(1L), outer = Arg(&inner);
    VARIANT refused[] = {
        Holding(VT_VARIANT), Ref(VT_EMPTY, &inner),    Holding(0x0FFF),           Arg(&outer),
        Ref(VT_I4, nullptr), Ref(VT_VARIANT, nullptr), Ref(VT_DISPATCH, nullptr), Ref(VT_ARRAY | VT_BSTR, nullptr)};
    for (VARIANT& argument : refused) {
        for (const wchar_t* member :
             {L"EchoLong", L"EchoVariant", L"EchoFont", L"SwapString", L"SwapVariant", L"SwapObject", L"SwapStrings"}) {
            SCOPED_TRACE(testing::Message() << member << " " << argument.vt);
            const bool unknown = argument.vt == 0x0FFF || argument.vt == VT_BYREF;  // which is no array, either
            const bool bad = argument.vt == VT_VARIANT || (unknown && std::wstring_view(member) != L"SwapStrings");
            EXPECT_EQ(bad ? DISP_E_BADVARTYPE : DISP_E_TYPEMISMATCH, Call(shapes_.get(), member, {argument}).result);
            EXPECT_TRUE(FAILED(Call(shapes_.get(), member, {Arg(&argument)}).result));
        }
    }
}

}  // namespace
}  // namespace velk::test
