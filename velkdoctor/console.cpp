#include "velkdoctor/console.h"

#include "platform/platform.h"

namespace velk {
namespace {

// One byte at a time, as it comes from a console or a pipe.
char ReadFirstOfLine() {
    const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
    char first = 0, letter = 0;
    for (DWORD read = 0; letter != '\n' && ReadFile(input, &letter, 1, &read, nullptr) && read == 1;) {
        if (!first) first = letter;
    }
    return first;
}

}  // namespace

void Print(const std::wstring& text) {
    const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    DWORD done = 0;
    if (WriteConsoleW(output, text.data(), static_cast<DWORD>(text.size()), &done, nullptr)) return;
    std::string bytes(3 * text.size(), '\0');
    const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), bytes.data(),
                                         static_cast<int>(bytes.size()), nullptr, nullptr);
    WriteFile(output, bytes.data(), static_cast<DWORD>(size), &done, nullptr);
}

bool Agrees(const std::wstring& question) {
    Print(question + L" [y/n] ");
    const char answer = ReadFirstOfLine();
    return answer == 'y' || answer == 'Y';
}

void WaitBeforeConsoleCloses() {
    DWORD mode = 0, process = 0;
    const bool isConsole = GetConsoleMode(GetStdHandle(STD_OUTPUT_HANDLE), &mode);
    if (!isConsole || GetConsoleProcessList(&process, 1) != 1) return;
    Print(L"\nPress Enter to close this window. ");
    ReadFirstOfLine();
}

}  // namespace velk
