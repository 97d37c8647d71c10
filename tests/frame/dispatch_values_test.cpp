// What arguments are on their way to a member and back, compared with the platform's own generic call where that has an
// answer of its own.
#include "frame/test_shapes.h"

namespace velk::test {
namespace {

ComPtr<IFontDisp> MakeFont() {
    FONTDESC description{sizeof(FONTDESC), const_cast<LPOLESTR>(L"Tahoma"), {}, FW_NORMAL, 0, FALSE, FALSE, FALSE};
    description.cySize.int64 = 80000;
    ComPtr<IFontDisp> font;
    EXPECT_EQ(S_OK, OleCreateFontIndirect(&description, IID_IFontDisp, font.ReceiveVoid()));
    return font;
}

// Texts and numbers as every type that can hold them, and objects with and without a value.
std::vector<Variant> EveryKindOfValue() {
    std::vector<Variant> values(1);  // Empty
    for (const wchar_t* text : {L"0", L"5", L"-1", L" -41 ", L"2.5", L"3.5", L"127", L"255", L"32767", L"32768",
                                L"2147483646", L"-2147483648", L"1e10", L"-1e300", L"", L"text", L"True"}) {
        for (const int type : {VT_BSTR, VT_I1, VT_UI1, VT_I2, VT_UI2, VT_I4, VT_UI4, VT_INT, VT_UINT, VT_I8, VT_UI8,
                               VT_R4, VT_R8, VT_CY, VT_DATE, VT_BOOL, VT_DECIMAL, VT_ERROR, VT_NULL}) {
            Variant value = Text(text);
            const HRESULT made = VariantChangeTypeEx(&value, &value, LOCALE_INVARIANT, 0, static_cast<VARTYPE>(type));
            if (SUCCEEDED(made)) values.push_back(std::move(value));
        }
    }
    values.push_back(Text({L"a\0b", 3}));
    const Variant text = Text(L"text");
    for (const auto& [value, answer] : {std::pair(Arg(5L), S_OK),
                                        {text, S_OK},
                                        {Arg(1e10), S_OK},
                                        {Arg(5L), DISP_E_EXCEPTION},
                                        {Arg(5L), DISP_E_MEMBERNOTFOUND}}) {
        for (const VARTYPE type : {VT_DISPATCH, VT_UNKNOWN}) {
            auto object = ValueObject::Make(value);
            object->answer = answer;
            values.push_back(Holding(type, object.Detach()));
        }
    }
    values.push_back(Holding(VT_DISPATCH));
    values.push_back(Holding(VT_DISPATCH, MakeFont().Detach()));
    return values;
}

ULONG CountOf(const VARIANT& value) {
    if ((value.vt != VT_DISPATCH && value.vt != VT_UNKNOWN) || !value.punkVal) return 0;
    value.punkVal->AddRef();
    return value.punkVal->Release();
}

std::wstring Told(const Outcome& outcome, const std::wstring& held) {
    return Describe(outcome.value) + L", error " + std::to_wstring(outcome.result & 0xFFFF) + L" of argument " +
           std::to_wstring(static_cast<int>(outcome.badArgument)) + L", the client holds " + held;
}

// How a client passes a value: a literal, a script's variable, a place of the value's own type, a variable that refers
// to such a place.
enum Way { kLiteral, kVariable, kPlace, kVariableOfPlace };
constexpr Way kWays[] = {kLiteral, kVariable, kPlace, kVariableOfPlace};

bool Exists(Way way, const VARIANT& value) { return way < kPlace || value.vt > VT_NULL; }

struct Passed {
    explicit Passed(const VARIANT& value) : held(Copy(value)) {}

    Variant held, refers;
    VARIANT In(Way way) {
        const VARIANT place = Ref(held.vt, held.vt == VT_DECIMAL ? static_cast<void*>(&held) : &held.llVal);
        static_cast<VARIANT&>(refers) = place;
        const VARIANT given[] = {held, Arg(&held), place, Arg(&refers)};
        return given[way];
    }
};

// What members take by value, "EchoShort", and by reference, "SwapShort".
constexpr const wchar_t* kTypes[] = {L"Variant", L"Object", L"Font",    L"Short",
                                     L"Long",    L"Double", L"Boolean", L"String"};

class DispatchValues : public ShapesTest {
  protected:
    // What the platform's own generic call makes of the value on its way to the member.
    Outcome Arriving(const std::wstring& type, VARIANT value) {
        if (type == L"Font" && value.vt == VT_UNKNOWN) value.vt = VT_DISPATCH;  // Wine loses a reference to the other
        Outcome arrived = InvokeByPlatform(shapes_.get(), (L"Echo" + type).c_str(), DISPATCH_METHOD, {value});
        if (arrived.result == E_NOINTERFACE) arrived.result = DISP_E_TYPEMISMATCH;
        if (FAILED(arrived.result)) arrived.badArgument = 0;
        const bool isWord = value.vt == VT_BOOL && arrived.value.vt == VT_BSTR;  // deliberately not the platform's "-1"
        if (isWord) arrived.value = Text(value.boolVal ? L"True" : L"False");
        return arrived;
    }

