// Calls a vtable slot with arguments known only at run time.
#pragma once

#include <span>

#include "platform/platform.h"

namespace velk {

// One argument: `value` holds a value of `type`, or, when `value.vt` has VT_BYREF, a pointer to one.
struct SlotArgument {
    const VARIANT* value;
    VARTYPE type;
};

// `result`, if not null, goes last as the pointer to where the member stores its result.
HRESULT CallSlot(IDispatch* object, unsigned slot, std::span<const SlotArgument> arguments, void* result) noexcept;

}  // namespace velk
