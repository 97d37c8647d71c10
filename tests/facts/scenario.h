#pragma once

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
    std::wstring className, title;
    std::vector<Line> lines;
};

void Play(const Scenario& scenario);

}  // namespace velk::facts
