#pragma once

#include <gtest/gtest.h>

#include <cstddef>

#include "platform/platform.h"
#include "support/departures.h"

namespace velk::test {

// How many drawing objects and device contexts this process holds, by the platform's counter or read from its own table
// of them.
inline int GdiObjects() {
    const DWORD counted = GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS);
    if (!Departs("GetGuiResources")) return static_cast<int>(counted);
    EXPECT_EQ(0u, counted);
    constexpr DWORD kTableOffset = sizeof(void*) == 4 ? 0x94 : 0xF8;
    const auto ownProcess =
        FindFunction<const std::byte * WINAPI()>(GetModuleHandleW(L"ntdll.dll"), "RtlGetCurrentPeb");
    const std::byte* const process = ownProcess();
    constexpr std::size_t kEntries = 0x4000;
    constexpr std::size_t kEntrySize = 24;
    constexpr std::size_t kTypeOffset = 14;
    const auto* const table = *reinterpret_cast<const std::byte* const*>(process + kTableOffset);
    int count = 0;
    for (std::size_t i = 0; i < kEntries; ++i) count += table[i * kEntrySize + kTypeOffset] != std::byte{0};
    return count;
}

}  // namespace velk::test
