#include "containers/stack.h"

#include <utility>

#include "containers/stack_errors.idl.h"
#include "containers/stored_variant.h"

namespace velk {

constinit const ClassInfo CStack::kInfo{
    .name = L"CStack",
    .clsid = __uuidof(::CStack),
    .iid = __uuidof(_CStack),
    .events = nullptr,
    .policy = FailurePolicy::ComponentFailure,
    .componentFailure = eErrStack_ComponentFailure,
    .creationFailed = L"An error has occured in Velk.CStack.Class_Initialize ",
};

STDMETHODIMP CStack::get_Count(LONG* result) noexcept {
    return Guard(L"Count", result, [&] { return stack_.count(); });
}

STDMETHODIMP CStack::get_GrowBy(LONG* result) noexcept {
    return Guard(L"GrowBy", result, [&] { return stack_.growBy(); });
}

STDMETHODIMP CStack::put_GrowBy(LONG* Value) noexcept {
    return Guard(L"GrowBy", [&] { stack_.SetGrowBy(Given(Value)); });
}

STDMETHODIMP CStack::get_Peak(VARIANT* result) noexcept {
    return Guard(L"Peak", result, [&] {
        const Variant* const top = stack_.Peak();
        return top ? CopyOf(*top) : Variant();
    });
}

STDMETHODIMP CStack::Clear() noexcept {
    return Guard(L"Clear", [&] { stack_.Clear(); });
}

STDMETHODIMP CStack::Pop(VARIANT* result) noexcept {
    return Guard(L"Pop", result, [&] { return stack_.Pop(); });
}

// Deliberate: a failure of the slots is not a component failure, unlike everything else.
STDMETHODIMP CStack::Push(VARIANT* Value) noexcept {
    // A step of less than 0 destroys values, and with one of them the client may release the stack.
    const ComPtr<_CStack> alive(stack_.IsFull() ? this : nullptr);
    Variant copy;
    const HRESULT copied = Guard(L"Push", [&] { copy = CopyOf(Given(Value)); });
    return FAILED(copied) ? copied : PassOn([&] { stack_.Push(std::move(copy)); });
}

}  // namespace velk
