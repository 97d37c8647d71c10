#pragma once

#include <utility>

#include "frame/platform.h"

namespace velk {

// A VARIANT that owns what it holds.
class Variant : public VARIANT {
  public:
    Variant() noexcept : VARIANT() {}  // all zero, which is Empty
    Variant(Variant&& other) noexcept : VARIANT(other) { VariantInit(&other); }
    Variant& operator=(Variant other) noexcept {
        std::swap(static_cast<VARIANT&>(*this), static_cast<VARIANT&>(other));
        return *this;
    }
    ~Variant() {
        if (vt != VT_EMPTY) VariantClear(this);  // most never hold anything, and the call is not free
    }

    // Gives the contents away; what stays behind is Empty.
    VARIANT Detach() noexcept {
        const VARIANT contents = *this;
        VariantInit(this);
        return contents;
    }
};

}  // namespace velk
