#include "containers/linked_list.h"

#include <utility>

#include "containers/stored_variant.h"

namespace velk {
namespace {

constexpr wchar_t kExpandList[] = L"CLinkedList.ExpandList";

LONG OrZero(const LONG* argument) noexcept { return argument ? *argument : 0; }

// Clients pass any number for the condition, whatever the enumeration names.
LONG NumberOf(const FindConditionConstants* condition) noexcept {
    return OrZero(reinterpret_cast<const LONG*>(condition));
}

}  // namespace

constinit const ClassInfo CLinkedList::kInfo{
    .name = L"CLinkedList",
    .clsid = __uuidof(::CLinkedList),
    .iid = __uuidof(_CLinkedList),
    .events = nullptr,
    .policy = FailurePolicy::ReportAndPassOn,
    .componentFailure = S_OK,
    .creationFailed = nullptr,
};

// Unlike other classes' creation, this has the same report as any member.
void CLinkedList::OnCreate() noexcept {
    Guard(L"CLinkedList.Class_Initialize", [&] { list_.Create(); });
}

STDMETHODIMP CLinkedList::Add(VARIANT* Value, LONG* Before, LONG* After, LONG* result) noexcept {
    if (list_.IsFull() && Value && result) return GrowAndAdd(*Value, OrZero(Before), OrZero(After), result);
    return Guard(L"CLinkedList.Add", result,
                 [&] { return list_.Add(CopyOf(Given(Value)), OrZero(Before), OrZero(After)); });
}

// Copies first: growing marks every item as free, and a value that cannot be copied has to leave the links alone.
HRESULT CLinkedList::GrowAndAdd(const VARIANT& value, LONG before, LONG after, LONG* result) noexcept {
    *result = 0;
    Variant copy;
    HRESULT done = Guard(L"CLinkedList.Add", [&] { copy = CopyOf(value); });
    if (SUCCEEDED(done)) done = Guard(kExpandList, [&] { list_.Grow(); });
    if (FAILED(done)) return done;
    return Guard(L"CLinkedList.Add", result, [&] { return list_.Add(std::move(copy), before, after); });
}

STDMETHODIMP CLinkedList::CheckIndex(LONG* Index) noexcept {
    return Guard(L"CLinkedList.CheckIndex", [&] { list_.CheckIndex(Given(Index)); });
}

STDMETHODIMP CLinkedList::Find(VARIANT* Value, FindConditionConstants* Condition, LONG* StartIndex,
                               VARIANT_BOOL* Descending, LONG* result) noexcept {
    const ComPtr<_CLinkedList> alive(this);  // asking objects who they are may run the client's code
    return Guard(L"CLinkedList.Find", result, [&] {
        const Variant wanted = CopyOf(Given(Value));
        return FindVariant(list_, wanted, NumberOf(Condition), OrZero(StartIndex), Descending && *Descending);
    });
}

STDMETHODIMP CLinkedList::Move(LONG* Index) noexcept {
    return Guard(L"CLinkedList.Move", [&] { list_.Move(Given(Index)); });
}

STDMETHODIMP CLinkedList::MoveFirst() noexcept {
    return Guard(L"CLinkedList.MoveFirst", [&] { list_.MoveFirst(); });
}

STDMETHODIMP CLinkedList::MoveLast() noexcept {
    return Guard(L"CLinkedList.MoveLast", [&] { list_.MoveLast(); });
}

STDMETHODIMP CLinkedList::MoveNext() noexcept {
    return Guard(L"CLinkedList.MoveNext", [&] { list_.MoveNext(); });
}

STDMETHODIMP CLinkedList::MovePrevious() noexcept {
    return Guard(L"CLinkedList.MovePrevious", [&] { list_.MovePrevious(); });
}

STDMETHODIMP CLinkedList::Remove(LONG* Index) noexcept {
    return Guard(L"CLinkedList.Remove", [&] { list_.Remove(OrZero(Index)); });
}

STDMETHODIMP CLinkedList::RemoveAll() noexcept {
    return Guard(L"CLinkedList.RemoveAll", [&] { list_.Create(); });
}

STDMETHODIMP CLinkedList::SetSize(LONG* numEls, LONG* ChunkSize) noexcept {
    const HRESULT checked =
        Guard(L"CLinkedList.SetSize", [&] { VariantList::CheckSize(Given(numEls), OrZero(ChunkSize)); });
    return FAILED(checked) ? checked : Guard(kExpandList, [&] { list_.SetSize(*numEls, OrZero(ChunkSize)); });
}

STDMETHODIMP CLinkedList::get_BOL(VARIANT_BOOL* result) noexcept {
    return Guard(L"CLinkedList.BOL", result, [&] { return list_.AtBeginning(); });
}

STDMETHODIMP CLinkedList::get_Count(LONG* result) noexcept {
    return Guard(L"CLinkedList.Count", result, [&] { return list_.count(); });
}

STDMETHODIMP CLinkedList::get_CurrIndex(LONG* result) noexcept {
    return Guard(L"CLinkedList.CurrIndex", result, [&] { return list_.cursor(); });
}

STDMETHODIMP CLinkedList::put_CurrIndex(LONG* Index) noexcept {
    return Guard(L"CLinkedList.CurrIndex", [&] { list_.SetCursor(Given(Index)); });
}

STDMETHODIMP CLinkedList::get_EOL(VARIANT_BOOL* result) noexcept {
    return Guard(L"CLinkedList.EOL", result, [&] { return list_.AtEnd(); });
}

STDMETHODIMP CLinkedList::get_IsEmpty(VARIANT_BOOL* result) noexcept {
    return Guard(L"CLinkedList.IsEmpty", result, [&] { return list_.IsEmpty(); });
}

STDMETHODIMP CLinkedList::get_Item(LONG* Index, VARIANT* result) noexcept {
    return Guard(L"CLinkedList.Item", result, [&] { return CopyOf(list_.Item(OrZero(Index))); });
}

STDMETHODIMP CLinkedList::put_Item(LONG* Index, VARIANT* Value) noexcept {
    return Guard(L"CLinkedList.Item", [&] {
        Variant value = CopyOf(Given(Value));
        swap(list_.Item(OrZero(Index)), value);  // the old value is destroyed when the new one is in its place
    });
}

// Hosts choose between let and set in their own ways, so both take any value.
STDMETHODIMP CLinkedList::putref_Item(LONG* Index, VARIANT* Value) noexcept { return put_Item(Index, Value); }

}  // namespace velk
