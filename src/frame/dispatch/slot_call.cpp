#include "frame/dispatch/slot_call.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

#include "frame/dispatch/call_plan.h"

// Every argument is a whole number of machine words, so that a slot can be called through a function type of that many
// words. This costs a few nanoseconds where the platform's DispCallFunc costs over a hundred. 64-bit code passes
// floating-point values among the first four arguments in registers of their own, so there the type also says which of
// them those are.
namespace velk {
namespace {

using Word = std::uintptr_t;

#ifdef _WIN64
constexpr std::size_t kMaxWords = kMaxArguments + 1;
constexpr unsigned kInRegisters = 3;  // the object itself is the first of the four

// A variant is longer than a word, so the member gets a pointer to it: to one of the call's own, as it may change it.
std::size_t LayOut(const SlotArgument& argument, Word* words) noexcept {
    const bool isPointer = argument.value->vt == (VT_BYREF | VT_VARIANT) || argument.type != VT_VARIANT;
    *words = isPointer ? reinterpret_cast<Word>(argument.value->byref) : reinterpret_cast<Word>(argument.value);
    return 1;
}

bool IsFloating(const SlotArgument& argument) noexcept {
    const bool byReference = (argument.value->vt & VT_BYREF) != 0;
    return !byReference && (argument.type == VT_R4 || argument.type == VT_R8 || argument.type == VT_DATE);
}

// What the word at position I is passed as, where bit I of Floating says that it holds a floating-point value.
template <unsigned Floating, std::size_t I>
using Passed = std::conditional_t<(I < kInRegisters) && (Floating >> I & 1), double, Word>;
#else
constexpr std::size_t kMaxWords = 4 * kMaxArguments + 1;
constexpr unsigned kInRegisters = 0;

std::size_t SizeOf(const SlotArgument& argument) noexcept {
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

std::size_t LayOut(const SlotArgument& argument, Word* words) noexcept {
    const std::size_t size = SizeOf(argument);
    const void* from = size == sizeof(VARIANT) ? static_cast<const void*>(argument.value) : &argument.value->byref;
    std::memcpy(words, from, size);
    return size / sizeof(Word);
}

bool IsFloating(const SlotArgument&) noexcept { return false; }

template <unsigned, std::size_t>
using Passed = Word;
#endif

using Caller = HRESULT (*)(IDispatch*, void*, const Word*) noexcept;

template <class To>
To As(Word word) noexcept {
    To value{};
    std::memcpy(&value, &word, sizeof word);
    return value;
}

template <unsigned Floating, std::size_t... I>
HRESULT CallWithWords(IDispatch* object, void* function, [[maybe_unused]] const Word* words,
                      std::index_sequence<I...>) noexcept {
    using Function = HRESULT(STDMETHODCALLTYPE*)(IDispatch*, Passed<Floating, I>...);
    return reinterpret_cast<Function>(function)(object, As<Passed<Floating, I>>(words[I])...);
}

using CallersByCount = std::array<Caller, kMaxWords + 1>;

template <unsigned Floating, std::size_t... N>
constexpr CallersByCount MakeCallers(std::index_sequence<N...>) {
    return {[](IDispatch* object, void* function, const Word* words) noexcept {
        return CallWithWords<Floating>(object, function, words, std::make_index_sequence<N>());
    }...};
}

template <std::size_t... Floating>
constexpr std::array<CallersByCount, sizeof...(Floating)> MakeAllCallers(std::index_sequence<Floating...>) {
    return {MakeCallers<Floating>(std::make_index_sequence<kMaxWords + 1>())...};
}

constexpr auto kCallers = MakeAllCallers(std::make_index_sequence<1 << kInRegisters>());

}  // namespace

HRESULT CallSlot(IDispatch* object, unsigned slot, std::span<const SlotArgument> arguments, void* result) noexcept {
    Word words[kMaxWords];
    std::size_t count = 0;
    unsigned floating = 0;
    for (const SlotArgument& argument : arguments) {
        if (count < kInRegisters && IsFloating(argument)) floating |= 1u << count;
        count += LayOut(argument, words + count);
    }
    if (result) words[count++] = reinterpret_cast<Word>(result);
    void* const function = (*reinterpret_cast<void***>(object))[slot];
    return kCallers[floating][count](object, function, words);
}

}  // namespace velk
