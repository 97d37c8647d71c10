// How the drawing support objects fail: a member shows what went wrong, raises nothing, and keeps what it had reached.
#pragma once

namespace velk {

// For a catch block: "An error has occured in VelkSupport.cMemDC.Height " with number, description and line.
void ReportSupportFailure(const wchar_t* className, const wchar_t* procedure) noexcept;

template <class Body>
void Trap(const wchar_t* className, const wchar_t* procedure, Body&& body) noexcept try {
    body();
} catch (...) {
    ReportSupportFailure(className, procedure);
}

}  // namespace velk
