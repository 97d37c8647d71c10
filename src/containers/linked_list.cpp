#include "containers/linked_list.h"

#include <utility>

#include "containers/stored_variant.h"

namespace velk {
namespace {

constexpr char kExpandList[] = "ExpandList";
constexpr DISPID kItemMember = 17;

LONG OrZero(const LONG* argument) noexcept { return argument ? *argument : 0; }

}  // namespace

constinit const ClassInfo CLinkedList::kInfo{
    .name = L"CLinkedList",
    .clsid = __uuidof(::CLinkedList),
    .iid = __uuidof(_CLinkedList),
    .policy = FailurePolicy::ReportAndPassOn,
    .reportedPrefix = L"CLinkedList.",
    .defaultMember = kItemMember,
};

// Unlike other classes' creation, this has the same report as any member.
void CLinkedList::OnCreate() noexcept {
    GuardAs("Class_Initialize", [&] { list_.Create(); });
}

STDMETHODIMP CLinkedList::Add(VARIANT* Value, LONG* Before, LONG* After, LONG* result) noexcept {
    if (list_.IsFull() && Value && result) return GrowAndAdd(*Value, OrZero(Before), OrZero(After), result);
    return Guard(result, [&] { return list_.Add(CopyOf(Given(Value)), OrZero(Before), OrZero(After)); });
}

// Copies first: growing marks every item as free, and a value that cannot be copied has to leave the links alone.
HRESULT CLinkedList::GrowAndAdd(const VARIANT& value, LONG before, LONG after, LONG* result) noexcept {
    *result = 0;
    return GuardAs("Add", [&] {
        Variant copy = CopyOf(value);
        const HRESULT grown = GuardAs(kExpandList, [&] { list_.Grow(); });
        if (SUCCEEDED(grown)) *result = list_.Add(std::move(copy), before, after);
        return grown;
    });
}

STDMETHODIMP CLinkedList::CheckIndex(LONG* Index) noexcept {
    return Guard([&] { list_.CheckIndex(Given(Index)); });
}

STDMETHODIMP CLinkedList::Find(VARIANT* Value, FindConditionConstants* Condition, LONG* StartIndex,
                               VARIANT_BOOL* Descending, LONG* result) noexcept {
    return Guard(result, [&] {
        const Variant wanted = CopyOf(Given(Value));
        return FindVariant(list_, wanted, OrZero(AsNumber(Condition)), OrZero(StartIndex), Descending && *Descending);
    });
}

STDMETHODIMP CLinkedList::Move(LONG* Index) noexcept {
    return Guard([&] { list_.Move(Given(Index)); });
}

STDMETHODIMP CLinkedList::MoveFirst() noexcept {
    return Guard([&] { list_.MoveFirst(); });
}

STDMETHODIMP CLinkedList::MoveLast() noexcept {
    return Guard([&] { list_.MoveLast(); });
}

STDMETHODIMP CLinkedList::MoveNext() noexcept {
    return Guard([&] { list_.MoveNext(); });
}

STDMETHODIMP CLinkedList::MovePrevious() noexcept {
    return Guard([&] { list_.MovePrevious(); });
}

STDMETHODIMP CLinkedList::Remove(LONG* Index) noexcept {
    return Guard([&] { list_.Remove(OrZero(Index)); });
}

STDMETHODIMP CLinkedList::RemoveAll() noexcept {
    return Guard([&] { list_.Create(); });
}

STDMETHODIMP CLinkedList::SetSize(LONG* numEls, LONG* ChunkSize) noexcept {
    const HRESULT checked = Guard([&] { VariantList::CheckSize(Given(numEls), OrZero(ChunkSize)); });
    return FAILED(checked) ? checked : GuardAs(kExpandList, [&] { list_.SetSize(*numEls, OrZero(ChunkSize)); });
}

STDMETHODIMP CLinkedList::get_BOL(VARIANT_BOOL* result) noexcept {
    return Guard(result, [&] { return list_.AtBeginning(); });
}

STDMETHODIMP CLinkedList::get_Count(LONG* result) noexcept {
    return Guard(result, [&] { return list_.count(); });
}

STDMETHODIMP CLinkedList::get_CurrIndex(LONG* result) noexcept {
    return Guard(result, [&] { return list_.cursor(); });
}

STDMETHODIMP CLinkedList::put_CurrIndex(LONG* Index) noexcept {
    return Guard([&] { list_.SetCursor(Given(Index)); });
}

STDMETHODIMP CLinkedList::get_EOL(VARIANT_BOOL* result) noexcept {
    return Guard(result, [&] { return list_.AtEnd(); });
}

STDMETHODIMP CLinkedList::get_IsEmpty(VARIANT_BOOL* result) noexcept {
    return Guard(result, [&] { return list_.IsEmpty(); });
}

STDMETHODIMP CLinkedList::get_Item(LONG* Index, VARIANT* result) noexcept {
    return Guard(result, [&] { return CopyOf(list_.Item(OrZero(Index))); });
}

STDMETHODIMP CLinkedList::put_Item(LONG* Index, VARIANT* Value) noexcept {
    return Guard([&] {
        Variant value = CopyOf(Given(Value));
        swap(list_.Item(OrZero(Index)), value);  // the old value is destroyed when the new one is in its place
    });
}

std::optional<std::vector<Variant>> CLinkedList::Items() {
    std::vector<Variant> items;
    list_.ForEach([&](const Variant& value) { items.push_back(CopyOf(value)); });
    return items;
}

// Hosts choose between let and set in their own ways, so both take any value.
STDMETHODIMP CLinkedList::putref_Item(LONG* Index, VARIANT* Value) noexcept { return put_Item(Index, Value); }

}  // namespace velk
