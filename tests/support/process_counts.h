// What this process has open, by the platform's own tables.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "platform/platform.h"
#include "support/departures.h"

#include <winternl.h>

namespace velk::test {

// Kernel handles.
inline std::size_t OpenHandles() {
    constexpr ULONG kSize = 1 << 20;
    static const auto query =
        FindFunction<decltype(NtQuerySystemInformation)>(GetModuleHandleW(L"ntdll.dll"), "NtQuerySystemInformation");
    static auto* const table = static_cast<SYSTEM_HANDLE_INFORMATION*>(std::malloc(kSize));
    EXPECT_EQ(0, query(SystemHandleInformation, table, kSize, nullptr));
    const auto isOwn = [](const auto& entry) { return entry.OwnerPid == GetCurrentProcessId(); };
    return static_cast<std::size_t>(std::count_if(table->Handle, table->Handle + table->Count, isOwn));
}

// Drawing objects and device contexts.
inline int GdiObjects() {
    const DWORD counted = GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS);
    EXPECT_EQ(Departs("GetGuiResources"), counted == 0);
    if (counted) return static_cast<int>(counted);
    struct Entry {
        BYTE unknown[14], type, more[9];
    };
    constexpr std::size_t kTable = sizeof(void*) == 4 ? 0x94 : 0xF8, kEntries = 0x4000;
    const auto* const process = reinterpret_cast<const BYTE*>(NtCurrentTeb()->ProcessEnvironmentBlock);
    const auto* const table = *reinterpret_cast<const Entry* const*>(process + kTable);
    return static_cast<int>(std::count_if(table, table + kEntries, [](const Entry& entry) { return entry.type != 0; }));
}

}  // namespace velk::test
