// Runs the files of facts: what each class does, as lines. They lie beside the other tests of their folder, one file a
// class. A scenario begins at the margin with a class, "CStack: what it shows", and makes an object; the lines below
// are done in order, members called by name as scripts do. What the platform was
// asked, what was shown and what events told has to be said by the next step. " ; " stands between the steps of a line,
// and a line that ends with it goes on in the next.
//
//   Member 1, "a"              is called and has to succeed
//   Member = 2                 ... and gives just this (see values.h)
//   Member 1 := 2              a property is put; := &object by reference
//   Member ! 9 "text"          it fails: run-time error 9, or ! 0x80044705 "text" from VelkSprt.CStack
//   STEP shows "title", "text" the report that it showed, or STEP saw F 1: what it asked; also in a line of its own
//   #0 1 = 2                   a member by its dispatch identifier, which the type library need not list
//   each = [1, 2]              what For Each gives, and so do an enumerator's other ways to walk
//   &name = 5                  what a script's variable holds now
//   let name = 5               a variable; new CStack makes an object, call Member takes what a
//                              member gives, part {IID} another interface that the object has; name.Member calls it
//   3 times Member             a repeated step; {0|2} stands for each part in turn, all braces of a line together, {1}
//                              for what stands in the first ones
//
//   with F 1 answers 5, 6 error 87 fills 1 "text" fills 2 1 _ 3p reads 3 ii does drop
//                              platform calls whose line begins so get these answers, and are told as
//   saw F 1, _, "a" quietly    what the step before asked of the platform, _ for anything, quietly: without prompts for
//                              disks;  saw 5 times F: so many lines that begin so;
//                              saw F 1; G 2: one after the other. Drawing objects are told as pen 1, brush 1, dc 2
//   when F 1 answers 5, itself the answers without telling;  without F: the platform lacks it
//   memory 1000                no block of so many bytes or more can be had from here on;  memory: all can again
//   held below 1000            so many bytes more than at first are on the library's heap
//   canvas c 0xFF0000          a blue picture of 80 x 80 pixels, c is its context;  pixel c 3 4 = 0x0000FF
//   file "name" = "bytes"      written to the scenario's folder;  file "name" holds "bytes": compared, in Windows-1252
//   key "Software\\Own"        a key of the current user's, empty at first, for as long as the scenario runs
//   value "Sub\\v" = 1 "bytes" stored below it with this type;  value "Sub\\v" holds 1 "bytes": compared
//   set NAME = "value"         a variable of the environment
//   let name = farewell STEP   an object that is told as "saw farewell" when it is destroyed, and does a step then
//   drop                       gives the object up
//   user types 0x47C "name", selects 0x471 "Bold", sees 0x480 "2", presses 1
//                              in the dialog that the next step shows, by its controls' numbers;  selects 0x470 other
//                              names what was not selected other;  printer: there is one while the scenario runs, the
//                              default one
//   until Member = False       asks for up to five seconds
//
// What a call fills: 5 a Long, 5i 16 bits, 5b a byte, 5q 64 bits, 5p as wide as an address, _ what stays; each at a
// multiple of its size. Place 0 is the first argument's; behind a record's place come those that it leads to. What it
// reads there has a letter for each field: platform_log.h lists them.
//
//   listen                     to the object's events: each is told as "saw Progress 0.5f";  leave: no longer
//   on Progress 0.5 does STEP  what a handler does in events whose line begins so; on box "title" does STEP: what is
//                              done while a report is open
//
// In the end nothing is left behind: no object, nothing on the library's heap and, where texts are not cached
// (OANOCACHE=1), no text or array. A title that ends with "(32 bits)" is for the library of that width only.
#include <gtest/gtest.h>

#include <filesystem>
#include <list>

#include "facts/scenario.h"
#include "platform/text.h"
#include "support/client.h"

namespace velk::facts {
namespace {

struct ScenarioTest : testing::Test {
    explicit ScenarioTest(const Scenario& one) : scenario(one) {}

    void TestBody() override { Play(scenario); }

    const Scenario& scenario;
};

std::string TestName(std::wstring_view title) {
    std::string name;
    for (const wchar_t character : title)
        name += iswalnum(character) && character < 128 ? static_cast<char>(character) : '_';
    return name;
}

void Register(const Scenario& scenario, const std::string& folder) {
    testing::RegisterTest((folder + "_" + ToAnsi(scenario.className)).c_str(), TestName(scenario.title).c_str(),
                          nullptr, nullptr, scenario.file.c_str(), scenario.line,
                          [&scenario]() -> testing::Test* { return new ScenarioTest(scenario); });
}

// Before the program's main function reads the filter.
const std::list<Scenario> kAll = [] {
    std::list<Scenario> all;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(test::BuiltFile(L"tests/facts"))) {
        if (entry.path().extension() != ".facts") continue;
        std::list<Scenario> made = ScenariosOf(entry.path());
        const std::string folder = entry.path().parent_path().filename().string();
        if (sizeof(void*) != 4) made.remove_if([](const Scenario& one) { return one.title.ends_with(L"(32 bits)"); });
        for (const Scenario& one : made) Register(one, folder);
        all.splice(all.end(), made);
    }
    return all;
}();

}  // namespace
}  // namespace velk::facts
