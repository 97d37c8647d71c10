#pragma once

#include <optional>
#include <string>

#include "platform/platform.h"

namespace velk::test {

// An environment variable as it is to be for as long as this lives; null takes it away.
class ScopedVariable {
  public:
    ScopedVariable(const wchar_t* name, const wchar_t* value) : name_(name) {
        wchar_t before[1024];
        if (GetEnvironmentVariableW(name, before, ARRAYSIZE(before)) > 0) before_ = before;
        SetEnvironmentVariableW(name, value);
    }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;
    ~ScopedVariable() { SetEnvironmentVariableW(name_, before_ ? before_->c_str() : nullptr); }

  private:
    const wchar_t* name_;
    std::optional<std::wstring> before_;
};

}  // namespace velk::test
