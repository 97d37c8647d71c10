// What the library asks of the platform, seen at its import table: each call as a line of text, in order, and answers
// put in the platform's place.
#pragma once

#include <deque>
#include <functional>
#include <list>
#include <optional>
#include <string>
#include <vector>

#include "support/boxes.h"
#include "support/import_patch.h"

namespace velk::facts {

// How one function of the platform answers for a while.
struct Rule {
    std::string function;
    std::wstring arguments;  // only for calls whose line begins with these, _ for any one; empty for all
    bool logged = false;     // each call is a line that the facts have to tell
    bool missing = false;    // the platform has no such function
    std::deque<std::optional<LONG_PTR>> answers;  // the last one stays; none, or no number: the platform answers itself
    std::optional<DWORD> error;                   // the thread's last error afterwards; none: as it was
    std::vector<std::wstring> fillings;           // "1 "text"" or "2 5 6": what is written where the argument leads
    std::vector<std::wstring> readings;           // "2 iit": the line shows these fields in place of the argument
    std::wstring action;                          // a step that the client takes meanwhile
};

struct PlatformLog {
    // Takes the clients' steps, and boxes that are open.
    using Take = std::function<void(const std::wstring&)>;
    PlatformLog(Take step, Take box);

    void Add(const std::wstring& line);  // a rule
    std::wstring Next();                 // the oldest line that was not asked for yet; empty for none

    const Take act, box;
    const test::Boxes boxes;
    std::deque<std::wstring> lines;
    std::list<Rule> rules;                 // the latest first
    std::list<test::ImportPatch> patches;  // the latest first, and taken away first
};

}  // namespace velk::facts
