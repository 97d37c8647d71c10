#include "winhelpers/support/support_guard.h"

#include <string>

#include "frame/failure/report.h"

namespace velk {

void ReportSupportFailure(const wchar_t* className, const wchar_t* procedure) noexcept try {
    const std::wstring heading =
        std::wstring(L"An error has occured in VelkSupport.") + className + L"." + procedure + L" ";
    ReportInitialisationFailure(CaughtFailure(), heading.c_str());
} catch (...) {  // out of memory: there is nothing left to say it with
}

}  // namespace velk
