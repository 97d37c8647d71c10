// What all containers share and no line of facts can say: references that lead nowhere, objects that call back as they
// are destroyed, and memory that is given back.
#include <gtest/gtest.h>

#include <functional>
#include <utility>
#include <vector>

#include "platform/text.h"
#include "support/bare_dispatch.h"
#include "support/client.h"
#include "support/import_patch.h"
#include "support/late_bound.h"

namespace velk::test {
namespace {

constexpr HRESULT Runtime(int number) { return static_cast<HRESULT>(0x800A0000 + number); }

struct Containers : testing::Test {
    LONG Add(VARIANT value) {
        LONG index = 0;
        EXPECT_EQ(S_OK, list->Add(&value, nullptr, nullptr, &index));
        return index;
    }
    void Push(VARIANT value) { EXPECT_EQ(S_OK, stack->Push(&value)); }
    LONG CountOfList() {
        LONG count = -1;
        list->get_Count(&count);
        return count;
    }

    ComPtr<_CLinkedList> list = CreateObject<_CLinkedList>(__uuidof(::CLinkedList));
    ComPtr<_CStack> stack = CreateObject<_CStack>(__uuidof(::CStack));
    ComPtr<_CConCat> builder = CreateObject<_CConCat>(__uuidof(::CConCat));
};

VARIANT Plain(VARTYPE type) {
    VARIANT value{};
    value.vt = type;
    return value;
}

TEST_F(Containers, RefuseReferencesThatLeadNowhereAndKeepANullText) {
    VARIANT self = Arg(&self), nowhere = Plain(VT_BYREF | VT_I4);
    const std::pair<HRESULT, std::vector<VARIANT>> cases[] = {
        {E_POINTER, {nowhere, Arg(static_cast<VARIANT*>(nullptr)), Arg(&nowhere)}},
        {Runtime(13), {self, Plain(VT_VARIANT), Plain(0x1234)}}};
    for (LONG i = 0; i < 100; ++i) Add(Arg(i));  // one more would grow the list and so mark these as free
    LONG index = 7;
    for (const auto& [code, values] : cases) {
        for (VARIANT value : values) {
            EXPECT_EQ(code, list->Add(&value, nullptr, nullptr, &index)) << value.vt;
            EXPECT_EQ(code == E_POINTER ? code : HRESULT{eErrStack_ComponentFailure}, stack->Push(&value)) << value.vt;
        }
    }
    EXPECT_EQ(S_OK, stack->get_Count(&index));
    EXPECT_EQ(100, index + CountOfList());
    EXPECT_EQ(S_OK, list->CheckIndex(&(index = 1)));
    VARIANT null = Plain(VT_BSTR), back{};
    EXPECT_EQ(S_OK, list->put_Item(&index, &null));
    EXPECT_EQ(S_OK, list->get_Item(&index, &back));
    EXPECT_EQ(nullptr, back.bstrVal);
}

// An object that does something when its last reference is released.
class Farewell final : public BareDispatch {
  public:
    explicit Farewell(std::function<void()> onGone) : onGone_(std::move(onGone)) {}
    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) noexcept override {
        return DISP_E_MEMBERNOTFOUND;
    }

  private:
    ~Farewell() override { onGone_(); }
    std::function<void()> onGone_;
};

TEST_F(Containers, AreInOrderAndMayGoWhenAnObjectCallsBackAsItGoes) {
    // The only reference goes to whoever takes the value.
    const auto keep = [](auto store, std::function<void()> onGone) {
        Variant value;
        static_cast<VARIANT&>(value) = Arg(static_cast<IDispatch*>(new Farewell(std::move(onGone))));
        store(value);
    };
    const auto push = [&](VARIANT& value) { Push(value); };
    LONG seen = 0, index = 0, step = -1;
    keep([&](VARIANT& value) { index = Add(value); },
         [&] {
             seen = CountOfList();
             LONG other = Add(Arg(LONG{1}));
             list->Remove(&other);
         });
    keep([&](VARIANT& value) { EXPECT_EQ(S_OK, list->put_Item(&index, &value)); }, [&] { list = nullptr; });
    EXPECT_EQ(1, seen);
    EXPECT_EQ(S_OK, list.get()->Remove(&index));
    EXPECT_FALSE(list);
    keep(push, [&] { stack = nullptr; });
    EXPECT_EQ(S_OK, stack.get()->Clear());
    EXPECT_FALSE(stack);
    stack = CreateObject<_CStack>(__uuidof(::CStack));
    for (LONG i = 1; i < 10; ++i) Push(Arg(i));
    keep(push, [&] { stack = nullptr; });
    EXPECT_EQ(S_OK, stack->put_GrowBy(&step));
    VARIANT more = Arg(LONG{11});
    EXPECT_EQ(Runtime(9), stack.get()->Push(&more));
    EXPECT_FALSE(stack);
}

// Counts what the library's allocations hold.
std::ptrdiff_t held;
void* __cdecl CountedMalloc(std::size_t size) {
    void* const block = malloc(size);
    if (block) held += static_cast<std::ptrdiff_t>(_msize(block));
    return block;
}
void __cdecl CountedFree(void* block) {
    if (block) held -= static_cast<std::ptrdiff_t>(_msize(block));
    free(block);
}

TEST_F(Containers, HoldLittleMemoryAndGiveItBack) {
    const ImportPatch malloc(Library(), "malloc", reinterpret_cast<void*>(&CountedMalloc));
    const ImportPatch free(Library(), "free", reinterpret_cast<void*>(&CountedFree));
    constexpr LONG kMillion = 1'000'000;
    constexpr std::ptrdiff_t kMost = (sizeof(VARIANT) + 4 * sizeof(LONG)) * kMillion;  // a value and its links
    constexpr std::ptrdiff_t kSmall = 10'000 * sizeof(void*);
    for (LONG i = 0; i < kMillion; ++i) Add(Arg(i));
    EXPECT_LE(held, kMost);
    EXPECT_EQ(S_OK, list->RemoveAll());
    EXPECT_LE(held, kSmall);
    for (const bool oneByOne : {true, false}) {
        for (LONG i = 0; i < kMillion; ++i) Push(Arg(i));
        EXPECT_LE(held, kMost);
        Variant top;
        for (LONG i = 0; oneByOne && i < kMillion; ++i) stack->Pop(&top);
        EXPECT_EQ(S_OK, oneByOne ? S_OK : stack->Clear());
        EXPECT_LE(held, kSmall);
    }
    Bstr text(std::wstring(50'000'000, L'x')), back;
    BSTR raw = text.get();
    EXPECT_EQ(S_OK, builder->Append(&raw));
    EXPECT_EQ(S_OK, builder->get_Text(back.Receive()));
    EXPECT_TRUE(View(raw) == View(back.get()));
    EXPECT_EQ(S_OK, builder->put_Text(nullptr));
    EXPECT_LE(held, kSmall);
}

}  // namespace
}  // namespace velk::test
