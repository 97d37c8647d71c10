#pragma once

#include <memory>
#include <vector>

#include "support/calm_system.h"
#include "support/import_patch.h"

namespace velk::test {

// Keeps calls with any arguments from harming what is not the tests': files of any name, foreign registry keys, boxes
// that wait for a person. Everything else reaches the platform. One at a time.
class CalmPlatform {
  public:
    CalmPlatform();
    ~CalmPlatform();

  private:
    // Takes milliseconds and asks nothing of its arguments.
    static BOOL WINAPI NotConnected(LPDWORD, LPSTR, DWORD, DWORD) { return FALSE; }

    CalmSystem system_;
    ProcedurePatch connection_{Library(), "InternetGetConnectedStateExA", reinterpret_cast<void*>(&NotConnected)};
    std::vector<std::unique_ptr<ImportPatch>> patches_;
};

}  // namespace velk::test
