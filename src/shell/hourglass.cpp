#include "shell/hourglass.h"

#include "shell/pointer_override.h"

namespace velk {

constinit const ClassInfo CHourglass::kInfo{
    .name = L"CHourglass",
    .clsid = __uuidof(::CHourglass),
    .iid = __uuidof(_CHourglass),
    .policy = FailurePolicy::Report,
};

// Whatever this object did: an hourglass that another one set ends too.
CHourglass::~CHourglass() { pointer_override::Clear(); }

STDMETHODIMP CHourglass::get_Value(VARIANT_BOOL* result) noexcept { return Get(result, value_); }

STDMETHODIMP CHourglass::put_Value(VARIANT_BOOL* blnValue) noexcept {
    return Guard([&] {
        const bool value = Given(blnValue) != VARIANT_FALSE;
        value_ = value;  // before windows are asked: their handlers may set it again
        value ? pointer_override::ShowHourglass() : pointer_override::Clear();
    });
}

}  // namespace velk
