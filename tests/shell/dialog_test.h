// What the tests of the dialogs share.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/text.h"
#include "support/departures.h"
#include "support/dialog_driver.h"
#include "support/facts.h"
#include "support/fake.h"
#include "support/report_recorder.h"

#include <commdlg.h>

namespace velk::test {

constexpr LONG kNoWindow = 0x7FFFFE;

class DialogTest : public testing::Test {
  protected:
    explicit DialogTest(REFCLSID clsid) : dialog_(CreateObject<IDispatch>(clsid)) {}

    void Set(const wchar_t* name, const VARIANT& value) {
        EXPECT_EQ(S_OK, Let(dialog_.get(), name, {value}).result) << name;
    }
    void Set(const wchar_t* name, const std::wstring& text) { Set(name, Text(text)); }
    void Set(const wchar_t* name, LONG number) { Set(name, Arg(number)); }
    std::wstring Value(const wchar_t* name) { return Fact(dialog_.get(), name); }
    bool Show() {
        const Outcome outcome = InvokeNamed(dialog_.get(), L"Show", DISPATCH_METHOD, arguments_, {});
        EXPECT_TRUE(outcome.result == S_OK && outcome.value.vt == VT_BOOL);
        return outcome.value.boolVal == VARIANT_TRUE;
    }
    // Shows the real dialog to a user.
    bool Show(std::function<void(HWND)> user) {
        DialogDriver driver(std::move(user));
        const bool confirmed = Show();
        driver.Finish();
        sawDialog_ = driver.sawDialog();
        return confirmed;
    }

    ComPtr<IDispatch> dialog_;
    std::vector<VARIANT> arguments_;
    bool sawDialog_ = false;
};

inline void Cancel(HWND dialog) { Press(dialog, IDCANCEL); }

}  // namespace velk::test
