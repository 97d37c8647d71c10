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
    // All that were shown since the last call, each as "title: text|".
    std::wstring Shown() {
        std::wstring shown;
        for (; seen_ < reports_.size(); ++seen_) shown += reports_[seen_].title + L": " + reports_[seen_].text + L"|";
        return shown;
    }

  private:
    static int WINAPI Record(HWND, LPCWSTR text, LPCWSTR title, UINT type) {
        reports_.push_back({title, text, type});
        return IDOK;
    }

    static inline std::vector<Report> reports_;
    std::size_t seen_ = 0;
    const ScopedVariable asBoxes_{L"VELKSPRT_REPORTS", nullptr};
    ImportPatch patch_;
};

}  // namespace velk::test
