#pragma once

#include <cstdint>

#include "platform/whole_numbers.h"

namespace velk {

// Minutes in a count of milliseconds that is read as a signed number; halves go to the even neighbour.
inline std::int32_t MinutesFromTicks(std::uint32_t milliseconds) {
    return RoundToLong(static_cast<std::int32_t>(milliseconds) / 1000.0 / 60.0);
}

}  // namespace velk
