// Hooks of the tests' own, above or below those of the classes.
#pragma once

#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

#include "support/test_hook.h"

#include <commctrl.h>

namespace velk::test {

// A client's own hook, attached as long as it lives.
struct Layer {
    Layer(HWND of, std::vector<LONG> which, LONG response = eMsgResponse_HookAlone)
        : window(HandleToLong(of)), messages(std::move(which)), hook(TestHook::Make(response, true)) {
        Change(&IHookManager::AddHook);
    }
    ~Layer() { Change(&IHookManager::RemoveHook); }
    void Change(decltype(&IHookManager::AddHook) how) const {
        ISubclass* given = hook.get();
        for (const LONG message : messages) EXPECT_EQ(S_OK, (manager.get()->*how)(&given, window, message));
    }

    const ComPtr<IHookManager> manager = HookLibrary().Manager();
    const LONG window;
    const std::vector<LONG> messages;
    const ComPtr<TestHook> hook;
};

inline constexpr std::uint64_t kFarthest = sizeof(void*) == 4 ? 0x30000000 : std::uint64_t{0x123000000000};

// Shows those below it the system's records at another place: in 64-bit programs the system has them anywhere.
struct RelocatedRecords : Layer {
    explicit RelocatedRecords(HWND of, std::uint64_t address = kFarthest)
        : Layer(of, {WM_GETMINMAXINFO, WM_MEASUREITEM, WM_DRAWITEM, WM_NOTIFY}) {
        // A little below where the platform has something there already.
        for (std::uint64_t at = address; !place && address - at < (64 << 20); at -= 1 << 20) {
            auto* const wanted = reinterpret_cast<void*>(static_cast<std::uintptr_t>(at));
            place = static_cast<char*>(VirtualAlloc(wanted, 4096, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
        }
        EXPECT_TRUE(place) << std::hex << address;
        hook->handle = [this](const TestHook::Message& m, LONG_PTR* result) {
            const std::size_t size = SizeOf(m);
            if (!size) return *result = hook->PassOn(manager.get(), m), S_OK;
            char* const mine = std::exchange(place, place + 256);  // for messages inside this one
            std::memcpy(mine, reinterpret_cast<void*>(m.lParam), size);
            *result = hook->PassOn(manager.get(), {m.window, m.number, m.wParam, reinterpret_cast<LPARAM>(mine)});
            std::memcpy(reinterpret_cast<void*>(m.lParam), mine, size);
            return place = mine, S_OK;
        };
    }
    ~RelocatedRecords() { VirtualFree(place, 0, MEM_RELEASE); }

    static std::size_t SizeOf(const TestHook::Message& m) {
        if (m.number == WM_GETMINMAXINFO) return sizeof(MINMAXINFO);
        if (m.number == WM_MEASUREITEM) return sizeof(MEASUREITEMSTRUCT);
        if (m.number == WM_DRAWITEM) return sizeof(DRAWITEMSTRUCT);
        const auto code = static_cast<int>(reinterpret_cast<const NMHDR*>(m.lParam)->code);
        return code <= -300 && code > -400 ? sizeof(NMHEADERW) : 0;  // the header's
    }

    char* place = nullptr;
};

}  // namespace velk::test
