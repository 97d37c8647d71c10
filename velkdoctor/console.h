// What is said to the person in front of the console.
#pragma once

#include <string>

namespace velk {

// Consoles get UTF-16, files and pipes UTF-8.
void Print(const std::wstring& text);

// Whether the answer begins with a "y". The end of the input is a no.
bool Agrees(const std::wstring& question);

// A console that was opened for this program alone, by a double click, would close before anybody has read it.
void WaitBeforeConsoleCloses();

}  // namespace velk
