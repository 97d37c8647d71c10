// What all containers share: values of every kind come back as they were, objects that call back while they go do no
// harm, and memory is given back.
#include <gtest/gtest.h>

#include <functional>
#include <utility>
#include <vector>

#include "platform/run_time_error.h"
#include "platform/text.h"
#include "support/bare_dispatch.h"
#include "support/client.h"
#include "support/late_bound.h"
#include "support/malloc_spy.h"
#include "support/report_recorder.h"
#include "support/scarce_memory.h"

namespace velk::test {
namespace {

constexpr HRESULT Runtime(int number) { return static_cast<HRESULT>(0x800A0000 + number); }

// An object that does something when its last reference goes.
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

struct Containers : testing::Test {
    LONG Add(const VARIANT& value) {
        LONG index = 0;
        EXPECT_EQ(S_OK, list->Add(const_cast<VARIANT*>(&value), nullptr, nullptr, &index));
        return index;
    }
    Variant Item(LONG index) {
        Variant item;
        EXPECT_EQ(S_OK, list->get_Item(&index, &item));
        return item;
    }
    void Remove(LONG index) { EXPECT_EQ(S_OK, list->Remove(&index)); }
    LONG CountOfList() {
        LONG count = -1;
        list->get_Count(&count);
        return count;
    }
    void Push(const VARIANT& value) { EXPECT_EQ(S_OK, stack->Push(const_cast<VARIANT*>(&value))); }
    Variant Pop() {
        Variant top;
        EXPECT_EQ(S_OK, stack->Pop(&top));
        return top;
    }
    // The only reference goes to whoever takes the variant.
    static Variant FarewellWith(std::function<void()> onGone) {
        Variant value;
        static_cast<VARIANT&>(value) = Arg(static_cast<IDispatch*>(new Farewell(std::move(onGone))));
        return value;
    }

