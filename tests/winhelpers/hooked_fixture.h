// What the tests of the classes that hook windows share.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <utility>

#include "support/import_patch.h"
#include "support/late_bound.h"
#include "support/test_hook.h"
#include "support/test_window.h"

#include <commctrl.h>

namespace velk::test {

inline void ExpectRaised(const Outcome& outcome, std::pair<HRESULT, const wchar_t*> error, const wchar_t* source) {
    EXPECT_EQ(DISP_E_EXCEPTION, outcome.result);
    EXPECT_EQ(error.first, outcome.code);
    EXPECT_EQ(error.second, outcome.description);
    EXPECT_EQ(source, outcome.source);
}

// The hook library, neither registered nor in a manifest, and what the library says to a debugger.
class NoHookLibrary {
  public:
    NoHookLibrary() : patch_(Library(), "OutputDebugStringW", reinterpret_cast<void*>(&Say)) {
        HookLibrary::Unregister();
        said_.clear();
    }
    const std::wstring& said() const { return said_; }

  private:
    static void WINAPI Say(LPCWSTR text) { said_ += text; }

    static inline std::wstring said_;
    ImportPatch patch_;
};

inline HWND NewListView(DWORD style, HWND parent, int columns = 3) {
    const HWND made =
        CreateWindowExW(0, WC_LISTVIEWW, L"", style | LVS_REPORT, 0, 0, 400, 200, parent, nullptr, nullptr, nullptr);
    EXPECT_NE(nullptr, made);
    LVCOLUMNW column{};
    column.mask = LVCF_TEXT | LVCF_WIDTH;
    column.pszText = const_cast<LPWSTR>(L"Column");
    for (int i = 0; i < columns; ++i) {
        SendMessageW(made, LVM_INSERTCOLUMNW, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(&column));
    }
    return made;
}

// A page at an address, as far as this process has it.
inline void* MemoryAt(std::uint64_t address) {
    void* const made = VirtualAlloc(reinterpret_cast<void*>(static_cast<std::uintptr_t>(address)), 4096,
                                    MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
    EXPECT_EQ(address, reinterpret_cast<std::uintptr_t>(made));
    return made;
}

// Another program that subclassed a window, and shows those below it the system's records at another place: in 64-bit
// programs the system has them anywhere.
class RelocatedRecords {
  public:
    static constexpr std::uint64_t kFarthest = sizeof(void*) == 4 ? 0x30000000 : std::uint64_t{0x123000000000};

    explicit RelocatedRecords(HWND window, std::uint64_t address = kFarthest)
        : window_(window), memory_(MemoryAt(address)) {
        place_ = static_cast<char*>(memory_);
        before_ = SetWindowLongPtrW(window_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&Procedure));
    }
    ~RelocatedRecords() {
        SetWindowLongPtrW(window_, GWLP_WNDPROC, before_);
        VirtualFree(memory_, 0, MEM_RELEASE);
    }

  private:
    static std::size_t SizeOf(UINT message, LPARAM lParam) {
        if (message == WM_NOTIFY) {
            const auto code = static_cast<int>(reinterpret_cast<const NMHDR*>(lParam)->code);
            return code <= -300 && code > -400 ? sizeof(NMHEADERW) : 0;  // the header's
        }
        return message == WM_GETMINMAXINFO ? sizeof(MINMAXINFO)
               : message == WM_MEASUREITEM ? sizeof(MEASUREITEMSTRUCT)
               : message == WM_DRAWITEM    ? sizeof(DRAWITEMSTRUCT)
                                           : 0;
    }
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        const std::size_t size = SizeOf(message, lParam);
        if (!size) return CallWindowProcW(reinterpret_cast<WNDPROC>(before_), window, message, wParam, lParam);
        char* const place = place_;
        place_ += 256;  // for messages inside this one
        std::memcpy(place, reinterpret_cast<void*>(lParam), size);
        const LRESULT result = CallWindowProcW(reinterpret_cast<WNDPROC>(before_), window, message, wParam,
                                               reinterpret_cast<LPARAM>(place));
        std::memcpy(reinterpret_cast<void*>(lParam), place, size);
        place_ = place;
        return result;
    }

    static inline LONG_PTR before_;
    static inline char* place_;
    HWND window_;
    void* memory_;
};

}  // namespace velk::test
