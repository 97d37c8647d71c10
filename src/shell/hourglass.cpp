#include "shell/hourglass.h"

#include "shell/pointer_override.h"

namespace velk {

constinit const ClassInfo CHourglass::kInfo{
    .name = L"CHourglass",
    .clsid = __uuidof(::CHourglass),
    .iid = __uuidof(_CHourglass),
    .events = nullptr,
    .policy = FailurePolicy::Report,
    .componentFailure = S_OK,
    .creationFailed = nullptr,
};

// Whatever this object did: an hourglass that another one set ends too.
CHourglass::~CHourglass() { pointer_override::Clear(); }

STDMETHODIMP CHourglass::get_Value(VARIANT_BOOL* result) noexcept {
    return Guard(L"Value", result, [&] { return value_; });
}

STDMETHODIMP CHourglass::put_Value(VARIANT_BOOL* blnValue) noexcept {
    return Guard(L"Value", [&] {
        const bool value = Given(blnValue) != VARIANT_FALSE;
        value_ = value;  // before windows are asked: their handlers may set it again
        value ? pointer_override::ShowHourglass() : pointer_override::Clear();
    });
}

}  // namespace velk
