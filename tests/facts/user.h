// The user of a real dialog: types 0x47C "name", selects 0x471 "Bold", sees 0x480 "2", presses 1, one after the other
// once the dialog is on the screen, or selects 0x470 other: an entry that was not selected, kept under that name.
// Numbers are those of the dialog's controls.
#pragma once

#include <gtest/gtest.h>

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
        return driver_.sawDialog() ? problem_ : L"wanted: a dialog\n  given:  none";
    }

  private:
    void Act(HWND dialog) try {
        for (const std::wstring& action : actions_) {
            const auto parts = Split(action, L" ");
            const int id = std::stoi(parts.at(1), nullptr, 0);
            if (parts[0] == L"presses") return test::Press(dialog, id);
            const HWND control = test::ControlOf(dialog, id);
            const bool isOther = parts.at(2) == L"other", selects = parts[0] == L"selects";
            if (selects) Select(control, isOther ? nullptr : Unquote(parts[2]).c_str());
            if (selects && isOther) other_ = test::Text(TextOf(control));
            const std::wstring text(isOther ? View(other_.bstrVal) : Unquote(parts[2]));
            if (parts[0] == L"types") Ask(control, WM_SETTEXT, 0, text.c_str());
            if (test::WaitUntil([&] { return TextOf(control) == text; })) continue;
            problem_ = L"wanted: " + action + L"\n  given:  " + Quote(TextOf(control));
            return test::Press(dialog, IDCANCEL);
        }
    } catch (const std::exception& problem) {
        problem_ = Wide(FromAnsi(problem.what()));
        test::Press(dialog, IDCANCEL);
    }

    // An entry of a combo box, once it is there, or the last one that is not selected.
    static void Select(HWND box, const wchar_t* entry) {
        LRESULT index = CB_ERR;
        test::WaitUntil([&] {
            const LRESULT last = Ask(box, CB_GETCOUNT) - 1, other = Ask(box, CB_GETCURSEL) == last ? last - 1 : last;
            index = entry ? Ask(box, CB_FINDSTRINGEXACT, static_cast<WPARAM>(-1), entry) : other;
            return index >= 0;
        });
        Ask(box, CB_SETCURSEL, static_cast<WPARAM>(index));
        Ask(GetParent(box), WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(box), CBN_SELCHANGE), box);
    }
    static std::wstring TextOf(HWND control) {
        wchar_t text[1024] = L"";
        Ask(control, WM_GETTEXT, ARRAYSIZE(text), text);
        return text;
    }
    static LRESULT Ask(HWND window, UINT message, WPARAM number = 0, const void* text = nullptr) {
        DWORD_PTR answer = 0;
        const LRESULT sent =
            SendMessageTimeoutW(window, message, number, reinterpret_cast<LPARAM>(text), SMTO_BLOCK, 5000, &answer);
        EXPECT_TRUE(sent || !IsWindow(window)) << message;  // it may go at any time
        return static_cast<LRESULT>(answer);
    }

    const std::vector<std::wstring> actions_;
    std::wstring problem_;
    Variant& other_;
    test::DialogDriver driver_{[this](HWND dialog) { Act(dialog); }};
};

}  // namespace velk::facts
