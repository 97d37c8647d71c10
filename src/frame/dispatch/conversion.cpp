#include "frame/dispatch/conversion.h"

#include <algorithm>
#include <charconv>

#include "platform/variant.h"

namespace velk {
namespace {

// The whole number that a Double is converted to: halves go to the even neighbour, whatever rounding the host has set.
bool Rounded(double value, LONG* number) noexcept {
    if (!(value > -2147483647.0 && value < 2147483646.0)) return false;
    const auto whole = static_cast<LONG>(value);
    const double rest = value - whole;
    const LONG odd = whole & 1;
    *number = whole + (rest > 0.5 || (rest == 0.5 && odd)) - (rest < -0.5 || (rest == -0.5 && odd));
    return true;
}

// The number as a value of another numeric type. False when it does not fit, which the platform turns into an error.
bool StoreNumber(VARIANT* own, VARTYPE type, LONG number) noexcept {
    own->vt = type;
    own->llVal = 0;
    switch (type) {
        case VT_I4:
            return own->lVal = number, true;
        case VT_I2:
            return own->iVal = static_cast<SHORT>(number), own->iVal == number;
        case VT_BOOL:
            return own->boolVal = number ? VARIANT_TRUE : VARIANT_FALSE, true;
        case VT_R8:
            return own->dblVal = number, true;
        default:
            return false;
    }
}

[[gnu::noinline]] bool StoreText(VARIANT* own, LONG number) noexcept {
    char digits[12];
    wchar_t text[12];
    const char* const end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    const auto length = static_cast<UINT>(std::copy(static_cast<const char*>(digits), end, text) - text);
    own->vt = VT_BSTR;
    own->bstrVal = SysAllocStringLen(text, length);
    return own->bstrVal != nullptr;
}

}  // namespace

bool Convert(VARIANT* own, VARTYPE type, const VARIANT& value) noexcept {
    LONG number = 0;
    const bool fits =
        value.vt == VT_EMPTY || (value.vt == VT_R8 ? Rounded(value.dblVal, &number) : WholeNumberOf(value, &number));
    if (!fits) return false;
    if (type == VT_BSTR) return (value.vt == VT_I2 || value.vt == VT_I4) && StoreText(own, number);
    return (type != VT_BOOL || value.vt != VT_R8) && StoreNumber(own, type, number);
}

}  // namespace velk
