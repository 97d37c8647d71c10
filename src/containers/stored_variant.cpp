#include "containers/stored_variant.h"

#include <new>

#include "frame/failure/failure.h"

namespace velk {
namespace {

// Automation follows references without looking where they lead.
void RequireTarget(const VARIANT& value) {
    if ((value.vt & VT_BYREF) && !value.byref) throw NullArgument();
}

// Most of what is stored are strings, and the platform's general way takes a third longer.
BSTR CopyOfString(BSTR text) {
    if (!text) return nullptr;
    const BSTR copy = SysAllocStringByteLen(reinterpret_cast<const char*>(text), SysStringByteLen(text));
    if (!copy) throw std::bad_alloc();
    return copy;
}

}  // namespace

void detail::CopyInto(Variant* copy, const VARIANT& value) {
    if (value.vt == VT_BSTR) {
        copy->bstrVal = CopyOfString(value.bstrVal);
        copy->vt = VT_BSTR;
        return;
    }
    RequireTarget(value);
    const VARIANT& target = value.vt == kVariable ? *value.pvarVal : value;
    RequireTarget(target);
    if (target.vt == kVariable || target.vt == VT_VARIANT) throw RuntimeError(Error::TypeMismatch);
    ThrowIfFailed(VariantCopyInd(copy, const_cast<VARIANT*>(&target)));
}

}  // namespace velk
