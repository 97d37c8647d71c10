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
        {ArrayOf(VT_VARIANT, 2, {L"a"}), false, -1, L"array of 8 from 2: 8:a", L"array of 12 from 0:"},
        {ArrayOf(VT_VARIANT, 2, {L"a"}), true, 2, L"array of 8 from 2: 8:a", L"array of 12 from 1: 8:s1 8:s2"},
        {std::move(variantNothing), true, 0, L"no array of 8", L"array of 12 from 1:"},
        {ArrayOf(VT_BSTR, 5, {L"a", L"b"}), false, 1, L"array of 8 from 5: 8:a 8:b", L"array of 8 from 1: 8:s1"},
        {ArrayOf(VT_BSTR, 0, {L"a"}), true, 1, L"array of 8 from 0: 8:a", L"array of 8 from 1: 8:s1"},
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
        const Variant array = ArrayOf(type, 1, {L"a"});
        const std::wstring before = Describe(array);
        EXPECT_EQ(L"array of 8 from 1: 8:a", TextOf(Call(shapes_.get(), L"FillStrings", {array, Arg(2L)}).value));
        EXPECT_EQ(before, Describe(array));
    }
    // As a script's variable looks inside a procedure that received the array by reference.
    Variant array = ArrayOf(VT_VARIANT, 0, {L"a"});
    VARIANT variable = Ref(VT_ARRAY | VT_VARIANT, &array.parray);
    EXPECT_EQ(L"array of 8 from 0: 8:a", TextOf(Call(shapes_.get(), L"FillStrings", {Arg(&variable), Arg(2L)}).value));
    EXPECT_EQ(L"array of 12 from 1: 8:s1 8:s2", Describe(array));
    EXPECT_EQ(&array.parray, variable.pparray);
    // An array cannot be replaced while someone holds a pointer into it. The call fails and loses nothing.
    SafeArrayLock(array.parray);
    EXPECT_EQ(DISP_E_ARRAYISLOCKED, Call(shapes_.get(), L"FillStrings", {Arg(&variable), Arg(1L)}).result);
    EXPECT_EQ(L"array of 12 from 1: 8:s1 8:s2", Describe(array));
    SafeArrayUnlock(array.parray);
}

TEST_F(DispatchArrays, OtherContentsAreAMismatch) {
    SAFEARRAYBOUND square[] = {{2, 0}, {2, 0}};
    Variant cases[6];
    cases[0] = Text(L"text");
    cases[1].vt = VT_ARRAY | VT_I4;
    cases[1].parray = SafeArrayCreate(VT_I4, 1, square);
    cases[2].vt = VT_ARRAY | VT_VARIANT;
    cases[2].parray = SafeArrayCreate(VT_VARIANT, 2, square);
    cases[3] = ArrayOf(VT_VARIANT, 0, {L"a", L"b"});
    LONG second = 1;
    const auto object = ValueObject::Make(Arg(1L));
    VARIANT element = Arg(object.get());
    SafeArrayPutElement(cases[3].parray, &second, &element);
    cases[4].vt = VT_NULL;
    cases[5].vt = VT_ARRAY | VT_BSTR;  // which it is not
    cases[5].parray = SafeArrayCreate(VT_I8, 1, square);
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
