// What the library asks of the platform, seen at its import table: each call as a line of text, in order, and answers
// put in the platform's place.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "facts/rule.h"

namespace velk::facts {

class PlatformLog {
  public:
    // Takes the clients' steps, and boxes that are open.
    using Take = std::function<void(const std::wstring&)>;
    PlatformLog(Take step, Take box);
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
