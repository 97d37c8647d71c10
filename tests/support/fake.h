#pragma once

#include <functional>
#include <type_traits>
#include <utility>

#include "support/client.h"
#include "support/import_patch.h"

namespace velk::test {

// The test's own code in place of a platform function that a module imports:
// Fake clock("GetTickCount", &GetTickCount, [] { return 5; });
template <class Function, class Body>
class Fake;

template <class Result, class... Given, class Body>
class Fake<Result(WINAPI*)(Given...), Body> {
  public:
    Fake(const char* name, Result(WINAPI*)(Given...), Body body, HMODULE module = Library())
        : patch_(module, name, reinterpret_cast<void*>(&Run)) {
        body_ = std::move(body), calls_ = 0;
    }
    int calls() const noexcept { return calls_; }

  private:
    static Result WINAPI Run(Given... given) { return ++calls_, static_cast<Result>(body_(given...)); }

    static inline std::function<Result(Given...)> body_;  // each lambda has a type, and so a place, of its own
    static inline int calls_ = 0;
    ImportPatch patch_;
};
template <class Function, class Body>
Fake(const char*, Function, Body) -> Fake<Function, Body>;
template <class Function, class Body>
Fake(const char*, Function, Body, HMODULE) -> Fake<Function, Body>;

// A platform function where a call is allowed; any other is refused, for want of memory where it can say so.
// kGuarded<&MoveToEx, [](HDC context, auto...) { return context != nullptr; }>
template <auto Function, auto Allows, class = decltype(Function)>
struct Checked;
template <auto Function, auto Allows, class Result, class... Given>
struct Checked<Function, Allows, Result(WINAPI*)(Given...)> {
    static Result WINAPI Call(Given... given) {
        if (Allows(given...)) return Function(given...);
        if constexpr (std::is_same_v<Result, HRESULT>) return E_OUTOFMEMORY;
        return Result{};
    }
};
template <auto Function, auto Allows>
inline void* const kGuarded = reinterpret_cast<void*>(&Checked<Function, Allows>::Call);

}  // namespace velk::test