    ComPtr<_CLinkedList> list = CreateObject<_CLinkedList>(__uuidof(::CLinkedList));
    ComPtr<_CStack> stack = CreateObject<_CStack>(__uuidof(::CStack));
    ComPtr<_CConCat> builder = CreateObject<_CConCat>(__uuidof(::CConCat));
};

Variant Plain(VARTYPE type, LONGLONG bits) {
    Variant value;
    value.llVal = bits;
    value.vt = type;
    return value;
}

Variant ArrayOf(const wchar_t* text) {
    Variant value;
    value.parray = SafeArrayCreateVector(VT_VARIANT, 0, 1);
    value.vt = VT_ARRAY | VT_VARIANT;
    static_cast<VARIANT*>(value.parray->pvData)[0] = Text(text).Detach();
    return value;
}

std::wstring FirstOf(const VARIANT& array) { return TextOf(static_cast<VARIANT*>(array.parray->pvData)[0]); }

TEST_F(Containers, GiveBackEveryKindOfValue) {
    const VARTYPE plain[] = {VT_EMPTY, VT_NULL, VT_I2,  VT_I4,  VT_R4, VT_R8,  VT_CY,  VT_DATE, VT_ERROR,
                             VT_BOOL,  VT_I1,   VT_UI1, VT_UI2, VT_I8, VT_UI8, VT_UI4, VT_INT,  VT_UINT};
    for (const VARTYPE type : plain) {
        const Variant value = Plain(type, 0x7F123456789A0041);
        Push(value);
        for (const Variant& back : {Item(Add(value)), Pop()}) {
            EXPECT_EQ(type, back.vt);
            EXPECT_TRUE(type == VT_EMPTY || type == VT_NULL || value.llVal == back.llVal) << type;
        }
    }
    Variant decimal;
    VarDecFromI4(-77, &decimal.decVal);
    decimal.vt = VT_DECIMAL;
    Variant back = Item(Add(decimal));
    EXPECT_EQ(VT_DECIMAL, back.vt);
    EXPECT_EQ(VARCMP_EQ, VarDecCmp(&decimal.decVal, &back.decVal));
    EXPECT_EQ(DISP_E_PARAMNOTFOUND, Item(Add(Missing())).scode);
    EXPECT_EQ(VT_UNKNOWN, Item(Add(Plain(VT_UNKNOWN, 0))).vt);
    EXPECT_EQ(nullptr, Item(Add(Plain(VT_BSTR, 0))).bstrVal);
}

TEST_F(Containers, KeepTheirOwnCopies) {
    const LONG before = MallocSpy::Alive();
    {
        Variant array = ArrayOf(L"old");
        Variant text = Text(L"old");
        LONG number = 5;
        const LONG ofArray = Add(array), ofText = Add(Arg(&text)), ofNumber = Add(Ref(VT_I4, &number));
        const LONG ofReference = Add(Ref(VT_BSTR, &text.bstrVal));
        static_cast<VARIANT*>(array.parray->pvData)[0].bstrVal[0] = L'X';
        text.bstrVal[0] = L'X';
        number = 6;
        EXPECT_EQ(L"old", FirstOf(Item(ofArray)));
        EXPECT_EQ(L"old", TextOf(Item(ofText)));
        EXPECT_EQ(L"old", TextOf(Item(ofReference)));
        EXPECT_EQ(VT_I4, Item(ofNumber).vt);
        EXPECT_EQ(5, Item(ofNumber).lVal);
        const Variant given = Item(ofArray);
        static_cast<VARIANT*>(given.parray->pvData)[0].bstrVal[0] = L'Y';
        EXPECT_EQ(L"old", FirstOf(Item(ofArray)));
        Push(text);
        EXPECT_EQ(S_OK, stack->Clear());
        list = nullptr;
    }
    EXPECT_EQ(before, MallocSpy::Alive());
}

TEST_F(Containers, RefuseReferencesThatLeadNowhere) {
    Variant self, nowhere = Plain(VT_BYREF | VT_I4, 0);
    static_cast<VARIANT&>(self) = Arg(static_cast<VARIANT*>(&self));
    const std::pair<HRESULT, std::vector<VARIANT>> cases[] = {
        {E_POINTER, {nowhere, Arg(static_cast<VARIANT*>(nullptr)), Arg(&nowhere)}},
        {Runtime(13), {self, Plain(VT_VARIANT, 0), Plain(0x1234, 0)}}};
    for (LONG i = 0; i < 100; ++i) Add(Arg(i));  // one more would grow the list and so mark these as free
    LONG index = 7;
    for (const auto& [code, values] : cases) {
        for (VARIANT value : values) {
            EXPECT_EQ(code, list->Add(&value, nullptr, nullptr, &index)) << value.vt;
            EXPECT_EQ(code == E_POINTER ? code : HRESULT{eErrStack_ComponentFailure}, stack->Push(&value)) << value.vt;
        }
    }
    for (const HRESULT answer :
         {list->Add(nullptr, nullptr, nullptr, &index), stack->Push(nullptr), builder->Append(nullptr)}) {
        EXPECT_EQ(E_POINTER, answer);
    }
    EXPECT_EQ(S_OK, stack->get_Count(&index));
    EXPECT_EQ(100, index + CountOfList());
    EXPECT_EQ(S_OK, list->CheckIndex(&(index = 1)));
    self.vt = VT_EMPTY;
}

TEST_F(Containers, AreInOrderAndMayGoWhenAnObjectCallsBackAsItGoes) {
    LONG seen = 0;
    LONG index = Add(FarewellWith([&] {
        seen = CountOfList();
        Remove(Add(Arg(LONG{1})));
    }));
    Variant other = FarewellWith([&] { list = nullptr; });  // the object holds the last reference to its container
    EXPECT_EQ(S_OK, list->put_Item(&index, &other));
    other = Variant();
    EXPECT_EQ(1, seen);
    EXPECT_EQ(S_OK, list.get()->Remove(&index));
    EXPECT_FALSE(list);
    Push(FarewellWith([&] { stack = nullptr; }));
    EXPECT_EQ(S_OK, stack.get()->Clear());
    EXPECT_FALSE(stack);
    stack = CreateObject<_CStack>(__uuidof(::CStack));
    for (LONG i = 1; i < 10; ++i) Push(Arg(i));
    Push(FarewellWith([&] { stack = nullptr; }));
    LONG step = -1;
    EXPECT_EQ(S_OK, stack->put_GrowBy(&step));
    VARIANT more = Arg(LONG{11});
    EXPECT_EQ(Runtime(9), stack.get()->Push(&more));
    EXPECT_FALSE(stack);
}

// ---- Memory ----

// Counts what the library's allocations hold.
class Allocations {
  public:
    Allocations() { held = 0; }
    static inline std::ptrdiff_t held = 0;

