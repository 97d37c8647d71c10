// How 32-bit code passes arguments: all on the stack, each as one or more whole words, whatever it is.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "frame/dispatch/call_plan.h"
#include "frame/dispatch/slot_call.h"

namespace velk::convention {

using Word = std::uintptr_t;

constexpr std::size_t kMaxWords = 4 * kMaxArguments + 1;
constexpr unsigned kInRegisters = 0;

inline std::size_t SizeOf(const SlotArgument& argument) noexcept {
    if (argument.value->vt & VT_BYREF && argument.type != VT_VARIANT) return sizeof(void*);
    switch (argument.type) {
        case VT_R8:
        case VT_CY:
        case VT_DATE:
        case VT_I8:
        case VT_UI8:
            return 8;
        case VT_VARIANT:
            return argument.value->vt == (VT_BYREF | VT_VARIANT) ? sizeof(void*) : sizeof(VARIANT);
        default:
            return sizeof(Word);
    }
}

inline std::size_t LayOut(const SlotArgument& argument, Word* words) noexcept {
    const std::size_t size = SizeOf(argument);
    const void* from = size == sizeof(VARIANT) ? static_cast<const void*>(argument.value) : &argument.value->byref;
    std::memcpy(words, from, size);
    return size / sizeof(Word);
}

inline bool IsFloating(const SlotArgument&) noexcept { return false; }

template <unsigned, std::size_t>
using Passed = Word;

}  // namespace velk::convention
