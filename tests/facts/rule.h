// How one function of the platform answers for a while.
#pragma once

#include <deque>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/platform.h"

namespace velk::facts {

struct Rule {
    std::string function;
    std::wstring arguments;  // only for calls whose line begins with these, _ for any one; empty for all
    bool logged = false;     // each call is a line that the facts have to tell
    bool missing = false;    // the platform has no such function
    std::deque<std::optional<LONG_PTR>> answers;  // the last one stays; none, or no number: the platform answers itself
    std::optional<DWORD> error;                   // the thread's last error afterwards; none: as it was
    std::vector<std::wstring> fillings;           // "1 "text"" or "2 5 6": what is written where the argument leads
    std::vector<std::wstring> readings;  // "1 text" or "2 longs 2": what the line shows in place of the argument
    std::wstring action;                 // a step that the client takes meanwhile
};

// with F 1 answers 5, 6 error 87 fills 1 "text" fills 2 1 2 reads 3 longs 2 does release
Rule RuleOf(const std::wstring& line);

// Writes what a filling says where the arguments lead.
void Fill(const std::wstring& filling, const std::vector<void*>& places);

// What is where an argument leads, and the argument's number: "3 longs 2" or "3 text".
std::pair<std::size_t, std::wstring> Read(const std::wstring& reading, const std::vector<void*>& places);

}  // namespace velk::facts
