// Where the platform that a test runs on departs from its documentation. docs/departures.md is the list.
#pragma once

#include <cstdlib>
#include <iterator>
#include <stdexcept>
#include <string_view>

#include "platform/platform.h"

namespace velk::test {
namespace departures {
#include "departures_table.h"
}  // namespace departures

// The main version; 0 where this is no Wine.
inline int WineVersion() {
    static const auto version = reinterpret_cast<const char*(CDECL*)()>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version")));
    return version ? std::atoi(version()) : 0;
}

// A row of the list. A name that is not there does not compile.
class Departure {
  public:
    consteval Departure(const char* name) : row_(Find(name)) {}

    bool IsHere() const {
        bool departs = false;
        for (std::size_t i = 0; i < std::size(departures::kWines); ++i) {
            if (departures::kWines[i] <= WineVersion()) departs = row_.departs[i];
        }
        return departs;
    }

  private:
    static consteval const departures::Row& Find(std::string_view name) {
        for (const departures::Row& row : departures::kRows) {
            if (row.name == name) return row;
        }
        throw std::invalid_argument("no such row");
    }

    const departures::Row& row_;
};

// Whoever asks expects one answer here and the documented one elsewhere, so that a mended departure fails the test.
inline bool Departs(Departure departure) { return departure.IsHere(); }

}  // namespace velk::test
