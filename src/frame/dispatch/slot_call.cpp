#include "frame/dispatch/slot_call.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <utility>

// Every argument is a whole number of machine words, so that a slot can be called through a function type of that many
// words. This costs a few nanoseconds where the platform's DispCallFunc costs over a hundred.
namespace velk {
namespace {

using namespace convention;

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

HRESULT SlotCall::Run(IDispatch* object, unsigned slot, void* result) noexcept {
    if (result) AddPointer(result);
    void* const function = (*reinterpret_cast<void***>(object))[slot];
    return kCallers[floating_][count_](object, function, words_);
}

}  // namespace velk
