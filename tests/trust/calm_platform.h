#pragma once

#include <list>

#include "support/procedure_patch.h"

namespace velk::test {

// Keeps calls with any arguments from harming what is not the tests': the machine's names and settings, files of any
// name, foreign registry keys, boxes that wait for a person. Everything else reaches the platform. One at a time.
class CalmPlatform {
  public:
    CalmPlatform();
    CalmPlatform(const CalmPlatform&) = delete;
    CalmPlatform& operator=(const CalmPlatform&) = delete;
    ~CalmPlatform();

  private:
    std::list<ImportPatch> imports_;
    std::list<ProcedurePatch> procedures_;
};

}  // namespace velk::test
