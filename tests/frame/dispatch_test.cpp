// Late-bound calls of the library's own members: which one they reach, and what values are on their way to it and back,
// compared with the platform's own conversions and calls.
#include <gtest/gtest.h>

#include "facts/values.h"
#include "frame/dispatch/string_arrays.h"
#include "platform/safe_array.h"
#include "support/client.h"
#include "support/late_bound.h"
#include "support/scratch_folder.h"
#include "support/value_object.h"

namespace velk::test {
namespace {

// A value of its own, whatever the given one refers to.
Variant Copy(const VARIANT& value) {
    Variant copy;
    VariantCopyInd(&copy, const_cast<VARIANT*>(&value));
    return copy;
}

Variant Holding(VARTYPE type, void* content = nullptr) { return Owned(Bare(type, content)); }

// The number of a value's type and what it holds as facts have it; which object, too.
std::wstring Describe(const VARIANT& value) {
    const Variant plain = Copy(value);
    const bool isObject = plain.vt == VT_DISPATCH || plain.vt == VT_UNKNOWN;
    return std::to_wstring(plain.vt) + L":" + facts::Show(plain) +
           (isObject ? std::to_wstring(reinterpret_cast<ULONG_PTR>(plain.punkVal)) : L"");
}

// Texts and numbers as every type that can hold them, and objects with and without a value.
std::vector<Variant> EveryKindOfValue() {
    std::vector<Variant> values(1);  // Empty
    for (const wchar_t* text : {L"0", L"5", L"-1", L" -41 ", L"0.25", L"2.5", L"3.5", L"127", L"255", L"32767",
                                L"32768", L"2147483646", L"-2147483648", L"1e10", L"-1e300", L"", L"text", L"True"}) {
        for (VARTYPE type = VT_NULL; type <= VT_UINT; ++type) {
            Variant value = Text(text);
            const HRESULT made = VariantChangeTypeEx(&value, &value, LOCALE_INVARIANT, 0, type);
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
    return values;
}

// How a client passes a value: a literal, a script's variable, a place of the value's own type, a variable that refers
// to such a place.
enum Way { kLiteral, kVariable, kPlace, kVariableOfPlace };

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

template <class Trial>
void ForEachWay(const VARIANT& value, Trial trial) {
    for (const Way way : {kLiteral, kVariable, kPlace, kVariableOfPlace}) {
        if (way >= kPlace && value.vt <= VT_NULL) continue;  // which have no place of their own
        SCOPED_TRACE(testing::Message() << Describe(value) << " in way " << way);
        trial(way, Passed(value));
    }
}

// What the platform makes of a value: the text of a Boolean is the word, deliberately. No object here is a picture.
HRESULT Convert(Variant* value, VARTYPE type) {
    if (type == VT_DISPATCH) return value->vt == type && !value->pdispVal ? S_OK : DISP_E_TYPEMISMATCH;
    if (type == VT_VARIANT || value->vt == type) return S_OK;
    const HRESULT result = VariantChangeTypeEx(value, value, LOCALE_USER_DEFAULT, VARIANT_ALPHABOOL, type);
    const bool isItsOwn = SUCCEEDED(result) || result == DISP_E_OVERFLOW || result == DISP_E_BADVARTYPE;
    return isItsOwn ? result : DISP_E_TYPEMISMATCH;
}

// A member and what it takes last.
struct Taker {
    CLSID clsid;
    const wchar_t* member;
    const wchar_t* read;  // gives what arrived; null for a member that writes the height of the screen's work area
    VARTYPE type;
    bool byReference = true;
    LONG least = LONG_MIN;   // smaller numbers are ignored
    std::size_t others = 0;  // arguments before it
};

// The client's own stays as it is unless the member writes there: a variable then takes that as it is, as one does that
// was never set, and a place takes it converted.
TEST(DispatchValues, ArriveAsThePlatformConvertsThemAndComeBackInTheFormThatTheClientHolds) {
    VARIANT inner = Arg(1L), outer = Arg(&inner);
    VARIANT refused[] = {Bare(VT_VARIANT, 0), Ref(VT_EMPTY, &inner),    Bare(0x0FFF, 0),          Arg(&outer),
                         Ref(VT_I4, nullptr), Ref(VT_VARIANT, nullptr), Ref(VT_DISPATCH, nullptr)};
    for (const auto& [clsid, member, read, type, byReference, least, others] :
         {Taker{__uuidof(CConCat), L"Text", L"Text", VT_BSTR, false},
          {__uuidof(CMMTimer), L"ScaleFactor", L"ScaleFactor", VT_I4, false, 1},
          {__uuidof(cIconMenu), L"CommandPicture", L"CommandPicture", VT_DISPATCH, false, LONG_MIN, 1},
          {__uuidof(CFileDialog), L"DialogTitle", L"DialogTitle", VT_BSTR},
          {__uuidof(CGDILine), L"X1", L"X1", VT_I4},
          {__uuidof(CPrintDialog), L"Copies", L"Copies", VT_I2},
          {__uuidof(CListViewExtended), L"Redraw", L"Redraw", VT_BOOL},
          {__uuidof(CStack), L"Push", L"Peak", VT_VARIANT},
          {__uuidof(COSInfo), L"GetWorkArea", nullptr, VT_I2, true, LONG_MIN, 3}}) {
        SCOPED_TRACE(member);
        const auto object = CreateObject<IDispatch>(clsid);
        const WORD flags = read && type != VT_VARIANT ? DISPATCH_PROPERTYPUT : DISPATCH_METHOD;
        std::vector<VARIANT> arguments(others + 1, Arg(1L));
        const auto give = [&, member = member](const VARIANT& value) {
            arguments.back() = value;
            return Invoke(object.get(), member, flags, arguments);
        };
        const std::vector<VARIANT> indexes(others, Arg(1L));
        const auto kept = [&, read = read] {
            return read ? Invoke(object.get(), read, DISPATCH_PROPERTYGET, indexes).value : Variant();
        };
        Variant expected = kept(), written;
        if (!read) give(Arg(&written));
        for (const Variant& value : EveryKindOfValue()) {
            Variant arrived = Copy(value);
            const HRESULT taken = Convert(&arrived, type);
            const bool isKept = SUCCEEDED(taken) && read && (arrived.vt != VT_I4 || arrived.lVal >= least);
            if (isKept) expected = Copy(arrived);
            ForEachWay(value, [&, read = read, byReference = byReference](Way way, Passed passed) {
                Variant left = Copy(value);
                HRESULT result = taken;
                const bool isSet = !read || (byReference && value.vt == VT_EMPTY);
                if (SUCCEEDED(taken) && way == kVariable && isSet) left = Copy(read ? arrived : written);
                const bool converts = value.vt != VT_UNKNOWN && value.vt != VT_DECIMAL && value.vt != VT_DISPATCH;
                if (SUCCEEDED(taken) && way >= kPlace && !read && converts) {
                    Variant converted = Copy(written);
                    result = Convert(&converted, value.vt);
                    if (SUCCEEDED(result)) left = std::move(converted);
                }
                const Outcome outcome = give(passed.In(way));
                EXPECT_EQ(std::tuple(result, FAILED(taken) ? 0 : -1),
                          std::tuple(outcome.result, static_cast<int>(outcome.badArgument)));
                EXPECT_EQ(Describe(expected), Describe(kept()));
                EXPECT_EQ(Describe(left), Describe(passed.held));
            });
        }
        for (VARIANT& nothing : refused) {
            const bool isUnknown = nothing.vt == VT_VARIANT || nothing.vt == 0x0FFF || nothing.vt == VT_BYREF;
            EXPECT_EQ(isUnknown ? DISP_E_BADVARTYPE : DISP_E_TYPEMISMATCH, give(nothing).result) << nothing.vt;
            EXPECT_TRUE(FAILED(give(Arg(&nothing)).result)) << nothing.vt;
        }
    }
}

TEST(DispatchValues, AreConvertedByTheClientsLocaleAndMayReturnToWhereTheyStood) {
    const auto settings = CreateObject<IDispatch>(__uuidof(CProgramSettings));
    Variant entry = Text(L"none"), variable = Copy(Arg(2.5));
    VARIANT arguments[] = {Arg(&variable), Arg(&entry)};
    DISPPARAMS parameters{arguments, nullptr, 2, 0};
    constexpr LCID kGerman = MAKELANGID(LANG_GERMAN, SUBLANG_GERMAN);
    EXPECT_EQ(S_OK, settings->Invoke(IdOf(settings.get(), L"ReadEntry"), IID_NULL, kGerman, DISPATCH_METHOD,
                                     &parameters, &variable, nullptr, nullptr));
    EXPECT_EQ(LR"(8:"2,5")", Describe(variable));
}

// While one argument is converted, foreign code replaces what another argument points to. A pointer that was taken too
// early would then point to a freed string.
TEST(DispatchValues, ADefaultPropertyMayChangeTheCallersOtherVariables) {
    const ScratchFolder folder;
    const auto ini = CreateObject<IDispatch>(__uuidof(CIniFile));
    const Variant path = Text(folder.Write(L"f.ini", ""));
    EXPECT_EQ(S_OK, Call(ini.get(), L"Init", {path}).result);
    for (const std::size_t changing : {0u, 1u, 2u}) {
        const auto object = ValueObject::Make(Arg(5L)), late = ValueObject::Make(Arg(5L));
        Variant section = Text(L"an old section"), key = Text(L"an old key"), text = Text(L"an old text");
        object->onRead = [&](auto...) { section = Text(L"5"), key = Text(L"5"), text = Text(L"5"); };
        std::vector<VARIANT> arguments = {Arg(&section), Arg(&key), Arg(&text)};
        arguments[changing] = Arg(object.get());
        const auto save = [&] { return Invoke(ini.get(), L"SaveStringValue", DISPATCH_METHOD, arguments); };
        EXPECT_EQ(S_OK, save().result);
        EXPECT_EQ(L"5", Fact(ini.get(), L"GetStringValue", {Arg(&section), Arg(&key)}));
        EXPECT_EQ(L"True", Fact(ini.get(), L"DeleteSection", {Arg(&section)}));

        // An object that comes in that way behind the arguments that are settled is not read any more.
        if (changing != 2) continue;
        late->onRead = [](auto...) { ADD_FAILURE() << "was read"; };
        object->onRead = [&](auto...) { key = Holding(VT_DISPATCH, ComPtr(late).Detach()); };
        const Outcome refused = save();
        EXPECT_EQ(std::tuple(DISP_E_TYPEMISMATCH, 1u), std::tuple(refused.result, refused.badArgument));
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
TEST(DispatchValues, ArraysAreReadAndFilledInTheFormThatTheClientCanIndexUnlessPassedByValue) {
    struct {
        Variant held;
        const wchar_t* arrives;  // null for what is refused
    } cases[] = {{{}, L"8200:[]"},
                 {ArrayOf(VT_VARIANT, {{2, 0}}, {L"a", L"b"}), LR"(8200:["a", "b"])"},
                 {ArrayOf(VT_BSTR, {{2, 5}}, {L"a", L"b"}), LR"(8200:[5: "a", "b"])"},
                 {Holding(VT_ARRAY | VT_VARIANT), L"8200:[]"},
                 {ArrayOf(VT_VARIANT, {{1, 0}, {2, 3}}, {L"", L"d"}), LR"(8200:[3: "", "d"])"},
                 {Holding(VT_ARRAY | VT_BSTR), L"8200:[]"},
                 {Text(L"text"), nullptr},
                 {Holding(VT_NULL), nullptr},
                 {ArrayOf(VT_I4, {{2, 0}}), nullptr},
                 {Holding(VT_ARRAY | VT_BSTR, ArrayOf(VT_I8, {{2, 0}}).Detach().parray), nullptr},  // which it is not
                 {ArrayOf(VT_VARIANT, {{2, 0}}, {L"a", L"an object"}), nullptr}};
    auto* const object = static_cast<VARIANT*>(std::end(cases)[-1].held.parray->pvData) + 1;
    VariantClear(object);
    *object = Arg(ValueObject::Make(Arg(1L)).Detach());
    for (const auto& [value, arrives] : cases) {
        ForEachWay(value, [&, &value = value, arrives = arrives](Way way, Passed passed) {
            if (way >= kPlace && value.vt == (VT_ARRAY | VT_BSTR)) return;  // which is handed over as it is
            VARIANT given = passed.In(way);
            const bool isVariable = way == kVariable || way == kVariableOfPlace;
            VARIANT* const target = isVariable ? given.pvarVal : &given;
            Variant strings, made = ArrayOf(VT_BSTR, {{1, 1}}, {L"new"});
            const auto read = [&] {
                return HoldsStrings(*target) ? StringArrayFrom(&strings, *target, isVariable) : 1;
            };
            ASSERT_EQ(arrives != nullptr, read() == S_OK);
            if (!arrives) return;
            EXPECT_EQ(arrives, Describe(strings));
            // A member that does not ask whether it may replace an array fails and loses nothing.
            SAFEARRAY* const array = value.vt ? passed.held.parray : nullptr;
            for (const USHORT feature : {0, FADF_AUTO, FADF_STATIC, FADF_EMBEDDED, FADF_FIXEDSIZE}) {
                if (!array || way == kLiteral) continue;
                const USHORT before = std::exchange(array->fFeatures, array->fFeatures | feature);
                array->cLocks = feature ? 0 : 1;
                EXPECT_EQ(S_OK, read());
                EXPECT_FALSE(MayBeReplaced(strings.parray));
                EXPECT_EQ(DISP_E_ARRAYISLOCKED, StringArrayTo(target, isVariable, &made));
                array->cLocks = 0, array->fFeatures = before;
                EXPECT_EQ(Describe(value), Describe(passed.held));
            }
            EXPECT_EQ(S_OK, StringArrayTo(target, isVariable, &made));
            EXPECT_EQ(way == kLiteral ? Describe(value) : LR"(8204:[1: "new"])", Describe(passed.held));
        });
    }
}

// ---- Members ----

// A list of a few numbers.
class DispatchCalls : public testing::Test {
  protected:
    DispatchCalls() {
        for (const LONG number : {1, 2, 3, 2, 1, 4}) Call(list_.get(), L"Add", {Arg(number)});
        Call(list_.get(), L"MoveFirst");
    }

    const ComPtr<IDispatch> list_ = CreateObject<IDispatch>(__uuidof(CLinkedList));
};

// Each argument left out, passed as missing, given, or Null; the last ones also by name, the other way round. It ends
// as with all of them in their places.
TEST_F(DispatchCalls, OmittedArgumentsTakeTheirDefaultsAndNamedOnesGoWhereTheirNamesSay) {
    constexpr int kCount = 4;
    enum { kLeftOut, kMissing, kGiven, kNull };
    const Variant start = Text(L"5");
    Variant descending = Copy(Arg(true));
    LONG condition = 5;  // at least
    const VARIANT null = Bare(VT_NULL, 0), values[] = {Arg(2L), Ref(VT_I4, &condition), start, Arg(&descending)};
    const VARIANT defaults[] = {Missing(), Arg(0L), Arg(0L), Arg(false)};
    for (int combination = 0; combination < 1 << 2 * kCount; ++combination) {
        SCOPED_TRACE(combination);
        const auto state = [=](int i) { return combination >> 2 * i & 3; };
        std::vector<VARIANT> all, arguments;
        std::vector<DISPID> named;
        for (int i = 0; i < kCount; ++i) {
            all.push_back(state(i) == kGiven ? values[i] : state(i) == kNull ? null : defaults[i]);
        }
        const auto pass = [&](int i) { arguments.push_back(state(i) == kMissing ? Missing() : all[i]); };
        int positional = 0;
        while (positional < combination % (kCount + 1) && state(positional) != kLeftOut) pass(positional++);
        for (int i = kCount - 1; i >= positional; --i) {
            if (state(i) != kLeftOut) pass(i), named.push_back(i);
        }
        const Outcome given = Invoke(list_.get(), L"Find", DISPATCH_METHOD, arguments, named);
        const Outcome expected = state(0) == kLeftOut ? Outcome{DISP_E_PARAMNOTOPTIONAL}
                                                      : Invoke(list_.get(), L"Find", DISPATCH_METHOD, all, {});
        EXPECT_EQ(std::tuple(expected.result, expected.code, Describe(expected.value)),
                  std::tuple(given.result, given.code, Describe(given.value)));
    }
}

TEST_F(DispatchCalls, NamesOfMembersAndParameters) {
    const auto look = [&](HRESULT result, std::vector<const wchar_t*> names, std::vector<DISPID> wanted) {
        std::vector<DISPID> ids(names.size(), 12345);
        EXPECT_EQ(result, list_->GetIDsOfNames(IID_NULL, const_cast<LPOLESTR*>(names.data()),
                                               static_cast<UINT>(names.size()), 0, ids.data()));
        EXPECT_EQ(wanted, ids);
    };
    look(S_OK, {L"FIND", L"value", L"STARTindex"}, {3, 0, 2});
    look(DISP_E_UNKNOWNNAME, {L"Find", L"nothing", L"Condition", L"result"}, {3, -1, 1, -1});
    look(DISP_E_UNKNOWNNAME, {L"Item", L"index", L""}, {17, 0, -1});
    look(DISP_E_UNKNOWNNAME, {L"Nothing", L"value"}, {-1, -1});
    look(E_INVALIDARG, {L"Find", nullptr}, {-1, -1});
    look(E_INVALIDARG, {}, {});
    auto* name = const_cast<LPOLESTR>(L"Find");
    DISPID id = 0;
    EXPECT_EQ(DISP_E_UNKNOWNINTERFACE, list_->GetIDsOfNames(IID_IUnknown, &name, 1, 0, &id));
    EXPECT_EQ(E_INVALIDARG, list_->GetIDsOfNames(IID_NULL, nullptr, 1, 0, &id));
    EXPECT_EQ(E_INVALIDARG, list_->GetIDsOfNames(IID_NULL, &name, 1, 0, nullptr));
}

// By each of the DISPATCH_ flags, and by two that go together.
TEST_F(DispatchCalls, OnlyTheWaysThatAMemberHasCanBeCalled) {
    const auto object = ValueObject::Make(Arg(1L));
    for (const auto& [member, count] : {std::pair(L"CheckIndex", 1u), {L"CurrIndex", 0u}, {L"Item", 1u}}) {
        const auto call = [&, name = member, count = count](auto invoke, WORD flags) {
            Let(list_.get(), L"Item", {Arg(1L), Arg(7L)});
            std::vector<VARIANT> arguments(count, Arg(1L));
            if (flags >= DISPATCH_PROPERTYPUT) arguments.push_back(count ? Arg(object.get()) : Arg(1L));
            const Outcome outcome = invoke(list_.get(), name, flags, arguments);
            return std::tuple(outcome.result, Describe(outcome.value),
                              Describe(Get(list_.get(), L"Item", {Arg(1L)}).value));
        };
        for (const WORD flags : {1, 2, 3, 4, 8, 12}) {
            EXPECT_EQ(call(InvokeByPlatform, flags), call([](auto... given) { return Invoke(given...); }, flags))
                << member << " " << flags;
        }
    }
}

// A call that no proper client makes gets an answer, too.
TEST_F(DispatchCalls, ParameterBlocksAreChecked) {
    constexpr DISPID kFind = 3, kCount = 13, kCurrIndex = 14;
    VARIANT ones[5];
    std::fill_n(ones, 5, Arg(1L));
    DISPID first[] = {0, 0}, same[] = {1, 1}, beyond[] = {4, 1};
    const auto expect = [&](HRESULT result, int bad, DISPID id, DISPPARAMS parameters, WORD flags = DISPATCH_METHOD) {
        for (const bool answered : {false, true}) {
            Variant answer = Copy(Arg(77L));
            UINT at = ~0u;
            EXPECT_EQ(result, list_->Invoke(id, IID_NULL, 0, flags, &parameters, answered ? &answer : nullptr, nullptr,
                                            answered ? &at : nullptr));
            EXPECT_EQ(answered ? bad : -1, static_cast<int>(at));
            EXPECT_EQ(!answered ? L"3:77" : FAILED(result) ? L"0:Empty" : L"3:1", Describe(answer));
        }
    };
    expect(S_OK, -1, kFind, {ones, nullptr, 1, 0});
    expect(DISP_E_BADPARAMCOUNT, -1, kFind, {nullptr, nullptr, 1, 0});
    expect(DISP_E_BADPARAMCOUNT, -1, kFind, {ones, nullptr, 1, 1});
    expect(DISP_E_BADPARAMCOUNT, -1, kFind, {ones, first, 1, 2});
    expect(DISP_E_BADPARAMCOUNT, -1, kFind, {ones, nullptr, 0xFFFFFFFF, 0});
    expect(DISP_E_BADPARAMCOUNT, -1, kFind, {ones, nullptr, 5, 0});
    for (DISPID no : {0, -7, DISPID_PROPERTYPUT}) expect(DISP_E_PARAMNOTFOUND, 0, kFind, {ones, &no, 2, 1});
    expect(DISP_E_PARAMNOTFOUND, 1, kFind, {ones, same, 3, 2});
    expect(DISP_E_PARAMNOTFOUND, 0, kFind, {ones, beyond, 3, 2});
    expect(DISP_E_PARAMNOTFOUND, -1, kCurrIndex, {ones, nullptr, 1, 0}, DISPATCH_PROPERTYPUT);
    for (const DISPID id : {-1, 0, 2, 18, 0x10000, 0x7FFFFFFF}) expect(DISP_E_MEMBERNOTFOUND, -1, id, {}, 0);
    expect(DISP_E_MEMBERNOTFOUND, -1, kCount, {ones, nullptr, 1, 0}, DISPATCH_PROPERTYPUT);
    DISPPARAMS none{};
    EXPECT_EQ(DISP_E_BADPARAMCOUNT, list_->Invoke(kFind, IID_NULL, 0, DISPATCH_METHOD, nullptr, 0, 0, 0));
    EXPECT_EQ(DISP_E_UNKNOWNINTERFACE,
              list_->Invoke(kCount, IID_IDispatch, 0, DISPATCH_PROPERTYGET, &none, nullptr, nullptr, nullptr));
    const std::vector<DISPID> named = {DISPID_PROPERTYPUT, 0};
    EXPECT_EQ(S_OK, Invoke(list_.get(), L"Item", DISPATCH_PROPERTYPUT, {Arg(9L), Arg(1L)}, named).result);
    EXPECT_EQ(L"3:9", Describe(Get(list_.get(), L"Item", {Arg(1L)}).value));
}

}  // namespace
}  // namespace velk::test
