#pragma once

#include <string>
#include <vector>

#include "support/import_patch.h"
#include "support/scoped_variable.h"

namespace velk::test {

// Keeps the library's message boxes from the screen and records them. One at a time.
class ReportRecorder {
  public:
    struct Report {
        std::wstring title;
        std::wstring text;
        UINT type;
    };

    explicit ReportRecorder(HMODULE module) : patch_(module, "MessageBoxW", Address(&Record)) { reports_.clear(); }

    const std::vector<Report>& reports() const noexcept { return reports_; }

  private:
    static int WINAPI Record(HWND, LPCWSTR text, LPCWSTR title, UINT type) {
        reports_.push_back({title, text, type});
        return IDOK;
    }

    static inline std::vector<Report> reports_;
    const ScopedVariable asBoxes_{L"VELKSPRT_REPORTS", nullptr};
    ImportPatch patch_;
};

}  // namespace velk::test
