// The user of a dialog as facts tell it: types 0x47C "name", selects 0x471 "Bold", sees 0x480 "2", presses 1, one after
// the other once the dialog is on the screen, each until the control has the text. selects 0x470 other: an entry that
// was not selected, whose text is kept under that name. Numbers are those of the dialog's controls.
#pragma once

#include <string>
#include <vector>

#include "facts/values.h"
#include "platform/text.h"
#include "support/dialog_user.h"
#include "support/late_bound.h"

namespace velk::facts {

class User {
  public:
    User(std::wstring_view actions, Variant& other) : actions_(Split(actions, L",")), other_(other) {}

    // What could not be done, when the dialog has returned.
    std::wstring Problem() const { return user_.sawDialog() ? problem_ : L"wanted: a dialog\n  given:  none"; }

  private:
    bool Act(HWND dialog) try {
        for (; done_ < actions_.size(); ++done_) {
            problem_ = Try(dialog, actions_[done_]);
            if (!problem_.empty()) return false;
        }
        return true;
    } catch (const std::exception& problem) {
        problem_ = Wide(FromAnsi(problem.what()));
        return test::Press(dialog, IDCANCEL), true;
    }

    std::wstring Try(HWND dialog, const std::wstring& action) {
        const auto parts = Split(action, L" ");
        const int id = std::stoi(parts.at(1), nullptr, 0);
        if (parts[0] == L"presses") return test::Press(dialog, id), L"";
        const HWND control = test::ControlOf(dialog, id);
        const bool isOther = parts.at(2) == L"other";
        if (isOther && other_.vt == VT_EMPTY) other_ = OtherEntry(control);
        const std::wstring text(isOther ? View(other_.bstrVal) : Unquote(parts[2]));
        if (parts[0] == L"types") Ask(control, WM_SETTEXT, 0, text.c_str());
        if (parts[0] == L"selects") {
            Ask(control, CB_SETCURSEL, Ask(control, CB_FINDSTRINGEXACT, -1, text.c_str()));
            Ask(GetParent(control), WM_COMMAND, MAKEWPARAM(id, CBN_SELCHANGE), control);
        }
        wchar_t given[1024] = L"";
        Ask(control, WM_GETTEXT, ARRAYSIZE(given), given);
        return text == given ? L"" : L"wanted: " + action + L"\n  given:  " + Quote(given);
    }

    // The first or second one in a combo box, which is not selected; Empty before there is one.
    static Variant OtherEntry(HWND box) {
        wchar_t text[1024] = L"";
        const LRESULT size = Ask(box, CB_GETLBTEXT, Ask(box, CB_GETCURSEL) == 0, text);
        return size > 0 ? test::Text(text) : Variant();
    }
    static LRESULT Ask(HWND window, UINT message, LRESULT number = 0, const void* text = nullptr) {
        return SendMessageW(window, message, static_cast<WPARAM>(number), reinterpret_cast<LPARAM>(text));
    }

    const std::vector<std::wstring> actions_;
    std::size_t done_ = 0;
    std::wstring problem_;
    Variant& other_;
    test::DialogUser user_{[this](HWND dialog) { return Act(dialog); }};
};

}  // namespace velk::facts
