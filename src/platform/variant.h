#pragma once

#include <cstring>
#include <utility>

#include "platform/platform.h"

namespace velk {

// How a script passes a variable: by reference to the whole of it.
inline constexpr VARTYPE kVariable = VT_BYREF | VT_VARIANT;

// Whether a value of this type is all there is to it: nothing behind it to copy or to give back.
constexpr bool IsSelfContained(VARTYPE type) noexcept {
    constexpr unsigned kUndefined = 15;
    constexpr unsigned kMore =
        1u << VT_BSTR | 1u << VT_DISPATCH | 1u << VT_VARIANT | 1u << VT_UNKNOWN | 1u << kUndefined;
    return type <= VT_UINT && (kMore >> type & 1) == 0;
}

// The value of a Long, an Integer or a Byte, which a Long and a Double hold exactly. False for every other type.
inline bool WholeNumberOf(const VARIANT& value, LONG* number) noexcept {
    switch (value.vt) {
        case VT_I4:
            return *number = value.lVal, true;
        case VT_I2:
            return *number = value.iVal, true;
        case VT_UI1:
            return *number = value.bVal, true;
        default:
            return false;
    }
}

// A VARIANT that owns what it holds.
class Variant : public VARIANT {
  public:
    Variant() noexcept { std::memset(static_cast<VARIANT*>(this), 0, sizeof(VARIANT)); }  // which is Empty
    Variant(Variant&& other) noexcept : VARIANT(other) { other.vt = VT_EMPTY; }
    Variant& operator=(Variant other) noexcept {
        swap(*this, other);
        return *this;
    }
    ~Variant() {
        if (!IsSelfContained(vt)) VariantClear(this);  // most hold nothing that needs it, and the call is not free
    }

    friend void swap(Variant& one, Variant& other) noexcept {
        std::swap(static_cast<VARIANT&>(one), static_cast<VARIANT&>(other));
    }

    // Gives the contents away; what stays behind is Empty.
    VARIANT Detach() noexcept {
        const VARIANT contents = *this;
        vt = VT_EMPTY;
        return contents;
    }
};

}  // namespace velk