  private:
    static void* __cdecl Malloc(std::size_t size) {
        void* const block = malloc(size);
        if (block) held += static_cast<std::ptrdiff_t>(_msize(block));
        return block;
    }
    static void __cdecl Free(void* block) {
        if (block) held -= static_cast<std::ptrdiff_t>(_msize(block));
        free(block);
    }
    ImportPatch malloc_{Library(), "malloc", reinterpret_cast<void*>(&Malloc)};
    ImportPatch free_{Library(), "free", reinterpret_cast<void*>(&Free)};
};

constexpr LONG kMillion = 1'000'000;
constexpr std::ptrdiff_t kItem = sizeof(VARIANT) + 4 * sizeof(LONG);  // a value and its links
constexpr std::ptrdiff_t kSmall = 10'000 * sizeof(void*);

TEST_F(Containers, HoldLittleMemoryAndGiveItBack) {
    const Allocations allocations;
    for (LONG i = 0; i < kMillion; ++i) Add(Arg(i));
    EXPECT_LE(Allocations::held, kItem * kMillion);
    EXPECT_EQ(S_OK, list->RemoveAll());
    EXPECT_LE(Allocations::held, kSmall);
    for (const bool oneByOne : {true, false}) {
        for (LONG i = 0; i < kMillion; ++i) Push(Arg(i));
        EXPECT_LE(Allocations::held, kItem * kMillion);
        for (LONG i = 0; oneByOne && i < kMillion; ++i) Pop();
        EXPECT_EQ(S_OK, oneByOne ? S_OK : stack->Clear());
        EXPECT_LE(Allocations::held, kSmall);
    }

    constexpr std::size_t kHundredMegabytes = 50'000'000;
    Bstr text(std::wstring(kHundredMegabytes, L'x'));
    BSTR raw = text.get();
    EXPECT_EQ(S_OK, builder->Append(&raw));
    Bstr back;
    EXPECT_EQ(S_OK, builder->get_Text(back.Receive()));
    EXPECT_TRUE(View(raw) == View(back.get()));
    EXPECT_EQ(S_OK, builder->put_Text(nullptr));
    EXPECT_LE(Allocations::held, kSmall);
}

TEST_F(Containers, StayAsTheyWereWithoutMemory) {
    const ReportRecorder recorder(Library());
    const auto expectReport = [&](const wchar_t* title) {
        ASSERT_FALSE(recorder.reports().empty());
        EXPECT_EQ(title, recorder.reports().back().title);
        EXPECT_EQ(L"Error: 7. Out of memory", recorder.reports().back().text);
    };
    const Bstr longer(std::wstring(1000, L'x'));
    BSTR raw = longer.get();
    VARIANT value = Arg(LONG{1});
    EXPECT_EQ(S_OK, builder->put_Text(Bstr(L"abc").get()));
    for (LONG i = 1; i < 100; ++i) EXPECT_EQ(i, Add(value));
    {
        const ScarceMemory scarce(1000, SIZE_MAX);
        LONG size = 1000, length = 9;
        EXPECT_EQ(Runtime(7), list->SetSize(&size, nullptr));
        expectReport(L"CLinkedList.ExpandList");
        EXPECT_EQ(Runtime(7), list->RemoveAll());
        expectReport(L"CLinkedList.RemoveAll");
        EXPECT_EQ(100, Add(value));
        EXPECT_EQ(Runtime(7), list->Add(&value, nullptr, nullptr, &size));
        expectReport(L"CLinkedList.ExpandList");
        EXPECT_EQ(0, size);
        EXPECT_EQ(S_OK, list->CheckIndex(&(size = 1)));  // growing would have marked it as free
        EXPECT_EQ(S_OK, builder->Append(&raw));
        expectReport(L"Append");
        EXPECT_EQ(Runtime(7), builder->put_Text(raw));
        EXPECT_EQ(S_OK, builder->get_Length(&length));
        EXPECT_EQ(3, length);
        EXPECT_EQ(Runtime(7), stack->Push(&value));
        EXPECT_EQ(S_OK, stack->get_Count(&length));
        EXPECT_EQ(0, length);
        list = CreateObject<_CLinkedList>(__uuidof(::CLinkedList));
        expectReport(L"CLinkedList.Class_Initialize");
    }
    EXPECT_EQ(1, Add(value));
}

}  // namespace
}  // namespace velk::test
