// What the library shows instead of raising. With the environment variable VELKSPRT_REPORTS=debugger each text goes to
// the debugger output, so that a host without a desktop does not wait on a box that nobody sees.
#pragma once

#include "frame/failure/failure.h"

namespace velk {

// Whether that switch is set, read anew each time.
bool ReportsGoToDebugger() noexcept;

// A message box with an OK button only. A null title is the host program's.
void ShowMessage(const wchar_t* text, const wchar_t* title, UINT icon = 0) noexcept;

// "Error: 53. File not found", titled with the procedure's name.
void ReportFailure(const Failure& failure, const wchar_t* procedure) noexcept;

// The critical box of a failure while an object was created. The heading is a literal of the class.
void ReportInitialisationFailure(const Failure& failure, const wchar_t* heading) noexcept;

}  // namespace velk
