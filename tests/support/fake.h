#pragma once

#include <functional>
#include <list>
#include <string>
#include <string_view>
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
        : patch_(module, name, Address(&Run)) {
        body_ = std::move(body);
    }

  private:
    static Result WINAPI Run(Given... given) { return static_cast<Result>(body_(given...)); }

    static inline std::function<Result(Given...)> body_;  // each lambda has a type, and so a place, of its own
    ImportPatch patch_;
};
template <class Function, class Body, class... Module>
Fake(const char*, Function, Body, Module...) -> Fake<Function, Body>;

template <auto Allows, auto Function, class = decltype(Function)>
struct Guarded;
template <auto Allows, auto Function, class Result, class... Given>
struct Guarded<Allows, Function, Result(WINAPI*)(Given...)> {
    static Result WINAPI Call(Given... given) {
        if (Allows(given...)) return Function(given...);
        if constexpr (std::is_same_v<Result, HRESULT>) return E_OUTOFMEMORY;
        return Result{};
    }
};

// The compiler's own text of the template's argument has it.
template <auto Function>
std::string NameOf() {
    const std::string_view told = __PRETTY_FUNCTION__, before = "Function = ";
    const std::size_t start = told.find_first_not_of("& ", told.find(before) + before.size());
    return std::string(told.substr(start, told.find_first_of(";]", start) - start));
}

// Platform functions do only what is allowed for a module; any other call is refused, for want of memory where it can
// say so: Guard<[](HDC context, auto...) { return context != nullptr; }, &MoveToEx, &LineTo>(Library(), patches);
// The main library has to use all of them.
template <auto Allows, auto... Functions>
void Guard(HMODULE module, std::list<ImportPatch>& patches) {
    (patches.emplace_back(module, NameOf<Functions>().c_str(), Address(&Guarded<Allows, Functions>::Call)), ...);
}

}  // namespace velk::test
