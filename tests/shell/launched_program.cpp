// A program for the launch tests to start: writes how it was started to the file VELK_LAUNCH_LOG, then waits for the
// event VELK_LAUNCH_EVENT, if there is one, and ends with the code VELK_LAUNCH_EXIT.
#include <cstdio>
#include <cstdlib>

#include <windows.h>

int main(int count, char** arguments) {
    char folder[MAX_PATH] = "";
    GetCurrentDirectoryA(MAX_PATH, folder);
    STARTUPINFOA start{};
    GetStartupInfoA(&start);
    if (const char* const log = std::getenv("VELK_LAUNCH_LOG")) {
        std::FILE* const file = std::fopen(log, "wb");
        for (int i = 1; i < count; ++i) std::fprintf(file, "%s|", arguments[i]);
        std::fprintf(file, "%s|%d", folder, start.wShowWindow);
        std::fclose(file);
    }
    if (const char* const name = std::getenv("VELK_LAUNCH_EVENT")) {
        WaitForSingleObject(OpenEventA(SYNCHRONIZE, FALSE, name), 60'000);
    }
    const char* const code = std::getenv("VELK_LAUNCH_EXIT");
    return code ? std::atoi(code) : 0;
}
