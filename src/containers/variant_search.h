// Searching a list of variants. The item stands on the left of each condition: fccLess finds items less than the wanted
// value, fccInStr finds items whose text contains the wanted value's text.
#pragma once

#include "containers/node_list.h"
#include "platform/variant.h"

namespace velk {

using VariantList = NodeList<Variant>;

// The index of the first item that matches, or 0. `condition` is one of FindConditionConstants; any other number means
// fccEqual. Two values that cannot be compared throw RuntimeError(Error::TypeMismatch).
LONG FindVariant(VariantList& list, const Variant& wanted, LONG condition, LONG start, bool descending);

}  // namespace velk
