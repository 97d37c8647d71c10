// CLinkedList as its clients see it. What its nodes do is compared with the literal rules in node_list_test.cpp.
#include <gtest/gtest.h>

#include "frame/text.h"
#include "support/client.h"
#include "support/late_bound.h"
#include "support/report_recorder.h"
#include "support/value_object.h"

namespace velk::test {
namespace {

class LinkedList : public testing::Test {
  protected:
    LONG Add(const VARIANT& value) { return Call(list_.get(), L"Add", {value}).value.lVal; }
    LONG Find(const VARIANT& value, LONG condition = 0, LONG start = -1, bool descending = false) {
        return Call(list_.get(), L"Find", {value, Arg(condition), Arg(start), Arg(descending)}).value.lVal;
    }
    LONG Number(const wchar_t* member) { return Get(list_.get(), member).value.lVal; }
    bool Flag(const wchar_t* member) { return Get(list_.get(), member).value.boolVal != VARIANT_FALSE; }

    ComPtr<IDispatch> list_ = CreateObject<IDispatch>(__uuidof(::CLinkedList));
};

TEST_F(LinkedList, KeepsItemsUnderTheirIndexAndWalksThem) {
    EXPECT_TRUE(Flag(L"IsEmpty") && Flag(L"BOL") && Flag(L"EOL"));
    for (LONG i = 1; i <= 3; ++i) EXPECT_EQ(i, Add(Arg(i * 10)));
    EXPECT_EQ(4, Call(list_.get(), L"Add", {Arg(LONG{5}), Arg(LONG{2})}).value.lVal);
    Call(list_.get(), L"MoveFirst");
    std::vector<LONG> values;
    for (; !Flag(L"EOL"); Call(list_.get(), L"MoveNext")) values.push_back(Get(list_.get(), L"Item").value.lVal);
    EXPECT_EQ((std::vector<LONG>{10, 5, 20, 30}), values);
    Call(list_.get(), L"MoveLast");
    Call(list_.get(), L"MovePrevious");
    EXPECT_EQ(2, Number(L"CurrIndex"));
    Call(list_.get(), L"Remove", {Arg(LONG{4})});
    EXPECT_EQ(4, Add(Arg(LONG{7})));
    EXPECT_EQ(4, Number(L"Count"));
}

TEST_F(LinkedList, ReportsAndRaisesABadIndex) {
    Add(Arg(LONG{1}));
    struct Case {
        const wchar_t* member;
        const wchar_t* title;
        LONG argument;
    };
    const Case cases[] = {{L"CheckIndex", L"CLinkedList.CheckIndex", 0},
                          {L"CheckIndex", L"CLinkedList.CheckIndex", 2},
                          {L"Move", L"CLinkedList.Move", 101},
                          {L"Remove", L"CLinkedList.Remove", -1},
                          {L"Item", L"CLinkedList.Item", 2},
                          {L"SetSize", L"CLinkedList.SetSize", 0}};
    for (const Case& c : cases) {
        const ReportRecorder recorder(Library());
        const Outcome outcome = Call(list_.get(), c.member, {Arg(c.argument)});
        EXPECT_EQ(static_cast<HRESULT>(0x800A0005), outcome.code) << c.title;
        ASSERT_EQ(1u, recorder.reports().size());
        EXPECT_EQ(c.title, recorder.reports()[0].title);
        EXPECT_EQ(L"Error: 5. Invalid procedure call or argument", recorder.reports()[0].text);
    }
}

Variant Of(VARTYPE type, LONGLONG number) {
    Variant value;
    value.vt = type;
    value.llVal = number;
    if (type == VT_DECIMAL) VarDecFromI4(static_cast<LONG>(number), &value.decVal), value.vt = type;
    if (type == VT_R4) value.fltVal = static_cast<float>(number);
    if (type == VT_R8) value.dblVal = static_cast<double>(number);
    if (type == VT_CY) value.cyVal.int64 = number * 10000;
    return value;
}

TEST_F(LinkedList, ComparesNumbersOfAllKindsByValue) {
    const VARTYPE kinds[] = {VT_I1,  VT_UI1, VT_I2,   VT_UI2, VT_I4, VT_UI4, VT_I8,
                             VT_UI8, VT_INT, VT_UINT, VT_R4,  VT_R8, VT_CY,  VT_DECIMAL};
    const auto list = list_.As<_CLinkedList>();
    LONG index = Add(Arg(LONG{0})), start = -1;
    for (const VARTYPE kind : kinds) {
        Variant item = Of(kind, 7);
        ASSERT_EQ(S_OK, list->put_Item(&index, &item));
        for (const VARTYPE other : kinds) {
            const auto find = [&](LONGLONG number, FindConditionConstants condition) {
                LONG found = 99;
                Variant wanted = Of(other, number);
                EXPECT_EQ(S_OK, list->Find(&wanted, &condition, &start, nullptr, &found));
                return found;
            };
            EXPECT_EQ(index, find(7, fccEqual)) << kind << " and " << other;
            EXPECT_EQ(0, find(7, fccNotEqual)) << kind << " and " << other;
            EXPECT_EQ(index, find(8, fccLess)) << kind << " and " << other;
            EXPECT_EQ(0, find(7, fccGreater)) << kind << " and " << other;
            EXPECT_EQ(index, find(6, fccGreaterEqual)) << kind << " and " << other;
        }
    }
}

// Strings compare by code unit, not as people sort them.
TEST_F(LinkedList, FindsWhatStringsAndOtherValuesMean) {
    const Variant nul(Text(L"")), capital = Text(L"Z"), small = Text(L"a"), five = Text(L"5");
    const Variant null = Of(VT_NULL, 0), empty = Of(VT_EMPTY, 0);
    const VARIANT items[] = {
        null, empty, Arg(LONG{25}), capital, small, Arg(true), Arg(static_cast<IDispatch*>(nullptr))};
    for (const VARIANT& item : items) Add(item);
    constexpr LONG kUnknown = 99;
    const Variant part = Text(L"ru");
    struct Case {
        LONG found;
        VARIANT value;
        LONG condition;
    };
    const Case cases[] = {
        {0, null, fccEqual},
        {0, null, fccNotEqual},
        {0, null, fccInStr},
        {2, empty, fccEqual},
        {2, nul, fccEqual},
        {2, small, fccLess},
        {5, capital, fccGreater},
        {3, five, fccInStr},
        {3, Arg(LONG{5}), fccInStr},
        {6, part, fccInStr},
        {3, nul, fccInStr},
        {5, small, kUnknown},
        {7, Arg(static_cast<IDispatch*>(nullptr)), fccEqual},
        {0, Arg(static_cast<IDispatch*>(nullptr)), fccNotEqual},
        {7, Arg(list_.get()), fccNotEqual},
    };
    LONG number = 0;
    for (const Case& c : cases) EXPECT_EQ(c.found, Find(c.value, c.condition)) << "case " << number++;
    EXPECT_EQ(6, Find(nul, fccInStr, -1, true));
    EXPECT_EQ(4, Find(nul, fccInStr, 3)) << "the start itself is not looked at";
}

TEST_F(LinkedList, RaisesATypeMismatchForWhatCannotBeCompared) {
    Variant array;
    array.vt = VT_ARRAY | VT_I4;
    array.parray = SafeArrayCreateVector(VT_I4, 0, 1);
    Add(array);
    const ReportRecorder recorder(Library());
    for (const LONG condition : {fccEqual, fccLess, fccInStr}) {
        const Outcome outcome = Call(list_.get(), L"Find", {Arg(LONG{1}), Arg(condition), Arg(LONG{-1})});
        EXPECT_EQ(static_cast<HRESULT>(0x800A000D), outcome.code) << condition;
    }
    ASSERT_EQ(3u, recorder.reports().size());
    EXPECT_EQ(L"CLinkedList.Find", recorder.reports()[0].title);
}

TEST_F(LinkedList, HoldsObjectsByReference) {
    const auto thing = ValueObject::Make(Arg(LONG{1}));
    Add(Arg(list_.get()));  // itself
    Add(Arg(thing.get()));
    EXPECT_EQ(2u, thing->count());
    EXPECT_EQ(thing.get(), Call(list_.get(), L"Item", {Arg(LONG{2})}).value.pdispVal);
    EXPECT_EQ(2, Find(Arg(thing.get())));
    Invoke(list_.get(), L"Item", DISPATCH_PROPERTYPUTREF, {Arg(LONG{1}), Arg(thing.get())});
    EXPECT_EQ(3u, thing->count());
    for (const LONG index : {1, 2}) Call(list_.get(), L"Remove", {Arg(index)});
    EXPECT_EQ(1u, thing->count());
}

}  // namespace
}  // namespace velk::test
