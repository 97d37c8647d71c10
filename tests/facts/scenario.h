// A file of facts as read.
#pragma once

#include <filesystem>
#include <list>
#include <string>
#include <vector>

namespace velk::facts {

struct Line {
    int number;
    std::wstring text;
};

struct Scenario {
    std::string file;
    int line;
    std::wstring className;
    std::wstring title;
    std::vector<Line> lines;
};

std::list<Scenario> ScenariosOf(const std::filesystem::path& path);

void Play(const Scenario& scenario);

// The line once for each part of its braces.
std::vector<std::wstring> Alternatives(const std::wstring& line);

}  // namespace velk::facts
