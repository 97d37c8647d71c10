// The platform's surrogate process: with it, programs of the other width and programs on other machines use the
// classes.
#pragma once

#include <string>
#include <vector>

#include "velkdoctor/known_libraries.h"

namespace velk {

// Whether a class makes sense outside its client's process. Those that take or give window or device context handles,
// show dialogs or change the client's cursor or windows do not.
bool MakesSenseOutside(const std::wstring& className);

struct SurrogateResult {
    LSTATUS status;                     // of the first key that could not be written
    std::vector<std::wstring> classes;  // those that were changed
};

// For the classes that are registered for this program's width. Switching off leaves what there was before.
SurrogateResult SwitchSurrogate(const KnownLibrary& library, bool on);

}  // namespace velk
