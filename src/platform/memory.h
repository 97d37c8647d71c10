#pragma once

#include <cstddef>

namespace velk {

// Whether the process may read that many bytes there. For addresses that clients pass and the platform would read
// unasked, which would bring the host down where there is no memory.
bool IsReadable(const void* address, std::size_t size) noexcept;

}  // namespace velk
