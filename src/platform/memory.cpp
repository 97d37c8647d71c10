#include "platform/memory.h"

#include "platform/platform.h"

namespace velk {

bool IsReadable(const void* address, std::size_t size) noexcept {
    constexpr DWORD kReadable = PAGE_READONLY | PAGE_READWRITE | PAGE_WRITECOPY | PAGE_EXECUTE_READ |
                                PAGE_EXECUTE_READWRITE | PAGE_EXECUTE_WRITECOPY;
    MEMORY_BASIC_INFORMATION region{};
    if (!VirtualQuery(address, &region, sizeof region) || region.State != MEM_COMMIT) return false;
    const auto* const end = static_cast<const char*>(region.BaseAddress) + region.RegionSize;
    return (region.Protect & kReadable) && !(region.Protect & PAGE_GUARD) &&
           static_cast<std::size_t>(end - static_cast<const char*>(address)) >= size;
}

}  // namespace velk
