// What no line of facts can say, as late-bound calls convert: values that lead nowhere.
#include <gtest/gtest.h>

#include <utility>

#include "support/client.h"
#include "support/late_bound.h"

namespace velk::test {
namespace {

TEST(Containers, RefuseReferencesThatLeadNowhereAndKeepANullText) {
    const auto list = CreateObject<_CLinkedList>(__uuidof(::CLinkedList));
    const auto stack = CreateObject<_CStack>(__uuidof(::CStack));
    VARIANT self = Arg(&self), nowhere = Ref(VT_I4, nullptr), typeless{}, item{};
    item.vt = VT_BSTR, typeless.vt = 0x1234;
    LONG index = 0;
    for (int i = 0; i < 100; ++i) list->Add(&item, nullptr, nullptr, &index);
    const std::pair<VARIANT, HRESULT> cases[] = {{nowhere, E_POINTER},
                                                 {Arg(&nowhere), E_POINTER},
                                                 {Ref(VT_VARIANT, nullptr), E_POINTER},
                                                 {self, eErrStack_ComponentFailure},
                                                 {typeless, eErrStack_ComponentFailure}};
    for (auto [value, code] : cases) {
        EXPECT_EQ(code, stack->Push(&value)) << value.vt;
        EXPECT_EQ(code == E_POINTER ? code : static_cast<HRESULT>(0x800A000D),
                  list->Add(&value, nullptr, nullptr, &index))
            << value.vt;
    }
    EXPECT_EQ(S_OK, list->CheckIndex(&(index = 1))) << "one more would have grown the list and so marked it as free";
    EXPECT_EQ(S_OK, list->get_Item(&index, &item));
    EXPECT_TRUE(item.vt == VT_BSTR && !item.bstrVal);
}

}  // namespace
}  // namespace velk::test
