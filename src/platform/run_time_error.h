// The automation runtime's numbered errors. Plain C++, so that units without Windows can throw them.
#pragma once

namespace velk {

enum class Error {
    InvalidProcedureCall = 5,
    Overflow = 6,
    OutOfMemory = 7,
    SubscriptOutOfRange = 9,
    DivisionByZero = 11,
    TypeMismatch = 13,
    BadFileName = 52,
    FileNotFound = 53,
    DeviceIo = 57,
    DiskFull = 61,
    PermissionDenied = 70,
    DiskNotReady = 71,
    PathFileAccess = 75,
    PathNotFound = 76,
    ObjectNotSet = 91,
    CannotCreateObject = 429,
    KeyExists = 457,
};

// What members throw on purpose. The guard catches it by this base and asks which one it is: to find that out by
// throwing it again would cost as much as throwing it did.
class Thrown {
  public:
    enum class Kind { Runtime, Class, NullArgument };
    constexpr Kind kind() const noexcept { return kind_; }

  protected:
    explicit constexpr Thrown(Kind kind) noexcept : kind_(kind) {}

  private:
    Kind kind_;
};

// A run-time error such as 5 "Invalid procedure call or argument". Members throw it by its name.
class RuntimeError : public Thrown {
  public:
    explicit constexpr RuntimeError(Error error) noexcept : Thrown(Kind::Runtime), error_(error) {}
    constexpr int number() const noexcept { return static_cast<int>(error_); }
    const wchar_t* description() const noexcept;

  private:
    Error error_;
};

}  // namespace velk
