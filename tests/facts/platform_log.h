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

// with F 1 answers 5, 6 error 87 fills 1 "text" fills 2 1 2 reads 3 ii does release
Rule RuleOf(std::wstring line);

// Writes what a filling says where the arguments lead.
void Fill(const std::wstring& filling, const std::vector<void*>& places);

// Fields at a place, each at a multiple of its size: "iit", or a record of a size, whose other bytes have to be 0. A
// letter is a field: i a Long, n one without a sign, w 16 bits of it, b a byte, h a handle, s a text elsewhere and t
// one right here, f a dialog's filter, B a buffer and its size, L a font, S the size of the record; _ a Long, p a
// pointer and z a byte that have to be 0.
std::wstring Read(const void* place, std::string_view fields, std::size_t size = 0);

struct PlatformLog {
    // Takes the clients' steps, and boxes that are open.
    using Take = std::function<void(const std::wstring&)>;
    PlatformLog(Take step, Take box);

    void Add(Rule rule);
    std::wstring Next();  // the oldest line that was not asked for yet; empty for none

    const Take act, box;
    const test::Boxes boxes;
    std::deque<std::wstring> lines;
    std::list<Rule> rules;                 // the latest first
    std::list<test::ImportPatch> patches;  // the latest first, and taken away first
};

}  // namespace velk::facts
