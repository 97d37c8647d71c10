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
//   3 times STEP               a repeated one; {0|2} stands for each part in turn, all braces of a line together, {1}
//                              for what stands in the first ones
//
//   with F 1 answers 5, 6 error 87 fills 1 "text" fills 2 1 _ 3p reads 3 ii does drop
//                              platform calls whose line begins so get these answers, and are told as
//   saw F 1, _, "a" quietly    what the step before asked of the platform, _ for any word or text, quietly: without
//                              prompts for disks;  saw F 1; G 2: one after the other.
//   when F 1 answers 5, itself the answers without telling;  without F: the platform lacks it
//   memory 1000                no block of so many bytes or more can be had from here on;  memory: all can again
//   held below 1000            so many bytes more than at first are on the library's heap
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
// reads there has a letter for each field: platform_log.cpp lists them.
//
//   listen                     to the object's events: each is told as "saw Progress 0.5f";  leave: no longer
//   on Progress 0.5 does STEP  what a handler does in events whose line begins so; on box "title" does STEP: what is
//                              done while a report is open
//
// In the end nothing is left behind: no object, nothing on the library's heap and, where texts are not cached
// (OANOCACHE=1), no text or array.
#include <gtest/gtest.h>

#include <cctype>
#include <filesystem>
#include <fstream>

#include "facts/scenario.h"
#include "facts/values.h"
#include "platform/text.h"
#include "support/client.h"

namespace velk::facts {
namespace {

std::vector<Scenario> ScenariosOf(const std::filesystem::path& path) {
    std::vector<Scenario> made;
    std::ifstream file(path, std::ios::binary);
    std::string bytes;
    for (int number = 1; std::getline(file, bytes); ++number) {
        const std::wstring line(bytes.begin(), bytes.end());  // other characters are written as escapes
        std::wstring text(Trim(line));
        if (text.empty() || text.starts_with(L"//")) continue;
        if (!line.starts_with(L' ')) {
            const std::wstring title = Cut(text, L":");
            made.push_back({path.filename().string(), number, text, title, {}});
        } else if (auto& lines = made.back().lines; !lines.empty() && lines.back().text.ends_with(L" ;")) {
            lines.back().text += L' ' + text;
        } else {
            lines.push_back({number, text});
        }
    }
    return made;
}

struct ScenarioTest : testing::Test {
    explicit ScenarioTest(const Scenario& one) : scenario(one) {}

    void TestBody() override { Play(scenario); }

    const Scenario& scenario;
};

void Register(const Scenario& scenario, const std::string& folder) {
    std::string title = ToAnsi(scenario.title);
    for (char& character : title) character = std::isalnum(static_cast<unsigned char>(character)) ? character : '_';
    testing::RegisterTest((folder + "_" + ToAnsi(scenario.className)).c_str(), title.c_str(), nullptr, nullptr,
                          scenario.file.c_str(), scenario.line,
                          [scenario]() -> testing::Test* { return new ScenarioTest(scenario); });
}

// Before the program's main function reads the filter.
[[maybe_unused]] const bool kRegistered = [] {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(test::BuiltFile(L"tests/facts"))) {
        if (entry.path().extension() != ".facts") continue;
        for (const Scenario& one : ScenariosOf(entry.path()))
            Register(one, entry.path().parent_path().filename().string());
    }
    return true;
}();

}  // namespace
}  // namespace velk::facts
