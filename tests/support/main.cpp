#include <gtest/gtest.h>

#include "platform/platform.h"

int main(int count, char** arguments) {
    testing::InitGoogleTest(&count, arguments);
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    const int result = RUN_ALL_TESTS();
    CoUninitialize();
    return result;
}
