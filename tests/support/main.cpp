#include <gtest/gtest.h>

#include "platform/platform.h"

// The test that starts one of the disabled ones alone expects even a crash.
static LONG WINAPI EndQuietly(EXCEPTION_POINTERS*) { return EXCEPTION_EXECUTE_HANDLER; }

int main(int count, char** arguments) {
    testing::InitGoogleTest(&count, arguments);
    if (testing::GTEST_FLAG(also_run_disabled_tests)) SetUnhandledExceptionFilter(&EndQuietly);
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    const int result = RUN_ALL_TESTS();
    CoUninitialize();
    return result;
}
