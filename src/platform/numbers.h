#pragma once

#include <string_view>

#include "platform/platform.h"

namespace velk {

// The text as a Long by the user's locale settings, rounded half to even. Error 13 when it is no number, 6 when it does
// not fit.
LONG LongFromText(std::wstring_view text);

}  // namespace velk
