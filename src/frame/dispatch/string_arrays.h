// String arrays for script clients, whose own arrays hold variants: scripts cannot read an array of strings.
#pragma once

#include "platform/platform.h"
#include "platform/variant.h"

namespace velk {

// Whether a client's variable holds an array of strings or of variants, or nothing.
bool HoldsStrings(const VARIANT& value) noexcept;

// Makes an array of strings with the same bounds from one of these; nothing gives an unallocated array. It is of fixed
// size where the client's own array may not be replaced, so that the member sees it and leaves it as it is.
HRESULT StringArrayFrom(Variant* strings, const VARIANT& value, bool isVariable) noexcept;

// Stores an array of strings as an array of variants with the same bounds, in a script's variable or in the place that
// a by-reference array names. An unallocated array becomes one without elements, which scripts can walk. What a client
// passed by value stays as it is.
HRESULT StringArrayTo(VARIANT* target, bool isVariable, Variant* strings) noexcept;

}  // namespace velk
