// What no line of facts can say: values that lead nowhere.
#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "support/client.h"
#include "support/late_bound.h"

namespace velk::test {
namespace {

VARIANT Plain(VARTYPE type) {
    VARIANT value{};
    value.vt = type;
    return value;
}

TEST(Containers, RefuseReferencesThatLeadNowhereAndKeepANullText) {
    const auto list = CreateObject<_CLinkedList>(__uuidof(::CLinkedList));
    const auto stack = CreateObject<_CStack>(__uuidof(::CStack));
    VARIANT self = Arg(&self), nowhere = Plain(VT_BYREF | VT_I4), item = Plain(VT_BSTR), back{};
    const std::pair<HRESULT, std::vector<VARIANT>> cases[] = {
        {E_POINTER, {nowhere, Arg(static_cast<VARIANT*>(nullptr)), Arg(&nowhere)}},
        {static_cast<HRESULT>(0x800A000D), {self, Plain(VT_VARIANT), Plain(0x1234)}}};
    LONG index = 0, count = -1;
    for (int i = 0; i < 100; ++i) list->Add(&item, nullptr, nullptr, &index);
    EXPECT_EQ(100, index) << "one more would grow the list and so mark these as free";
    for (const auto& [code, values] : cases) {
        for (VARIANT value : values) {
            EXPECT_EQ(code, list->Add(&value, nullptr, nullptr, &(index = 7))) << value.vt;
            EXPECT_EQ(0, index);
            EXPECT_EQ(code == E_POINTER ? code : HRESULT{eErrStack_ComponentFailure}, stack->Push(&value)) << value.vt;
        }
    }
    EXPECT_EQ(S_OK, stack->get_Count(&count));
    EXPECT_EQ(0, count);
    EXPECT_EQ(S_OK, list->CheckIndex(&(index = 1)));
    EXPECT_EQ(S_OK, list->get_Item(&index, &back));
    EXPECT_EQ(VT_BSTR, back.vt);
    EXPECT_EQ(nullptr, back.bstrVal);
}

}  // namespace
}  // namespace velk::test
