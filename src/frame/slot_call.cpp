#include "frame/slot_call.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <utility>

#include "frame/call_plan.h"

namespace velk {

#ifdef __i386__

// In 32-bit code every argument is a whole number of 4-byte words on the stack, so that a slot can be called through a
// function type of that many words. This costs a few nanoseconds where the platform's DispCallFunc costs over a
// hundred.
namespace {

using Word = std::uint32_t;
constexpr std::size_t kMaxWords = 4 * kMaxArguments + 1;

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

using Caller = HRESULT (*)(IDispatch*, void*, const Word*) noexcept;

template <std::size_t... I>
HRESULT CallWithWords(IDispatch* object, void* function, [[maybe_unused]] const Word* words,
                      std::index_sequence<I...>) noexcept {
    using Function = HRESULT(STDMETHODCALLTYPE*)(IDispatch*, decltype(static_cast<void>(I), Word{})...);
    return reinterpret_cast<Function>(function)(object, words[I]...);
}

template <std::size_t... N>
constexpr std::array<Caller, sizeof...(N)> MakeCallers(std::index_sequence<N...>) {
    return {[](IDispatch* object, void* function, const Word* words) noexcept {
        return CallWithWords(object, function, words, std::make_index_sequence<N>());
    }...};
}

constexpr auto kCallers = MakeCallers(std::make_index_sequence<kMaxWords + 1>());

}  // namespace

HRESULT CallSlot(IDispatch* object, unsigned slot, std::span<const SlotArgument> arguments, void* result) noexcept {
    Word words[kMaxWords];
    std::size_t count = 0;
    for (const SlotArgument& argument : arguments) count += LayOut(argument, words + count);
    if (result) words[count++] = reinterpret_cast<Word>(result);
    void* const function = (*reinterpret_cast<void***>(object))[slot];
    return kCallers[count](object, function, words);
}

#else

HRESULT CallSlot(IDispatch* object, unsigned slot, std::span<const SlotArgument> arguments, void* result) noexcept {
    VARTYPE types[kMaxArguments + 1];
    VARIANTARG* values[kMaxArguments + 1];
    UINT count = 0;
    for (const SlotArgument& argument : arguments) {
        types[count] = argument.type == VT_VARIANT ? argument.type : argument.value->vt;
        if (argument.value->vt == (VT_BYREF | VT_VARIANT)) types[count] = VT_BYREF | VT_VARIANT;
        values[count++] = const_cast<VARIANT*>(argument.value);
    }
    VARIANT place;
    if (result) {
        place.vt = VT_BYREF | VT_VARIANT;
        place.byref = result;
        types[count] = place.vt;
        values[count++] = &place;
    }
    VARIANT answer;
    const HRESULT called =
        DispCallFunc(object, slot * sizeof(void*), CC_STDCALL, VT_ERROR, count, types, values, &answer);
    return FAILED(called) ? called : answer.scode;
}

#endif

}  // namespace velk
