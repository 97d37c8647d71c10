// The conversions that late-bound calls make themselves, exactly as the platform does: between numbers, and of a whole
// number to a text.
#pragma once

#include "platform/platform.h"

namespace velk {

// Stores the value as one of another type, which is the client's to clear. False for what is the platform's to convert,
// or to refuse.
bool Convert(VARIANT* own, VARTYPE type, const VARIANT& value) noexcept;

}  // namespace velk
