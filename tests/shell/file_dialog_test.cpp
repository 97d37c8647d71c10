// CFileDialog: the exact records, what becomes of each answer, and the real dialogs under a driver's hands.
#include "shell/dialog_test.h"
#include "support/scratch_folder.h"

namespace velk::test {
namespace {

using namespace std::string_literals;

constexpr DWORD kRecordSize = SizeOf(76, sizeof(OPENFILENAME_NT4A));
constexpr int kNameBox = 0x47C;     // of the Explorer-style dialog
constexpr int kOldNameBox = 0x480;  // of the old one

class FileDialog : public DialogTest {
  protected:
    FileDialog() : DialogTest(__uuidof(::CFileDialog)) { arguments_ = {Arg(true)}; }
};

TEST_F(FileDialog, PropertiesHoldWhatTheyAreGiven) {
    ExpectProperties(
        L"DefaultExt= DialogTitle= Filename= FileTitle= Filter= InitialDir= "
        L"FilterIndex=0 Flags=0 hWndParent=0 MaxFileSize=260");
}

TEST_F(FileDialog, TheRecordIsZeroButForThePropertiesAndACancelledDialogChangesNone) {
    OPENFILENAMEA expected{};
    const char *caption = "", *extension = "", *folder = nullptr;
    std::string filter = "\0\0"s, name, title;
    const auto check = [&](OPENFILENAMEA* record) {
        EXPECT_STREQ(caption, record->lpstrTitle);
        EXPECT_STREQ(extension, record->lpstrDefExt);
        EXPECT_STREQ(folder, record->lpstrInitialDir);
        EXPECT_EQ(filter, std::string(record->lpstrFilter, filter.size()));
        name.resize(record->nMaxFile), title.resize(record->nMaxFile);
        EXPECT_EQ(name, std::string(record->lpstrFile, name.size()));
        EXPECT_EQ(title, std::string(record->lpstrFileTitle, title.size()));
        expected.lpstrTitle = record->lpstrTitle, expected.lpstrDefExt = record->lpstrDefExt;
        expected.lpstrInitialDir = record->lpstrInitialDir, expected.lpstrFilter = record->lpstrFilter;
        expected.lpstrFile = record->lpstrFile, expected.lpstrFileTitle = record->lpstrFileTitle;
        EXPECT_EQ(0, memcmp(&expected, record, kRecordSize));
        strcpy(record->lpstrFile, "scribbled");
        strcpy(record->lpstrFileTitle, "scribbled");
        return FALSE;
    };
    const Fake open("GetOpenFileNameA", &GetOpenFileNameA, [&](OPENFILENAMEA* record) { return check(record); });
    const Fake save("GetSaveFileNameA", &GetSaveFileNameA, [&](OPENFILENAMEA* record) { return check(record); });
    expected.lStructSize = kRecordSize;
    expected.nMaxFile = expected.nMaxFileTitle = 260;
    EXPECT_FALSE(Show());
    EXPECT_EQ(1, open.calls());

    Set(L"hWndParent", kNoWindow);
    Set(L"DialogTitle", L"Caption \u00E9\u6F22");
    Set(L"DefaultExt", L"dat");
    Set(L"Flags", FleNoReadOnlyReturn | FleEnableHook | FleEnableTemplate);
    Set(L"FilterIndex", -2);
    Set(L"InitialDir", L"");
    Set(L"Filter", L"A|a|B|");
    Set(L"Filename", L"n\0m"s);
    Set(L"FileTitle", L"title");
    Set(L"MaxFileSize", 300);
    expected.hwndOwner = static_cast<HWND>(LongToHandle(kNoWindow));
    caption = "Caption \xE9?", extension = "dat", folder = "";  // set to nothing is not the same as never set
    expected.Flags = 0xFFFF8000u | 32 | 64;                     // the hook that nobody gave stays null
    expected.nFilterIndex = 0xFFFFFFFE;
    filter = "A\0a\0B\0\0\0"s, name = "n\0m"s, title = "title";
    expected.nMaxFile = expected.nMaxFileTitle = 300;
    arguments_ = {Arg(false)};
    EXPECT_FALSE(Show());
    EXPECT_EQ(1, save.calls());
    EXPECT_EQ(L"n\0mtitle"s, Value(L"Filename") + Value(L"FileTitle"));
}

TEST_F(FileDialog, AnAnswerIsTrimmedIntoTheProperties) {
    struct Answer {
        std::wstring before;
        std::string buffer;  // what the dialog writes over the first bytes
        std::wstring after;
    };
    const Answer answers[] = {{L"C:\\a long long name.txt", "C:\\dir\0a\0b c\0\0"s, L"C:\\dir a b c"},
                              {L"", std::string(38, 'x') + "\0\0"s, L""},  // full: a pair at the very end is none
                              {L"", "\x80\xE9\0"s, L"\u20AC\u00E9"}};
    Set(L"MaxFileSize", 40);
    for (const Answer& answer : answers) {
        const Fake open("GetOpenFileNameA", &GetOpenFileNameA, [&](OPENFILENAMEA* record) {
            answer.buffer.copy(record->lpstrFile, answer.buffer.size());
            answer.buffer.copy(record->lpstrFileTitle, answer.buffer.size());
            record->Flags = record->nFilterIndex = 7;
            return TRUE;
        });
        Set(L"Filename", answer.before);
        Set(L"FileTitle", answer.before);
        EXPECT_TRUE(Show());
        EXPECT_EQ(answer.after + answer.after, Value(L"Filename") + Value(L"FileTitle"));
    }
    EXPECT_EQ(L"00", Value(L"Flags") + Value(L"FilterIndex"));
}

TEST_F(FileDialog, TextsLongerThanTheBuffersAreReportedAndNothingIsShown) {
    ReportRecorder recorder(Library());
    struct Case {
        LONG size;
        std::size_t name, title;
        bool shown;
    };
    for (const Case& c : {Case{0, 0, 0, true},
                          {0, 1, 0, false},
                          {1, 1, 1, true},
                          {1, 0, 2, false},
                          {-1, 0, 0, false},
                          {32767, 32767, 0, true},
                          {32767, 32768, 0, false}}) {
        const Fake open("GetOpenFileNameA", &GetOpenFileNameA, [&](OPENFILENAMEA* record) {
            EXPECT_EQ(c.name, strlen(record->lpstrFile));
            return TRUE;
        });
        Set(L"Filename", std::wstring(c.name, L'n'));
        Set(L"FileTitle", std::wstring(c.title, L't'));
        Set(L"MaxFileSize", c.size);
        EXPECT_EQ(c.shown, Show()) << c.size;
        EXPECT_EQ(c.shown ? 1 : 0, open.calls()) << c.size;
        EXPECT_EQ(c.shown ? L"" : L"Show: Error: 5. Invalid procedure call or argument|", recorder.Shown());
    }
}

TEST_F(FileDialog, MayLoseItsLastReferenceWhileItIsOpen) {
    const auto raw = dialog_.As<_CFileDialog>().get();
    const Fake open("GetOpenFileNameA", &GetOpenFileNameA, [&](OPENFILENAMEA*) {
        dialog_ = nullptr;
        return TRUE;
    });
    VARIANT_BOOL toOpen = VARIANT_TRUE, result = 99;
    EXPECT_EQ(S_OK, raw->Show(&toOpen, &result));
    EXPECT_EQ(VARIANT_TRUE, result);
    EXPECT_TRUE(CanUnload());
}

// ---- The real dialogs ----

class RealFileDialog : public FileDialog {
  protected:
    RealFileDialog() {
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
