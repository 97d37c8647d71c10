#pragma once

#include "platform/platform.h"

namespace velk {

// A colour with the high bit set is an index of a system colour; any other value is returned unchanged.
LONG TranslateVBColor(LONG colour) noexcept;

// The platform's own translation, palette included; -1 (no colour) when it fails.
LONG TranslateColor(LONG colour, HPALETTE palette = nullptr) noexcept;

}  // namespace velk
