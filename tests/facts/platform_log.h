// What the library asks of the platform, seen at its import table: each call as a line of text, in order, and answers
// put in the platform's place.
#pragma once

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/platform.h"

namespace velk::facts {

// How one function answers for a while.
struct Rule {
    std::string function;
    std::wstring arguments;                       // only for calls whose line begins with these; empty for all
    bool logged = false;                          // each call is a line that the facts have to tell
    bool missing = false;                         // the platform has no such function
    std::deque<std::optional<LONG_PTR>> answers;  // the last one stays; none, or no number: the platform answers itself
    DWORD error = 0;                              // the thread's last error afterwards
    std::vector<std::wstring> fillings;  // "1 "text"" or "2 longs 5 6": what is written where the argument points
};

class PlatformLog {
  public:
    PlatformLog();
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
