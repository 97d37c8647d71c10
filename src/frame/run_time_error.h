// The automation runtime's numbered errors. Plain C++, so that units without Windows can throw them.
#pragma once

namespace velk {

// A run-time error such as 5 "Invalid procedure call or argument". Members throw it as RuntimeError(5).
class RuntimeError {
  public:
    explicit constexpr RuntimeError(int number) noexcept : number_(number) {}
    constexpr int number() const noexcept { return number_; }
    const wchar_t* description() const noexcept;

  private:
    int number_;
};

}  // namespace velk
