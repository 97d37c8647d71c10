#include "frame/shapes_test.h"
#include "support/value_object.h"

namespace velk::test {
namespace {

using DispatchArrays = ShapesTest;

Variant ArrayOf(VARTYPE type, LONG from, std::initializer_list<const wchar_t*> texts) {
    SAFEARRAYBOUND bounds{static_cast<ULONG>(texts.size()), from};
    Variant made;
    made.vt = VT_ARRAY | type;
    made.parray = SafeArrayCreate(type, 1, &bounds);
    for (LONG at = from; const wchar_t* text : texts) {
        const Variant element = Text(text);
        SafeArrayPutElement(made.parray, &at,
                            type == VT_VARIANT ? const_cast<Variant*>(&element) : static_cast<void*>(element.bstrVal));
        ++at;
    }
    return made;
}

Variant Square(VARTYPE type) {
    SAFEARRAYBOUND bounds[] = {{1, 0}, {2, 3}};
    Variant made;
    made.vt = VT_ARRAY | type;
    made.parray = SafeArrayCreate(type, 2, bounds);
    return made;
}

struct Case {
    Variant held;
    bool referenced;  // passed as a typed reference to the array and not as a script's variable
    LONG count;
    const wchar_t* arrived;
    const wchar_t* after;
};

TEST_F(DispatchArrays, AreReadAndFilledInTheFormThatTheClientCanIndex) {
    Variant typedNothing, variantNothing;
    typedNothing.vt = VT_ARRAY | VT_BSTR;
    variantNothing.vt = VT_ARRAY | VT_VARIANT;
    Case cases[] = {
        {{}, false, 2, L"no array of 8", L"array of 12 from 1: 8:s1 8:s2"},
        {{}, false, -1, L"no array of 8", L"array of 12 from 0:"},
        {ArrayOf(VT_VARIANT, 0, {L"a", L"b"}), false, 1, L"array of 8 from 0: 8:a 8:b", L"array of 12 from 1: 8:s1"},
        {ArrayOf(VT_VARIANT, 2, {L"a"}), true, 2, L"array of 8 from 2: 8:a", L"array of 12 from 1: 8:s1 8:s2"},
        {std::move(variantNothing), true, 0, L"no array of 8", L"array of 12 from 1:"},
        {ArrayOf(VT_BSTR, 5, {L"a", L"b"}), false, 1, L"array of 8 from 5: 8:a 8:b", L"array of 8 from 1: 8:s1"},
        {Square(VT_VARIANT), false, 1, L"array of 8 from 3: 8: 8:", L"array of 12 from 1: 8:s1"},
        {Square(VT_BSTR), true, 1, L"array of 8 from 3: 8: 8:", L"array of 8 from 1: 8:s1"},
        {std::move(typedNothing), true, 1, L"no array of 8", L"array of 8 from 1: 8:s1"},
    };
    for (Case& c : cases) {
        SCOPED_TRACE(testing::Message() << Describe(c.held) << " filled with " << c.count);
        const VARIANT given = c.referenced ? Ref(c.held.vt, &c.held.parray) : Arg(&c.held);
        const Outcome outcome = Call(shapes_.get(), L"FillStrings", {given, Arg(c.count)});
        EXPECT_EQ(S_OK, outcome.result);
        EXPECT_EQ(c.arrived, TextOf(outcome.value));
        EXPECT_EQ(c.after, Describe(c.held));
    }
}

TEST_F(DispatchArrays, StayWhereTheyAreWhenPassedByValueReferredToOrInUse) {
    for (const VARTYPE type : {VT_VARIANT, VT_BSTR}) {
        Variant array = ArrayOf(type, 1, {L"a"});
        const std::wstring before = Describe(array);
        EXPECT_EQ(L"array of 8 from 1: 8:a", TextOf(Call(shapes_.get(), L"FillStrings", {array, Arg(2L)}).value));
        EXPECT_EQ(before, Describe(array));
        // As a script's variable looks inside a procedure that received the array by reference.
        VARIANT variable = Ref(VT_ARRAY | type, &array.parray);
        Call(shapes_.get(), L"FillStrings", {Arg(&variable), Arg(2L)});
        const std::wstring filled =
            type == VT_BSTR ? L"array of 8 from 1: 8:s1 8:s2" : L"array of 12 from 1: 8:s1 8:s2";
        EXPECT_EQ(filled, Describe(array));
        EXPECT_EQ(&array.parray, variable.pparray);
        // The call of a member that does not ask whether it may replace an array fails and loses nothing.
        for (const USHORT feature : {0, FADF_FIXEDSIZE}) {
            if (type == VT_BSTR) break;  // is in the member's own hands
            array.parray->cLocks = feature ? 0 : 1;
            array.parray->fFeatures |= feature;
            for (VARIANT* const held : {&variable, static_cast<VARIANT*>(&array)}) {
                EXPECT_EQ(DISP_E_ARRAYISLOCKED, Call(shapes_.get(), L"FillStrings", {Arg(held), Arg(1L)}).result);
                EXPECT_EQ(filled, Describe(array));
            }
        }
    }
}

TEST_F(DispatchArrays, OtherContentsAreAMismatch) {
    SAFEARRAYBOUND two{2, 0};
    Variant cases[5];
    cases[0] = Text(L"text");
    cases[1].vt = VT_ARRAY | VT_I4;
    cases[1].parray = SafeArrayCreate(VT_I4, 1, &two);
    cases[2] = ArrayOf(VT_VARIANT, 0, {L"a", L"b"});
    LONG second = 1;
    const auto object = ValueObject::Make(Arg(1L));
    VARIANT element = Arg(object.get());
    SafeArrayPutElement(cases[2].parray, &second, &element);
    cases[3].vt = VT_NULL;
    cases[4].vt = VT_ARRAY | VT_BSTR;  // which it is not
    cases[4].parray = SafeArrayCreate(VT_I8, 1, &two);
    for (Variant& c : cases) {
        const std::wstring before = Describe(c);
        for (const VARIANT& given : {VARIANT(c), Arg(&c)}) {
            const Outcome outcome = Call(shapes_.get(), L"FillStrings", {given, Arg(1L)});
            EXPECT_EQ(DISP_E_TYPEMISMATCH, outcome.result) << before;
            EXPECT_EQ(1u, outcome.badArgument) << before;
            EXPECT_EQ(before, Describe(c));
        }
    }
}

}  // namespace
}  // namespace velk::test
