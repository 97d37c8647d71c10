// The guard of the drawing support objects: a member that fails shows what went wrong, raises nothing, and keeps what
// it had reached.
#pragma once

namespace velk {

// For a catch block: "An error has occured in VelkSupport.cMemDC.Height " with number, description and line.
void ReportSupportFailure(const wchar_t* className, const wchar_t* procedure) noexcept;

template <class Body>
void Guard(const wchar_t* className, const wchar_t* procedure, Body&& body) noexcept try {
    body();
} catch (...) {
    ReportSupportFailure(className, procedure);
}

}  // namespace velk
