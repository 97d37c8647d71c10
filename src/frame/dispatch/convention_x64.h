// How 64-bit code passes arguments: one word each, the first four in registers, where floating-point values have
// registers of their own. So the function type also says which of those four are floating-point.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "frame/dispatch/call_plan.h"

namespace velk::convention {

using Word = std::uintptr_t;

constexpr std::size_t kMaxWords = kMaxArguments + 1;
constexpr unsigned kInRegisters = 3;  // the object itself is the first of the four

// A variant is longer than a word, so the member gets a pointer to it: to one of the call's own, as it may change it.
inline std::size_t LayOut(const VARIANT& value, VARTYPE type, Word* words) noexcept {
    *words = type == VT_VARIANT ? reinterpret_cast<Word>(&value) : reinterpret_cast<Word>(value.byref);
    return 1;
}

inline bool IsFloating(VARTYPE type) noexcept { return type == VT_R4 || type == VT_R8 || type == VT_DATE; }

// What the word at position I is passed as, where bit I of Floating says that it holds a floating-point value.
template <unsigned Floating, std::size_t I>
using Passed = std::conditional_t<(I < kInRegisters) && (Floating >> I & 1), double, Word>;

}  // namespace velk::convention
