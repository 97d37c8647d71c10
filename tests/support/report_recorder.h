#pragma once

#include <string>
#include <vector>

#include "support/import_patch.h"

namespace velk::test {

// Keeps the library's message boxes from the screen and records them. One at a time.
class ReportRecorder {
  public:
    struct Report {
        std::wstring title;
        std::wstring text;
        UINT type;
    };

    explicit ReportRecorder(HMODULE module);
    ~ReportRecorder();

    const std::vector<Report>& reports() const noexcept { return reports_; }
    // All that were shown since the last call, each as "title: text|".
    std::wstring Shown();

  private:
    static int WINAPI Record(HWND owner, LPCWSTR text, LPCWSTR title, UINT type);

    static inline ReportRecorder* current_ = nullptr;
    std::vector<Report> reports_;
    std::size_t seen_ = 0;
    ImportPatch patch_;
    std::wstring savedSwitch_;
};

}  // namespace velk::test
