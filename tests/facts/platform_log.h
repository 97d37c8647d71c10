// What the library asks of the platform, seen at its import table: each call as a line of text, in order, and answers
// put in the platform's place.
#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/platform.h"

namespace velk::facts {

// How one function answers for a while.
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

class PlatformLog {
  public:
    // Takes the clients' steps.
    explicit PlatformLog(std::function<void(const std::wstring&)> act);
    PlatformLog(const PlatformLog&) = delete;
    PlatformLog& operator=(const PlatformLog&) = delete;
    ~PlatformLog();

    void Add(Rule rule);
    void Tell(const std::wstring& event);
    std::wstring Next();  // the oldest line that was not asked for yet; empty for none

    struct State;

  private:
    std::unique_ptr<State> state_;
};

}  // namespace velk::facts
