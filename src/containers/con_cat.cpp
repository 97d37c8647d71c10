#include "containers/con_cat.h"

#include <new>

#include "platform/text.h"

namespace velk {
namespace {

constexpr DISPID kTextMember = 1;

}  // namespace

constinit const ClassInfo CConCat::kInfo{
    .name = L"CConCat",
    .clsid = __uuidof(::CConCat),
    .iid = __uuidof(_CConCat),
    .policy = FailurePolicy::Report,
    .defaultMember = kTextMember,
};

STDMETHODIMP CConCat::get_Text(BSTR* result) noexcept {
    return PassOn(result, [&] {
        Bstr text;
        *text.Receive() = SysAllocStringLen(nullptr, static_cast<UINT>(buffer_.length()));
        if (!text.get()) throw std::bad_alloc();
        buffer_.CopyTo(reinterpret_cast<char16_t*>(text.get()));
        return text;
    });
}

STDMETHODIMP CConCat::put_Text(BSTR strText) noexcept {
    return PassOn([&] { buffer_.Assign(Utf16(View(strText))); });
}

STDMETHODIMP CConCat::get_Length(LONG* result) noexcept {
    return PassOn(result, [&] { return static_cast<LONG>(buffer_.length()); });
}

STDMETHODIMP CConCat::Append(BSTR* strSource) noexcept {
    return Guard([&] { buffer_.Append(Utf16(View(Given(strSource)))); });
}

}  // namespace velk
