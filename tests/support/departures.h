// Where the platform that a test runs on departs from its documentation. docs/departures.md is the list.
#pragma once

#include <cstdlib>
#include <iterator>
#include <string_view>

#include "platform/system_library.h"

namespace velk::test {
namespace departures {
#include "departures_table.h"
}  // namespace departures

// The main version; 0 where this is no Wine.
inline int WineVersion() {
    static const auto version = FindFunction<const char * CDECL()>(GetModuleHandleW(L"ntdll.dll"), "wine_get_version");
    return version ? std::atoi(version()) : 0;
}

// A row of the list. A name that is not there does not compile.
struct Departure {
    consteval Departure(const char* name) {
        while (departures::kRows[row].name != std::string_view(name)) ++row;
    }
    std::size_t row = 0;
};

// Whoever asks expects one answer here and the documented one elsewhere, so that a mended departure fails the test.
inline bool Departs(Departure departure) {
    bool departs = false;
    for (std::size_t i = 0; i < std::size(departures::kWines); ++i) {
        if (departures::kWines[i] <= WineVersion()) departs = departures::kRows[departure.row].departs[i];
    }
    return departs;
}

}  // namespace velk::test
