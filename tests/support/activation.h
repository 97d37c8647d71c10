#pragma once

#include <gtest/gtest.h>

#include <string>

#include "platform/platform.h"

namespace velk::test {

// Makes what a manifest declares known to the thread.
class Activation {
  public:
    explicit Activation(const std::wstring& manifest) {
        ACTCTXW request{};
        request.cbSize = sizeof(request);
        request.lpSource = manifest.c_str();
        context_ = CreateActCtxW(&request);
        EXPECT_NE(INVALID_HANDLE_VALUE, context_) << GetLastError();
        EXPECT_TRUE(ActivateActCtx(context_, &cookie_));
    }
    Activation(const Activation&) = delete;
    Activation& operator=(const Activation&) = delete;
    ~Activation() {
        DeactivateActCtx(0, cookie_);
        ReleaseActCtx(context_);
    }

  private:
    HANDLE context_;
    ULONG_PTR cookie_ = 0;
};

}  // namespace velk::test
