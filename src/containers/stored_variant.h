#pragma once

#include "platform/variant.h"

namespace velk {

namespace detail {
void CopyInto(Variant* copy, const VARIANT& value);
}

// The value as a container keeps it and hands it out: what is passed by reference is followed, strings and arrays are
// copied, objects are shared.
inline Variant CopyOf(const VARIANT& value) {
    Variant copy;
    if (IsSelfContained(value.vt)) {
        static_cast<VARIANT&>(copy) = value;
    } else {
        detail::CopyInto(&copy, value);
    }
    return copy;
}

inline bool HoldsObject(const VARIANT& value) noexcept { return value.vt == VT_DISPATCH || value.vt == VT_UNKNOWN; }

}  // namespace velk
