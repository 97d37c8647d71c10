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

  private:
    static int WINAPI Record(HWND owner, LPCWSTR text, LPCWSTR title, UINT type);

    static inline ReportRecorder* current_ = nullptr;
    std::vector<Report> reports_;
    ImportPatch patch_;
    std::wstring savedSwitch_;
};

}  // namespace velk::test
