#include "platform/run_time_error.h"

#include <gtest/gtest.h>

#include <string>

namespace velk {
namespace {

constexpr Error kNoError{-1};

// Clients show these texts to their users, and some compare them.
TEST(RuntimeErrorTexts, AreTheRuntimesOwn) {
    std::wstring texts;
    for (int number = 0; number < 1000; ++number) {
        const std::wstring text = RuntimeError(static_cast<Error>(number)).description();
        if (text != RuntimeError(kNoError).description()) texts += std::to_wstring(number) + L" " + text + L"\n";
    }
    EXPECT_EQ(
        L"5 Invalid procedure call or argument\n"
        L"6 Overflow\n"
        L"7 Out of memory\n"
        L"9 Subscript out of range\n"
        L"11 Division by zero\n"
        L"13 Type mismatch\n"
        L"52 Bad file name or number\n"
        L"53 File not found\n"
        L"57 Device I/O error\n"
        L"61 Disk full\n"
        L"70 Permission denied\n"
        L"71 Disk not ready\n"
        L"75 Path/File access error\n"
        L"76 Path not found\n"
        L"91 Object variable or With block variable not set\n"
        L"429 ActiveX component can't create object\n"
        L"457 This key is already associated with an element of this collection\n",
        texts);
    EXPECT_STREQ(L"Application-defined or object-defined error", RuntimeError(kNoError).description());
}

}  // namespace
}  // namespace velk
