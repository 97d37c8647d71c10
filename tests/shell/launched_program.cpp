// A program for the launch tests to start: writes how it was started to the file VELK_LAUNCH_LOG, and then waits for
// the event velk-launch, if there is one.
#include <cstdio>
#include <cstdlib>

#include <windows.h>

int main(int count, char** arguments) {
    char folder[MAX_PATH] = "";
    GetCurrentDirectoryA(MAX_PATH, folder);
    STARTUPINFOA start{};
    GetStartupInfoA(&start);
    std::FILE* const file = std::fopen(std::getenv("VELK_LAUNCH_LOG"), "wb");
    for (int i = 1; i < count; ++i) std::fprintf(file, "%s|", arguments[i]);
    std::fprintf(file, "%s|%d", folder, start.wShowWindow);
    std::fclose(file);
    if (const HANDLE event = OpenEventA(SYNCHRONIZE, FALSE, "velk-launch")) WaitForSingleObject(event, 60'000);
}
