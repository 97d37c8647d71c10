// What the tests of the dialogs share.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "frame/text.h"
#include "support/client.h"
#include "support/dialog_driver.h"
#include "support/import_patch.h"
#include "support/late_bound.h"

#include <commdlg.h>

namespace velk::test {

constexpr LONG kNoWindow = 0x7FFFFE;

// The described size of a record where it is described, in 32 bits.
constexpr DWORD SizeOf(DWORD described, std::size_t real) {
    return sizeof(void*) == 4 ? described : static_cast<DWORD>(real);
}

// Stands in for one of the platform's dialog functions. Two that take the same record need different numbers.
template <class Record, int number = 0>
class FakeDialog {
  public:
    explicit FakeDialog(const char* function, std::function<BOOL(Record&)> user)
        : user_(std::move(user)), patch_(Library(), function, reinterpret_cast<void*>(&Run)) {
        current_ = this;
    }
    int calls() const noexcept { return calls_; }

  private:
    static BOOL WINAPI Run(Record* record) {
        ++current_->calls_;
        return current_->user_(*record);
    }

    static inline FakeDialog* current_ = nullptr;
    std::function<BOOL(Record&)> user_;
    int calls_ = 0;
    ImportPatch patch_;
};

class DialogTest : public testing::Test {
  protected:
    explicit DialogTest(REFCLSID clsid) : dialog_(CreateObject<IDispatch>(clsid)) {}

    void Set(const wchar_t* name, const std::wstring& text) {
        Bstr value(text);
        EXPECT_EQ(S_OK, Let(dialog_.get(), name, {Arg(value.get())}).result) << name;
    }
    void Set(const wchar_t* name, LONG value) {
        EXPECT_EQ(S_OK, Let(dialog_.get(), name, {Arg(value)}).result) << name;
    }
    std::wstring TextIn(const wchar_t* name) { return TextOf(Get(dialog_.get(), name).value); }
    LONG NumberIn(const wchar_t* name) {
        const Variant value = std::move(Get(dialog_.get(), name).value);
        return value.vt == VT_I2 ? value.iVal : value.lVal;
    }
    void ExpectNumber(const wchar_t* name, LONG first) {
        EXPECT_EQ(first, NumberIn(name)) << name;
        for (const LONG value : {-32768L, 32767L, first}) {
            Set(name, value);
            EXPECT_EQ(value, NumberIn(name)) << name;
        }
    }
    bool Show() {
        const Outcome outcome = InvokeNamed(dialog_.get(), L"Show", DISPATCH_METHOD, arguments_, {});
        EXPECT_EQ(S_OK, outcome.result);
        EXPECT_EQ(VT_BOOL, outcome.value.vt);
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
