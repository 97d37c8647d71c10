#pragma once

#include "support/client.h"
#include "support/procedure_patch.h"

namespace velk::test {

// Keeps calls with arbitrary arguments from changing the machine: labels, the computer's name, the user's settings, the
// offline mode. Each is refused as the platform would refuse it.
class CalmSystem {
  public:
    CalmSystem() = default;
    CalmSystem(const CalmSystem&) = delete;
    CalmSystem& operator=(const CalmSystem&) = delete;

  private:
    static BOOL WINAPI RefuseLabel(LPCSTR, LPCSTR) { return FALSE; }
    static BOOL WINAPI RefuseName(LPCSTR) { return FALSE; }
    static BOOL WINAPI OnlyTell(UINT action, UINT parameter, PVOID place, UINT update) {
        return place ? SystemParametersInfoA(action, parameter, place, update) : FALSE;
    }
    static BOOL WINAPI RefuseOption(void*, DWORD, LPVOID, DWORD) { return FALSE; }

    ImportPatch label_{Library(), "SetVolumeLabelA", reinterpret_cast<void*>(&RefuseLabel)};
    ImportPatch name_{Library(), "SetComputerNameA", reinterpret_cast<void*>(&RefuseName)};
    ImportPatch settings_{Library(), "SystemParametersInfoA", reinterpret_cast<void*>(&OnlyTell)};
    ProcedurePatch option_{Library(), "InternetSetOptionA", reinterpret_cast<void*>(&RefuseOption)};
};

}  // namespace velk::test
