#include "frame/shapes_test.h"
#include "support/value_object.h"

namespace velk::test {
namespace {

Variant Copy(const VARIANT& value) {
    Variant copy;
    EXPECT_EQ(S_OK, VariantCopy(&copy, const_cast<VARIANT*>(&value)));
    return copy;
}

Variant Holding(IUnknown* object, VARTYPE type = VT_DISPATCH) {
    VARIANT held{};
    held.vt = type;
    held.punkVal = object;
    return Copy(held);
}

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
    ComPtr<IDispatch> objects[] = {nullptr, MakeFont().As<IDispatch>()};
    for (const auto& [value, answer] : {std::pair(Arg(5L), S_OK),
                                        {text, S_OK},
                                        {Arg(1e10), S_OK},
                                        {Arg(5L), DISP_E_EXCEPTION},
                                        {Arg(5L), DISP_E_MEMBERNOTFOUND}}) {
        const auto object = ValueObject::Make(value);
        object->answer = answer;
        values.push_back(Holding(object.get()));
        values.push_back(Holding(object.get(), VT_UNKNOWN));
    }
    for (const auto& object : objects) values.push_back(Holding(object.get()));
    return values;
}

ULONG CountOf(const VARIANT& value) {
    if ((value.vt != VT_DISPATCH && value.vt != VT_UNKNOWN) || !value.punkVal) return 0;
    value.punkVal->AddRef();
    return value.punkVal->Release();
}

std::wstring Told(const Outcome& outcome, const VARIANT& held) {
    return Describe(outcome.value) + L", error " + std::to_wstring(outcome.result & 0xFFFF) + L" of argument " +
           std::to_wstring(static_cast<int>(outcome.badArgument)) + L", the client holds " + Describe(held);
}

struct Member {
    const wchar_t *takes, *changes;  // the same type by value and by reference
};
constexpr Member kVariant{L"EchoVariant", L"BumpVariant"}, kObject{L"EchoObject", L"BumpObject"};
constexpr Member kFont{L"EchoFont", L"BumpFont"};
constexpr Member kOthers[] = {{L"EchoShort", L"BumpShort"},     {L"EchoLong", L"BumpLong"},
                              {L"EchoLong", L"BumpKind"},       {L"EchoDouble", L"BumpDouble"},
                              {L"EchoBoolean", L"BumpBoolean"}, {L"EchoString", L"BumpString"}};

// How a client passes a value: a literal, a script's variable, a place of the value's own type, a variable that refers
// to such a place.
enum Way { kLiteral, kVariable, kPlace, kVariableOfPlace };

class DispatchValues : public ShapesTest {
  protected:
    Outcome ByPlatform(const wchar_t* member, const VARIANT& argument) {
        return InvokeByPlatform(shapes_.get(), member, DISPATCH_METHOD | DISPATCH_PROPERTYGET, {argument});
    }

    // What the platform's own generic call makes of the value on its way to the member.
    Outcome Arriving(const Member& member, VARIANT value) {
        if (&member == &kFont && value.vt == VT_UNKNOWN) value.vt = VT_DISPATCH;  // Wine loses a reference to the other
        Outcome arrived = ByPlatform(member.takes, value);
        if (arrived.result == E_NOINTERFACE) arrived.result = DISP_E_TYPEMISMATCH;
        if (FAILED(arrived.result)) arrived.badArgument = 0;
        const bool isWord = value.vt == VT_BOOL && arrived.value.vt == VT_BSTR;  // deliberately not the platform's "-1"
        if (isWord) arrived.value = Text(value.boolVal ? L"True" : L"False");
        return arrived;
    }

    // What the member itself makes of what arrived.
    Variant Written(const Member& member, const Outcome& arrived) {
        Variant written = Copy(arrived.value), was;
        shapes_->put_Step(1);
        if (&member == &kVariant) {
            shapes_->BumpVariant(&written, &was);
        } else if (SUCCEEDED(arrived.result)) {
            ByPlatform(member.changes, Ref(written.vt, &written.llVal));
        }
        return written;
    }

    void Expect(const wchar_t* member, Way way, const Variant& value, Outcome expected, const Variant& left) {
        const ULONG count = CountOf(value);
        {
            Variant held = Copy(value), refers;
            const VARIANT place = Ref(held.vt, held.vt == VT_DECIMAL ? static_cast<void*>(&held) : &held.llVal);
            static_cast<VARIANT&>(refers) = place;
            const VARIANT given[] = {held, Arg(&held), place, Arg(&refers)};
            const Outcome ours = Call(shapes_.get(), member, {given[way]});
            if (FAILED(expected.result)) expected.value = Variant();
            EXPECT_EQ(Told(expected, left), Told(ours, held))
                << member << L"(" << Describe(value) << L") in way " << way;
        }
        EXPECT_EQ(count, CountOf(value)) << member << L"(" << Describe(value) << L") in way " << way;
    }

