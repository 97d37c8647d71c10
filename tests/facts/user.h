// The user of a real dialog: types 0x47C "name", selects 0x471 "Bold", sees 0x480 "2", presses 1, one after the other
// once the dialog is on the screen, or selects 0x470 other: an entry that was not selected, kept under that name; or
// only cancels, if there is one. Numbers are those of the dialog's controls.
#pragma once

#include <string>
#include <vector>

#include "facts/values.h"
#include "platform/text.h"
#include "support/dialog_driver.h"
#include "support/late_bound.h"

namespace velk::facts {

class User {
  public:
    User(std::wstring_view actions, Variant& other) : actions_(Split(actions, L",")), other_(other) {}

    // What could not be done, when the dialog has returned.
    std::wstring Problem() {
        driver_.Finish();
        return driver_.sawDialog() || actions_[0] == L"cancels" ? problem_ : L"wanted: a dialog\n  given:  none";
    }

  private:
    void Act(HWND dialog) try {
        for (const std::wstring& action : actions_) {
            if (action == L"cancels") return test::Press(dialog, IDCANCEL);
            const auto parts = Split(action, L" ");
            const int id = std::stoi(parts.at(1), nullptr, 0);
            if (parts[0] == L"presses") return test::Press(dialog, id);
            const HWND control = test::ControlOf(dialog, id);
            const bool isOther = parts.at(2) == L"other";
            if (isOther && parts[0] == L"selects") other_ = test::Text(test::OtherEntry(control));
            const std::wstring text(isOther ? View(other_.bstrVal) : Unquote(parts[2]));
            if (parts[0] == L"types") test::TypeInto(control, text);
            if (parts[0] == L"selects") test::SelectIn(control, text);
            if (test::WaitUntil([&] { return test::TextOfWindow(control) == text; })) continue;
            problem_ = L"wanted: " + action + L"\n  given:  " + Quote(test::TextOfWindow(control));
            return test::Press(dialog, IDCANCEL);
        }
    } catch (const std::exception& problem) {
        problem_ = Wide(FromAnsi(problem.what()));
        test::Press(dialog, IDCANCEL);
    }

    std::vector<std::wstring> actions_;
    std::wstring problem_;
    Variant& other_;
    test::DialogDriver driver_{[this](HWND dialog) { Act(dialog); }};
};

}  // namespace velk::facts
