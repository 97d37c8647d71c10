#include "support/scratch_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <vector>

#include "platform/handles.h"
#include "platform/platform.h"
#include "support/departures.h"

namespace velk::test {

// A program that was stopped leaves its folder behind, and process numbers come again: the first free name is taken.
ScratchFolder::ScratchFolder() {
    wchar_t temporary[MAX_PATH];
    GetTempPathW(MAX_PATH, temporary);
    const std::wstring prefix = temporary + (L"velk-" + std::to_wstring(GetCurrentProcessId()) + L"-");
    for (int i = 0; path_.empty() && i < 10000; ++i) {
        const std::wstring candidate = prefix + std::to_wstring(i);
        if (CreateDirectoryW(candidate.c_str(), nullptr)) path_ = candidate;
    }
    EXPECT_FALSE(path_.empty());
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::wstring ScratchFolder::Write(std::wstring_view name, std::string_view bytes) const {
    std::wstring path = Path(name);
    const FileHandle file(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
    DWORD written = 0;
    EXPECT_TRUE(WriteFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr));
    EXPECT_EQ(bytes.size(), written);
    return path;
}

std::wstring ScratchFolder::MakeFolder(std::wstring_view name) const {
    std::wstring path = Path(name);
    EXPECT_TRUE(CreateDirectoryW(path.c_str(), nullptr));
    return path;
}

// By the platform's counter, or from the system-wide table, filtered by process.
std::size_t OpenHandles() {
    DWORD counted = 0;
    EXPECT_TRUE(GetProcessHandleCount(GetCurrentProcess(), &counted));
    if (!Departs("GetProcessHandleCount")) return counted;
    EXPECT_EQ(0u, counted);
    struct Entry {
        ULONG process;
        UCHAR type;
        UCHAR attributes;
        USHORT handle;
        PVOID object;
        ULONG access;
    };
    struct Table {
        ULONG count;
        Entry first;
    };
    using Query = LONG(WINAPI*)(ULONG, void*, ULONG, ULONG*);
    const auto query = reinterpret_cast<Query>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtQuerySystemInformation")));
    constexpr ULONG kHandleInformation = 16;
    std::vector<std::byte> buffer(1 << 20);
    EXPECT_EQ(0, query(kHandleInformation, buffer.data(), static_cast<ULONG>(buffer.size()), nullptr));
    const auto* table = reinterpret_cast<const Table*>(buffer.data());
    const std::size_t ours =
        static_cast<std::size_t>(std::count_if(&table->first, &table->first + table->count, [](const Entry& entry) {
            return entry.process == GetCurrentProcessId();
        }));
    EXPECT_NE(0u, ours);
    return ours;
}

}  // namespace velk::test