    // What the member writes goes into a variable as it is and into a place converted; what it leaves alone keeps its
    // type and value, but for a variable that was never set.
    void Check(const Member& member, const Variant& value) {
        const Outcome arrived = Arriving(member, value);
        Variant written = Written(member, arrived);
        const bool succeeded = SUCCEEDED(arrived.result),
                   writes = succeeded && Describe(written) != Describe(arrived.value);
        const bool held =
            value.vt != VT_UNKNOWN && value.vt != VT_DECIMAL && (value.vt != VT_DISPATCH || &member == &kObject);
        for (const Way way : {kLiteral, kVariable, kPlace, kVariableOfPlace}) {
            if (way >= kPlace && value.vt <= VT_NULL) continue;  // there is no place of these types
            const auto expect = [&](const wchar_t* name, HRESULT result, const Variant& left) {
                Expect(name, way, value, {result, Copy(arrived.value), {}, {}, {}, arrived.badArgument}, left);
            };
            expect(member.takes, arrived.result, value);
            shapes_->put_Step(0);
            expect(member.changes, arrived.result,
                   succeeded && way == kVariable && value.vt == VT_EMPTY ? arrived.value : value);
            shapes_->put_Step(1);
            Variant left = Copy(way == kVariable && writes ? written : value);
            HRESULT result = arrived.result;
            if (way >= kPlace && writes && held && &member != &kVariant) {
                result = VariantChangeTypeEx(&left, &written, LOCALE_USER_DEFAULT, VARIANT_ALPHABOOL, value.vt);
            }
            expect(member.changes, result, left);
        }
    }
};

TEST_F(DispatchValues, ArriveAsThroughThePlatformAndComeBackInTheFormThatTheClientHolds) {
    for (const Variant& value : EveryKindOfValue()) {
        for (const Member* member : {&kVariant, &kObject, &kFont}) Check(*member, value);
        for (const Member& member : kOthers) Check(member, value);
    }
}

TEST_F(DispatchValues, PropertiesTakeWhatThePlatformWouldLetThemTake) {
    const auto put = [this](bool byPlatform, WORD flags, const VARIANT& value, std::vector<VARIANT> index) {
        const wchar_t* const name = index.empty() ? L"Step" : L"Item";
        shapes_->put_Step(77);
        shapes_->put_Item(1, Arg(77L));
        std::vector<VARIANT> arguments = index;
        arguments.push_back(value);
        Outcome outcome = byPlatform ? InvokeByPlatform(shapes_.get(), name, flags, arguments)
                                     : InvokeNamed(shapes_.get(), name, flags, arguments, {DISPID_PROPERTYPUT});
        outcome.badArgument = 0;
        const Outcome kept = InvokeNamed(shapes_.get(), name, DISPATCH_PROPERTYGET, index, {});
        return Told(outcome, kept.value);
    };
    for (const Variant& value : EveryKindOfValue()) {
        for (const WORD flags : {DISPATCH_PROPERTYPUT, DISPATCH_PROPERTYPUTREF}) {
            for (const auto& index : {std::vector<VARIANT>(), {Arg(1L)}}) {
                Variant held = Copy(value);
                const std::wstring expected = put(true, flags, value, index);
                EXPECT_EQ(expected, put(false, flags, value, index)) << Describe(value);
                EXPECT_EQ(expected, put(false, flags, Arg(&held), index)) << Describe(value);
            }
        }
    }
}

TEST_F(DispatchValues, AreConvertedByTheClientsLocaleAndMayReturnToWhereTheyStood) {
    Variant variable = Copy(Arg(2.5));
    VARIANT argument = Arg(&variable);
    DISPPARAMS parameters{&argument, nullptr, 1, 0};
    constexpr LCID kGerman = MAKELANGID(LANG_GERMAN, SUBLANG_GERMAN);
    EXPECT_EQ(S_OK, shapes_->Invoke(3, IID_NULL, kGerman, DISPATCH_METHOD, &parameters, &variable, nullptr, nullptr));
    EXPECT_EQ(L"8:2,5", Describe(variable));
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
        EXPECT_EQ(L"5 5 2 new d 8:new e 3:6 5 new h", TextOf(call().value));
        EXPECT_EQ(L"3:3", Describe(c));

        // An object that comes in that way behind the arguments that are settled is not read any more.
        if (changing != 6) continue;
        late->onRead = [] { ADD_FAILURE() << "was read"; };
        object->onRead = [&] { c = Holding(late.get()); };
        const Outcome refused = call();
        EXPECT_EQ(DISP_E_TYPEMISMATCH, refused.result);
        EXPECT_EQ(5u, refused.badArgument);
    }
}

}  // namespace
}  // namespace velk::test
