#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "platform/platform.h"

namespace velk::test {

// Makes what a manifest declares known to the thread for as long as the result lives.
inline std::shared_ptr<void> Activated(const std::wstring& manifest) {
    ACTCTXW request{};
    request.cbSize = sizeof(request);
    request.lpSource = manifest.c_str();
    ULONG_PTR cookie = 0;
    const HANDLE context = CreateActCtxW(&request);
    EXPECT_TRUE(ActivateActCtx(context, &cookie)) << GetLastError();
    return {context, [cookie](HANDLE made) { DeactivateActCtx(0, cookie), ReleaseActCtx(made); }};
}

}  // namespace velk::test
