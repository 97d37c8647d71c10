// CFileDialog: the real dialogs under a driver's hands. The records and what becomes of answers are in dialogs.facts.
#include "shell/dialog_test.h"
#include "support/scratch_folder.h"

namespace velk::test {
namespace {

using namespace std::string_literals;

constexpr int kNameBox = 0x47C;     // of the Explorer-style dialog
constexpr int kOldNameBox = 0x480;  // of the old one

class RealFileDialog : public DialogTest {
  protected:
    RealFileDialog() : DialogTest(__uuidof(::CFileDialog)) {
        arguments_ = {Arg(true)};
        for (const wchar_t* name : {L"a.txt", L"b.txt", L"a rather long name.txt"}) folder_.Write(name, "x");
        Set(L"InitialDir", folder_.path());
        Set(L"Flags", FleExplorer | FleNoChangeDir);
    }
    bool Choose(const std::wstring& name, int box = kNameBox) {
        return Show([&](HWND window) {
            TypeInto(window, box, name);
            Press(window, IDOK);
        });
    }
    ScratchFolder folder_;
};

TEST_F(RealFileDialog, GivesPathAndTitleOfEachChoice) {
    for (const wchar_t* name : {L"a rather long name.txt", L"a.txt"}) {
        EXPECT_TRUE(Choose(name));
        EXPECT_EQ(folder_.Path(name) + name, Value(L"Filename") + Value(L"FileTitle"));
    }
    EXPECT_FALSE(Show(Cancel));
    EXPECT_TRUE(sawDialog_);
    EXPECT_EQ(folder_.Path(L"a.txt"), Value(L"Filename"));
    arguments_ = {Arg(false)};
    Set(L"DefaultExt", L"dat");
    EXPECT_TRUE(Choose(L"new"));
    EXPECT_EQ(folder_.Path(L"new.dat"), Value(L"Filename"));
}

TEST_F(RealFileDialog, SeveralFilesComeAsFolderAndNames) {
    Set(L"Flags", FleExplorer | FleNoChangeDir | FleAllowMultiSelect);
    EXPECT_TRUE(Choose(L"\"a.txt\" \"b.txt\""));
    EXPECT_EQ(folder_.path() + L" a.txt b.txt", Value(L"Filename"));
    Set(L"Filename", L"");
    Set(L"Flags", FleNoChangeDir | FleAllowMultiSelect);  // the old style
    EXPECT_TRUE(Choose(L"a.txt", kOldNameBox));
    EXPECT_EQ(folder_.Path(L"a.txt"), Value(L"Filename"));
}

TEST_F(RealFileDialog, AChoiceThatDoesNotFitIsNone) {
    for (const LONG size : {0L, 1L, 10L, 32767L}) {
        Set(L"MaxFileSize", size);
        EXPECT_EQ(size == 32767, Choose(L"a.txt")) << size;
        EXPECT_EQ(size == 32767 ? folder_.Path(L"a.txt") : L"", Value(L"Filename"));
    }
}

// What the platform makes of these is its own affair, as long as Show comes back.
TEST_F(RealFileDialog, ComesBackWhateverItIsGiven) {
    for (const std::wstring& filter : {L"||"s, L"odd"s, L"|a|b"s, L"a||b|c"s, std::wstring(20000, L'|'), L"a\0|b"s}) {
        Set(L"Filter", filter);
        EXPECT_FALSE(Show(Cancel));
    }
    for (const LONG flags : {32L, 64L, 128L, -32768L, 16L, -225L}) {
        Set(L"Flags", flags);
        EXPECT_FALSE(Show(Cancel)) << flags;
    }
    Set(L"Filename", L"a\0b"s);
    Set(L"hWndParent", kNoWindow);
    EXPECT_FALSE(Show(Cancel));
}

}  // namespace
}  // namespace velk::test
