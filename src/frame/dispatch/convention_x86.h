// How 32-bit code passes arguments: all on the stack, each as one or more whole words, whatever it is.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "frame/dispatch/call_plan.h"

namespace velk::convention {

using Word = std::uintptr_t;

constexpr std::size_t kMaxWords = 4 * kMaxArguments + 1;
constexpr unsigned kInRegisters = 0;

inline std::size_t LayOut(const VARIANT& value, VARTYPE type, Word* words) noexcept {
    switch (type) {
        case VT_R8:
        case VT_CY:
        case VT_DATE:
        case VT_I8:
        case VT_UI8:
            std::memcpy(words, &value.byref, 8);
            return 2;
        case VT_VARIANT:
            std::memcpy(words, &value, sizeof value);
            return sizeof value / sizeof(Word);
        default:
            std::memcpy(words, &value.byref, sizeof(Word));
            return 1;
    }
}

inline bool IsFloating(VARTYPE) noexcept { return false; }

template <unsigned, std::size_t>
using Passed = Word;

}  // namespace velk::convention
