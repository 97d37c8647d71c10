#include "frame/shapes_test.h"
#include "support/value_object.h"

namespace velk::test {
namespace {

class DispatchArrays : public ShapesTest {
  protected:
    static Variant Holding(VARTYPE type, SAFEARRAY* array) {
        Variant made;
        made.vt = VT_ARRAY | type;
        made.parray = array;
        return made;
    }
    static Variant ArrayOf(VARTYPE type, LONG from, std::initializer_list<const wchar_t*> texts) {
        SAFEARRAYBOUND bounds{static_cast<ULONG>(texts.size()), from};
        Variant made = Holding(type, SafeArrayCreate(type, 1, &bounds));
        for (const wchar_t* text : texts) {
            Variant element = Text(text);
            SafeArrayPutElement(made.parray, &from,
                                type == VT_VARIANT ? &element : static_cast<void*>(element.bstrVal));
            ++from;
        }
        return made;
    }
    static Variant Square(VARTYPE type) {
        SAFEARRAYBOUND bounds[] = {{1, 0}, {2, 3}};
        return Holding(type, SafeArrayCreate(type, 2, bounds));
    }
    Outcome Fill(const VARIANT& given, LONG count) { return Call(shapes_.get(), L"FillStrings", {given, Arg(count)}); }
};

TEST_F(DispatchArrays, AreReadAndFilledInTheFormThatTheClientCanIndexUnlessPassedByValue) {
    struct {
        Variant held;
        LONG count;
        const wchar_t *arrived, *after;
    } cases[] = {{{}, 2, L"no array of 8", L"array of 12 from 1: 8:s1 8:s2"},
                 {{}, -1, L"no array of 8", L"array of 12 from 0:"},
                 {ArrayOf(VT_VARIANT, 0, {L"a", L"b"}), 1, L"array of 8 from 0: 8:a 8:b", L"array of 12 from 1: 8:s1"},
                 {ArrayOf(VT_VARIANT, 2, {L"a"}), 2, L"array of 8 from 2: 8:a", L"array of 12 from 1: 8:s1 8:s2"},
                 {ArrayOf(VT_BSTR, 5, {L"a", L"b"}), 1, L"array of 8 from 5: 8:a 8:b", L"array of 8 from 1: 8:s1"},
                 {Holding(VT_VARIANT, nullptr), 0, L"no array of 8", L"array of 12 from 1:"},
                 {Holding(VT_BSTR, nullptr), 1, L"no array of 8", L"array of 8 from 1: 8:s1"},
                 {Square(VT_VARIANT), 1, L"array of 8 from 3: 8: 8:", L"array of 12 from 1: 8:s1"},
                 {Square(VT_BSTR), 1, L"array of 8 from 3: 8: 8:", L"array of 8 from 1: 8:s1"}};
    for (const auto& c : cases) {
        for (const int way : {0, 1, 2, 3}) {  // by value, a variable, a reference, a variable that refers to the array
            if (way >= 2 && c.held.vt == VT_EMPTY) continue;
            Variant held;
            EXPECT_EQ(S_OK, VariantCopy(&held, const_cast<Variant*>(&c.held)));
            VARIANT reference = Ref(held.vt, &held.parray);
            const VARIANT given[] = {held, Arg(&held), reference, Arg(&reference)};
            const std::wstring before = Describe(held);
            const Outcome outcome = Fill(given[way], c.count);
            EXPECT_EQ(S_OK, outcome.result);
            EXPECT_EQ(c.arrived, TextOf(outcome.value)) << before << L" in way " << way;
            EXPECT_EQ(way == 0 ? before : c.after, Describe(held)) << L"in way " << way;
            EXPECT_EQ(&held.parray, reference.pparray);
        }
    }
}

// The call of a member that does not ask whether it may replace an array fails and loses nothing.
TEST_F(DispatchArrays, StayWhereTheyAreWhenInUse) {
    for (const USHORT feature : {0, FADF_FIXEDSIZE}) {
        Variant array = ArrayOf(VT_VARIANT, 1, {L"a"});
        VARIANT reference = Ref(array.vt, &array.parray);
        array.parray->cLocks = feature ? 0 : 1;
        array.parray->fFeatures |= feature;
        for (VARIANT* const held : {&reference, static_cast<VARIANT*>(&array)}) {
            EXPECT_EQ(DISP_E_ARRAYISLOCKED, Fill(Arg(held), 1).result);
            EXPECT_EQ(L"array of 12 from 1: 8:a", Describe(array));
        }
        array.parray->cLocks = 0;
    }
}

TEST_F(DispatchArrays, OtherContentsAreAMismatch) {
    SAFEARRAYBOUND two{2, 0};
    Variant cases[] = {Text(L"text"),
                       Holding(VT_I4, SafeArrayCreate(VT_I4, 1, &two)),
                       ArrayOf(VT_VARIANT, 0, {L"a", L"b"}),
                       {},
                       Holding(VT_BSTR, SafeArrayCreate(VT_I8, 1, &two))};  // which the last is not
    LONG second = 1;
    const auto object = ValueObject::Make(Arg(1L));
    VARIANT element = Arg(object.get());
    SafeArrayPutElement(cases[2].parray, &second, &element);
    cases[3].vt = VT_NULL;
    for (Variant& c : cases) {
        const std::wstring before = Describe(c);
        for (const VARIANT& given : {VARIANT(c), Arg(&c)}) {
            const Outcome outcome = Fill(given, 1);
            EXPECT_EQ(DISP_E_TYPEMISMATCH, outcome.result) << before;
            EXPECT_EQ(1u, outcome.badArgument) << before;
            EXPECT_EQ(before, Describe(c));
        }
    }
}

}  // namespace
}  // namespace velk::test
