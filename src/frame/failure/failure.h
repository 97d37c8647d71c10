// How a member fails: it throws one of the types below, or one of platform/system_errors.h, and nothing else. FailureOf
// and CaughtFailure turn whatever was thrown into the one form that reports show and that clients receive.
#pragma once

#include <string_view>
#include <type_traits>

#include "platform/platform.h"
#include "platform/system_errors.h"

namespace velk {

// Run-time error n reaches a client as this HRESULT plus n.
inline constexpr HRESULT kRuntimeErrorBase = static_cast<HRESULT>(0x800A0000);

// Who a client is told raised the error: "VelkSprt.CStack" or the library, "VelkSupport".
enum class ErrorSource { Class, Library };

// A numbered error of a class's own, with a fixed English text.
class ClassError : public Thrown {
  public:
    constexpr ClassError(HRESULT code, const wchar_t* description, ErrorSource source = ErrorSource::Class) noexcept
        : Thrown(Kind::Class), code_(code), description_(description), source_(source) {}
    constexpr HRESULT code() const noexcept { return code_; }
    constexpr const wchar_t* description() const noexcept { return description_; }
    constexpr ErrorSource source() const noexcept { return source_; }

  private:
    HRESULT code_;
    const wchar_t* description_;
    ErrorSource source_;
};

// A by-reference argument that points nowhere. The caller broke the calling rules, so no failure policy applies:
// it gets E_POINTER.
class NullArgument : public Thrown {
  public:
    constexpr NullArgument() noexcept : Thrown(Kind::NullArgument) {}
};

template <class T>
T& Given(T* argument) {
    if (!argument) throw NullArgument();
    return *argument;
}

// Clients pass any number for an enumeration, whatever it names: its arguments are read, and kept, as Longs.
template <class T>
auto* AsNumber(T* argument) noexcept {
    if constexpr (std::is_enum_v<T>) {
        return reinterpret_cast<LONG*>(argument);
    } else {
        return argument;
    }
}

// Its texts are those of what was thrown, and live as long.
struct Failure {
    Thrown::Kind kind;
    HRESULT code;  // what a client receives
    LONG number;   // what a report shows: n for run-time error n, else the code
    std::wstring_view description;
    ErrorSource source;
    // Another object's name for itself, if it was one that failed; stands before `source`. A list may leave it out.
    std::wstring_view raisedBy = {};  // NOLINT(readability-redundant-member-init)
};

Failure FailureOf(const Thrown& thrown);

// What is being handled, seen from inside a catch block, whatever it is.
Failure CaughtFailure();

// Sets the thread's error information (number, source, description) and returns the code.
HRESULT RaiseToClient(const Failure& failure, const wchar_t* className, REFIID iid) noexcept;

}  // namespace velk
