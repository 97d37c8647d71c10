// CPrintDialog: the exact record, and the real dialog with and without a printer.
#include <array>

#include "shell/dialog_test.h"
#include "support/test_printer.h"

namespace velk::test {
namespace {

using FakePrint = FakeDialog<PRINTDLGA>;

constexpr DWORD kRecordSize = SizeOf(66, sizeof(PRINTDLGA));
constexpr int kFromBox = 0x480;
constexpr int kToBox = 0x481;

class PrintDialog : public DialogTest {
  protected:
    PrintDialog() : DialogTest(__uuidof(::CPrintDialog)) {}

    // Copies, flags, first and last page, limits, owner, device context.
    std::array<LONG, 8> All() {
        return {NumberIn(L"Copies"), NumberIn(L"Flags"), NumberIn(L"FromPage"),   NumberIn(L"ToPage"),
                NumberIn(L"Min"),    NumberIn(L"Max"),   NumberIn(L"hWndParent"), NumberIn(L"HDC")};
    }
};

TEST_F(PrintDialog, PropertiesHoldWhatTheyAreGiven) {
    for (const wchar_t* name : {L"Copies", L"Flags", L"FromPage", L"ToPage", L"hWndParent"}) ExpectNumber(name, 0);
    ExpectNumber(L"Min", 1);
    ExpectNumber(L"Max", 9999);
    EXPECT_EQ(0, NumberIn(L"HDC"));
    EXPECT_EQ(DISP_E_MEMBERNOTFOUND, Let(dialog_.get(), L"HDC", {Arg(1L)}).result);
}

TEST_F(PrintDialog, TheRecordIsZeroButForTheProperties) {
    PRINTDLGA expected{};
    FakePrint print("PrintDlgA", [&](PRINTDLGA& record) {
        EXPECT_EQ(0, memcmp(&expected, &record, kRecordSize));
        return FALSE;
    });
    expected.lStructSize = kRecordSize;
    expected.nMinPage = 1;
    expected.nMaxPage = 9999;
    EXPECT_FALSE(Show());

    expected.hwndOwner = static_cast<HWND>(LongToHandle(kNoWindow));
    expected.Flags = 0xFFFF8000u | 4096 | 8192;  // hooks that nobody gave stay null
    expected.nFromPage = 0xFFFF;
    expected.nToPage = 7;
    expected.nMinPage = 0x8000;
    expected.nCopies = 3;
    Set(L"hWndParent", kNoWindow);
    Set(L"Flags", priEnableSetupTemplate | priEnablePrintHook | priEnableSetupHook);
    Set(L"FromPage", -1);
    Set(L"ToPage", 7);
    Set(L"Min", -32768);
    Set(L"Copies", 3);
    EXPECT_FALSE(Show());
    EXPECT_EQ(2, print.calls());
}

TEST_F(PrintDialog, ReadsBackWhatIsDescribedAndNothingWhenCancelled) {
    BOOL confirmed = FALSE;
    FakePrint print("PrintDlgA", [&](PRINTDLGA& record) {
        record.hDC = static_cast<::HDC>(LongToHandle(-77));
        record.Flags = 0x80000002;
        record.nFromPage = 2;
        record.nToPage = 0xFFFE;
        record.nMinPage = record.nMaxPage = 3;
        record.nCopies = 5;
        record.hwndOwner = nullptr;
        return confirmed;
    });
    Set(L"hWndParent", kNoWindow);
    const auto before = All();
    EXPECT_FALSE(Show());
    EXPECT_EQ(before, All());
    confirmed = 17;  // anything but 0
    EXPECT_TRUE(Show());
    EXPECT_EQ((std::array<LONG, 8>{5, static_cast<LONG>(0x80000002), 2, -2, 1, 9999, kNoWindow, -77}), All());
}

TEST_F(PrintDialog, WithoutAPrinterNothingIsPrinted) {
    { const TestPrinter leftByACrashedRun; }
    char device[64];
    if (GetProfileStringA("windows", "device", "", device, sizeof(device))) GTEST_SKIP() << "there is a " << device;
    const auto before = All();
    EXPECT_FALSE(Show([](HWND box) { Press(box, IDOK); }));  // the platform says that there is none
    EXPECT_TRUE(sawDialog_);
    EXPECT_EQ(before, All());
}

TEST_F(PrintDialog, GivesTheUsersChoicesAndAContextOfThePrinter) {
    const TestPrinter printer;
    Set(L"Flags", priPageNums | priReturnDC);
    Set(L"FromPage", 2);
    Set(L"ToPage", 5);
    Set(L"Copies", 3);
    std::wstring shown;
    EXPECT_TRUE(Show([&](HWND window) {
        shown = TextOfWindow(ControlOf(window, kFromBox)) + L"-" + TextOfWindow(ControlOf(window, kToBox));
        TypeInto(window, kFromBox, L"3");
        TypeInto(window, kToBox, L"4");
        Press(window, IDOK);
    }));
    EXPECT_EQ(L"2-5", shown);
    const auto chosen = All();
    const auto context = static_cast<::HDC>(LongToHandle(chosen[7]));
    EXPECT_EQ(DT_RASPRINTER, GetDeviceCaps(context, TECHNOLOGY));
    EXPECT_EQ((std::array<LONG, 8>{3, priPageNums | priReturnDC, 3, 4, 1, 9999, 0, chosen[7]}), chosen);
    EXPECT_FALSE(Show(Cancel));
    EXPECT_EQ(chosen, All());
    dialog_ = nullptr;
    EXPECT_TRUE(DeleteDC(context)) << "the context is the client's";
}

// What the platform makes of these is its own affair, as long as Show comes back. A missing print hook is left out:
// where the platform refuses it, Wine calls it.
TEST_F(PrintDialog, ComesBackWhateverItIsGiven) {
    const TestPrinter printer;
    for (const LONG flags : {-32768L, 16384L, 65536L, 131072L, 64L, 2048L}) {
        Set(L"Flags", flags);
        EXPECT_FALSE(Show(Cancel)) << flags;
    }
    Set(L"Flags", 0);
    Set(L"hWndParent", kNoWindow);
    EXPECT_FALSE(Show(Cancel));
}

}  // namespace
}  // namespace velk::test
