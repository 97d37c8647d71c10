#include "containers/stack.h"

#include <utility>

#include "containers/stack_errors.idl.h"
#include "containers/stored_variant.h"

namespace velk {

constinit const ClassInfo CStack::kInfo{
    .name = L"CStack",
    .clsid = __uuidof(::CStack),
    .iid = __uuidof(_CStack),
    .policy = FailurePolicy::ComponentFailure,
    .componentFailure = eErrStack_ComponentFailure,
};

STDMETHODIMP CStack::get_Count(LONG* result) noexcept {
    return Guard(result, [&] { return stack_.count(); });
}

STDMETHODIMP CStack::get_GrowBy(LONG* result) noexcept {
    return Guard(result, [&] { return stack_.growBy(); });
}

STDMETHODIMP CStack::put_GrowBy(LONG* Value) noexcept {
    return Guard([&] { stack_.SetGrowBy(Given(Value)); });
}

STDMETHODIMP CStack::get_Peak(VARIANT* result) noexcept {
    return Guard(result, [&] {
        const Variant* const top = stack_.Peak();
        return top ? CopyOf(*top) : Variant();
    });
}

STDMETHODIMP CStack::Clear() noexcept {
    return Guard([&] { stack_.Clear(); });
}

STDMETHODIMP CStack::Pop(VARIANT* result) noexcept {
    return Guard(result, [&] { return stack_.Pop(); });
}

// Deliberate: a failure of the slots is not a component failure, unlike everything else.
STDMETHODIMP CStack::Push(VARIANT* Value) noexcept {
    return Guard([&] {
        Variant copy = CopyOf(Given(Value));
        return PassOn([&] { stack_.Push(std::move(copy)); });
    });
}

std::optional<std::vector<Variant>> CStack::Items() {
    std::vector<Variant> items;
    stack_.ForEach([&](const Variant& value) { items.push_back(CopyOf(value)); });
    return items;
}

}  // namespace velk
