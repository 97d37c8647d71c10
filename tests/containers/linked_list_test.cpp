// CLinkedList as its clients see it. What its nodes do is compared with the literal rules in node_list_test.cpp.
#include <gtest/gtest.h>

#include <cwchar>
#include <utility>
#include <vector>

#include "platform/text.h"
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

    ComPtr<IDispatch> list_ = CreateObject<IDispatch>(__uuidof(::CLinkedList));
};

TEST_F(LinkedList, ReportsAndRaisesABadIndexAndWhatCannotBeCompared) {
    Variant array;
    array.vt = VT_ARRAY | VT_I4;
    array.parray = SafeArrayCreateVector(VT_I4, 0, 1);
    Add(array);
    Call(list_.get(), L"MoveFirst");
    struct Case {
        const wchar_t* member;
        std::initializer_list<LONG> arguments;
        const wchar_t* error = L"5. Invalid procedure call or argument";
    };
    const wchar_t* const mismatch = L"13. Type mismatch";
    const Case cases[] = {{L"CheckIndex", {0}},
                          {L"CheckIndex", {2}},
                          {L"Move", {101}},
                          {L"Remove", {-1}},
                          {L"Item", {2}},
                          {L"Add", {1, 2}},
                          {L"SetSize", {0}},
                          {L"Find", {1, fccEqual}, mismatch},
                          {L"Find", {1, fccLess}, mismatch},
                          {L"Find", {1, fccInStr}, mismatch}};
    for (const Case& c : cases) {
        const ReportRecorder recorder(Library());
        std::vector<VARIANT> arguments;
        for (const LONG argument : c.arguments) arguments.push_back(Arg(argument));
        const Outcome outcome =
            InvokeNamed(list_.get(), c.member, DISPATCH_METHOD | DISPATCH_PROPERTYGET, arguments, {});
        ASSERT_EQ(1u, recorder.reports().size());
        EXPECT_EQ(std::wstring(L"CLinkedList.") + c.member, recorder.reports()[0].title);
        EXPECT_EQ(std::wstring(L"Error: ") + c.error, recorder.reports()[0].text);
        EXPECT_EQ(static_cast<HRESULT>(0x800A0000 + std::wcstol(c.error, nullptr, 10)), outcome.code);
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
            for (const LONGLONG number : {6, 7, 8}) {
                for (int condition = fccEqual; condition <= fccGreaterEqual; ++condition) {
                    const bool meets[] = {7 == number, 7 != number, 7 < number, 7 <= number, 7 > number, 7 >= number};
                    LONG found = 99;
                    Variant wanted = Of(other, number);
                    EXPECT_EQ(S_OK, list->Find(&wanted, reinterpret_cast<FindConditionConstants*>(&condition), &start,
                                               nullptr, &found));
                    EXPECT_EQ(meets[condition] ? index : 0, found) << kind << " " << condition << " " << other;
                }
            }
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
    const Variant part = Text(L"ru");
    const VARIANT nothing = Arg(static_cast<IDispatch*>(nullptr)), self = Arg(list_.get());
    constexpr LONG kUnknown = 99;
    const std::pair<VARIANT, std::vector<std::pair<LONG, LONG>>> cases[] = {
        // a value's conditions and what they find
        {null, {{fccEqual, 0}, {fccNotEqual, 0}, {fccInStr, 0}}},
        {empty, {{fccEqual, 2}}},
        {nul, {{fccEqual, 2}, {fccInStr, 3}}},
        {small, {{fccLess, 2}, {kUnknown, 5}}},
        {capital, {{fccGreater, 5}}},
        {five, {{fccInStr, 3}}},
        {Arg(LONG{5}), {{fccInStr, 3}}},
        {part, {{fccInStr, 6}}},
        {nothing, {{fccEqual, 7}, {fccNotEqual, 0}}},
        {self, {{fccNotEqual, 7}, {fccLess, 0}}}};
    for (const auto& [value, found] : cases) {
        for (const auto& [condition, index] : found) EXPECT_EQ(index, Find(value, condition)) << value.vt;
    }
    EXPECT_EQ(6, Find(nul, fccInStr, -1, true));
    EXPECT_EQ(4, Find(nul, fccInStr, 3)) << "the start itself is not looked at";
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