    void Expect(const std::wstring& member, Way way, const Variant& value, const Outcome& expected,
                const std::wstring& left) {
        Passed passed(value);
        const Outcome ours = Call(shapes_.get(), member.c_str(), {passed.In(way)});
        EXPECT_EQ(Told(expected, left), Told(ours, Describe(passed.held)))
            << member << L"(" << Describe(value) << L") in way " << way;
    }

    // The member gives what it got the time before, at the second time the same again. What it writes goes into a
    // variable as it is and into a place converted; what stays the same keeps its type and value there, but for a
    // variable that was never set.
    void Check(const std::wstring& type, const Variant& value, Variant* kept) {
        const Outcome arrived = Arriving(type, value);
        const bool succeeded = SUCCEEDED(arrived.result);
        const bool converts = value.vt != VT_UNKNOWN && value.vt != VT_DECIMAL && type != L"Variant" &&
                              (value.vt != VT_DISPATCH || type == L"Object");
        for (const Way way : kWays) {
            if (!Exists(way, value)) continue;
            const auto expect = [&](const wchar_t* does, HRESULT result, const Variant& left) {
                Variant answer = FAILED(result) ? Variant() : Copy(arrived.value);
                const Outcome expected{result, std::move(answer), {}, {}, {}, arrived.badArgument};
                Expect(does + type, way, value, expected, Describe(left));
            };
            expect(L"Echo", arrived.result, value);
            for (int time = 0; time < 2; ++time) {
                const bool writes = succeeded && Describe(*kept) != Describe(arrived.value);
                const bool takesOver = writes || (succeeded && value.vt == VT_EMPTY);
                Variant left = Copy(way == kVariable && takesOver ? *kept : value);
                HRESULT result = arrived.result;
                if (way >= kPlace && writes && converts) {
                    result = VariantChangeTypeEx(&left, kept, LOCALE_USER_DEFAULT, VARIANT_ALPHABOOL, value.vt);
                }
                expect(L"Swap", result, left);
                if (succeeded) *kept = Copy(arrived.value);
            }
        }
    }
};

TEST_F(DispatchValues, ArriveAsThroughThePlatformAndComeBackInTheFormThatTheClientHolds) {
    for (const wchar_t* const type : kTypes) {
        const auto values = EveryKindOfValue();
        {
            Variant kept;
            for (const Variant& value : values) Check(type, value, &kept);
            shapes_ = CShapes::Make();
        }
        for (const Variant& value : values) EXPECT_GE(1u, CountOf(value)) << type << L" " << Describe(value);
    }
}

TEST_F(DispatchValues, AreConvertedByTheClientsLocaleAndMayReturnToWhereTheyStood) {
    Variant variable = Copy(Arg(2.5));
    VARIANT argument = Arg(&variable);
    DISPPARAMS parameters{&argument, nullptr, 1, 0};
    constexpr LCID kGerman = MAKELANGID(LANG_GERMAN, SUBLANG_GERMAN);
    EXPECT_EQ(S_OK, shapes_->Invoke(3, IID_NULL, kGerman, DISPATCH_METHOD, &parameters, &variable, nullptr, nullptr));
    EXPECT_EQ(LR"(8:"2,5")", Describe(variable));
}

// While one argument is converted, foreign code replaces what another argument points to. A pointer that was taken too
// early would then point to a freed string.
TEST_F(DispatchValues, ADefaultPropertyMayChangeTheCallersOtherVariables) {
    for (const UINT changing : {0u, 1u, 6u}) {
        const auto object = ValueObject::Make(Arg(5L)), late = ValueObject::Make(Arg(5L));
        Variant c, d = Text(L"an old text"), e = Text(L"an old value"), h = Text(L"another old text");
        object->onRead = [&] { c = Text(L"2"), d = Text(L"new d"), e = Text(L"new e"), h = Text(L"new h"); };
        std::vector<VARIANT> arguments = {Arg(5L), Arg(5L), Arg(&c), Arg(&d), Arg(&e), Arg(6L), Arg(5L), Arg(&h)};
        arguments[changing] = Arg(object.get());
        const auto call = [&] { return InvokeNamed(shapes_.get(), L"Mixed", DISPATCH_METHOD, arguments, {}); };
        EXPECT_EQ(LR"(5 5 2 new d 8:"new e" 3:6 5 new h)", TextOf(call().value));
        EXPECT_EQ(L"3:3", Describe(c));

        // An object that comes in that way behind the arguments that are settled is not read any more.
        if (changing != 6) continue;
        late->onRead = [] { ADD_FAILURE() << "was read"; };
        object->onRead = [&] { c = Holding(VT_DISPATCH, ComPtr(late).Detach()); };
        const Outcome refused = call();
        EXPECT_EQ(DISP_E_TYPEMISMATCH, refused.result);
        EXPECT_EQ(5u, refused.badArgument);
    }
}

// ---- Arrays ----

Variant ArrayOf(VARTYPE type, std::vector<SAFEARRAYBOUND> bounds, std::initializer_list<const wchar_t*> texts = {}) {
    SAFEARRAY* const array = SafeArrayCreate(type, static_cast<UINT>(bounds.size()), bounds.data());
    std::size_t i = 0;
    for (const wchar_t* text : texts) {
        VARIANT element = Text(text).Detach();
        if (type == VT_VARIANT)
            static_cast<VARIANT*>(array->pvData)[i++] = element;
        else
            static_cast<BSTR*>(array->pvData)[i++] = element.bstrVal;
    }
    return Holding(VT_ARRAY | type, array);
}

// The platform's own call takes arrays of texts only. Others come as those, and go back as those that a script can
// index.
TEST_F(DispatchValues, ArraysAreReadAndFilledInTheFormThatTheClientCanIndexUnlessPassedByValue) {
    struct {
        Variant held;
        const wchar_t* arrives;  // null for what is refused
    } cases[] = {{{}, L"8200:[]"},
                 {ArrayOf(VT_VARIANT, {{2, 0}}, {L"a", L"b"}), LR"(8200:["a", "b"])"},
                 {ArrayOf(VT_BSTR, {{2, 5}}, {L"a", L"b"}), LR"(8200:[5: "a", "b"])"},
                 {ArrayOf(VT_VARIANT, {{1, 2}}, {L"c"}), LR"(8200:[2: "c"])"},
                 {Holding(VT_ARRAY | VT_VARIANT), L"8200:[]"},
                 {ArrayOf(VT_VARIANT, {{1, 0}, {2, 3}}, {L"", L"d"}), LR"(8200:[3: "", "d"])"},
                 {Holding(VT_ARRAY | VT_BSTR), L"8200:[]"},
                 {ArrayOf(VT_BSTR, {{1, 0}, {2, 3}}, {L"", L"e"}), LR"(8200:[3: "", "e"])"},
                 {Text(L"text"), nullptr},
                 {Holding(VT_NULL), nullptr},
                 {ArrayOf(VT_I4, {{2, 0}}), nullptr},
                 {Holding(VT_ARRAY | VT_BSTR, ArrayOf(VT_I8, {{2, 0}}).Detach().parray), nullptr},  // which it is not
                 {ArrayOf(VT_VARIANT, {{2, 0}}, {L"a", L"an object"}), nullptr}};
    auto* const object = static_cast<VARIANT*>(std::end(cases)[-1].held.parray->pvData) + 1;
    VariantClear(object);
    *object = Arg(ValueObject::Make(Arg(1L)).Detach());
    std::wstring kept = L"8200:[]";
    for (const auto& [value, arrives] : cases) {
        for (const Way way : kWays) {
            if (!Exists(way, value)) continue;
            const std::wstring left = (value.vt == (VT_ARRAY | VT_BSTR) ? L"8200" : L"8204") + kept.substr(4);
            const Outcome expected =
                arrives ? Outcome{S_OK, Text(arrives)} : Outcome{DISP_E_TYPEMISMATCH, {}, {}, {}, {}, 0};
            Expect(L"SwapStrings", way, value, expected, way == kLiteral || !arrives ? Describe(value) : left);
            if (arrives) kept = arrives;
        }
    }
}

// The call of a member that does not ask whether it may replace an array fails and loses nothing.
TEST_F(DispatchValues, ArraysStayWhereTheyAreWhenInUse) {
    for (const USHORT feature : {0, FADF_FIXEDSIZE}) {
        Passed passed(ArrayOf(VT_VARIANT, {{1, 1}}, {L"a"}));
        SAFEARRAY* const array = passed.held.parray;
        array->cLocks = feature ? 0 : 1;
        array->fFeatures |= feature;
        for (const Way way : {kVariable, kPlace, kVariableOfPlace}) {
            EXPECT_EQ(DISP_E_ARRAYISLOCKED, Call(shapes_.get(), L"SwapStrings", {passed.In(way)}).result);
            EXPECT_EQ(LR"(8204:[1: "a"])", Describe(passed.held));
        }
        array->cLocks = 0;
    }
}

}  // namespace
}  // namespace velk::test
