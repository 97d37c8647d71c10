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
    int objects = 0;  // by their places in the process's table
    for (ULONG place = 0; place < 0x4000; ++place) objects += GetObjectType(ULongToHandle(place)) != 0;
    return objects;
}

}  // namespace velk::test
