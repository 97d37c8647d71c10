// CFileDialog: the exact records, what becomes of each answer, and the real dialogs under a driver's hands.
#include "shell/dialog_test.h"
#include "support/report_recorder.h"
#include "support/scratch_folder.h"

namespace velk::test {
namespace {

using namespace std::string_literals;
using FakeOpen = FakeDialog<OPENFILENAMEA, 1>;
using FakeSave = FakeDialog<OPENFILENAMEA, 2>;

constexpr DWORD kRecordSize = SizeOf(76, sizeof(OPENFILENAME_NT4A));
constexpr int kNameBox = 0x47C;     // of the Explorer-style dialog
constexpr int kOldNameBox = 0x480;  // of the old one

class FileDialog : public DialogTest {
  protected:
    FileDialog() : DialogTest(__uuidof(::CFileDialog)) { arguments_ = {Arg(true)}; }
};

TEST_F(FileDialog, PropertiesHoldWhatTheyAreGiven) {
    for (const wchar_t* name : {L"DefaultExt", L"DialogTitle", L"Filename", L"FileTitle", L"Filter", L"InitialDir"}) {
        EXPECT_EQ(L"", TextIn(name));
        Set(name, L"a\0|b*?"s);
        EXPECT_EQ(L"a\0|b*?"s, TextIn(name)) << name;
    }
    for (const wchar_t* name : {L"FilterIndex", L"Flags", L"hWndParent"}) ExpectNumber(name, 0);
    ExpectNumber(L"MaxFileSize", 260);
}

// A dialog that is cancelled, whatever it left in its buffers.
BOOL Scribble(OPENFILENAMEA& record) {
    strcpy(record.lpstrFile, "scribbled");
    strcpy(record.lpstrFileTitle, "scribbled");
    return FALSE;
}

TEST_F(FileDialog, TheRecordOfANewObjectIsAsBareAsItCanBe) {
    FakeOpen open("GetOpenFileNameA", [](OPENFILENAMEA& record) {
        OPENFILENAMEA expected{};
        expected.lStructSize = kRecordSize;
        expected.lpstrFilter = record.lpstrFilter;
        expected.lpstrFile = record.lpstrFile;
        expected.nMaxFile = 260;
        expected.lpstrFileTitle = record.lpstrFileTitle;
        expected.nMaxFileTitle = 260;
        expected.lpstrTitle = record.lpstrTitle;
        expected.lpstrDefExt = record.lpstrDefExt;
        EXPECT_EQ(0, memcmp(&expected, &record, kRecordSize));
        EXPECT_EQ("\0\0"s, std::string(record.lpstrFilter, 2));
        EXPECT_EQ(std::string(260, '\0'), std::string(record.lpstrFile, 260));
        EXPECT_EQ(std::string(260, '\0'), std::string(record.lpstrFileTitle, 260));
        EXPECT_STREQ("", record.lpstrTitle);
        EXPECT_STREQ("", record.lpstrDefExt);
        return FALSE;
    });
    EXPECT_FALSE(Show());
    EXPECT_EQ(1, open.calls());
}

TEST_F(FileDialog, TheRecordCarriesEachPropertyAndACancelledDialogChangesNone) {
    FakeSave save("GetSaveFileNameA", [](OPENFILENAMEA& record) {
        EXPECT_EQ(LongToHandle(kNoWindow), record.hwndOwner);
        EXPECT_STREQ("Caption \xE9?", record.lpstrTitle);
        EXPECT_STREQ("dat", record.lpstrDefExt);
        EXPECT_EQ(0xFFFF8000u | 32 | 64 | 128, record.Flags);
        EXPECT_EQ(nullptr, reinterpret_cast<void*>(record.lpfnHook));
        EXPECT_EQ(nullptr, record.lpTemplateName);
        EXPECT_EQ(0xFFFFFFFEu, record.nFilterIndex);
        EXPECT_STREQ("", record.lpstrInitialDir);  // set to nothing is not the same as never set
        EXPECT_EQ("A\0a\0B\0\0\0"s, std::string(record.lpstrFilter, 8));
        EXPECT_EQ("n\0m"s + std::string(297, '\0'), std::string(record.lpstrFile, 300));
        EXPECT_EQ("title"s + std::string(295, '\0'), std::string(record.lpstrFileTitle, 300));
        EXPECT_EQ(300u, record.nMaxFile);
        EXPECT_EQ(300u, record.nMaxFileTitle);
        return Scribble(record);
    });
    Set(L"hWndParent", kNoWindow);
    Set(L"DialogTitle", L"Caption \u00E9\u6F22");
    Set(L"DefaultExt", L"dat");
    Set(L"Flags", FleNoReadOnlyReturn | FleEnableHook | FleEnableTemplate | FleEnableTemplateHandle);
    Set(L"FilterIndex", -2);
    Set(L"InitialDir", L"");
    Set(L"Filter", L"A|a|B|");
    Set(L"Filename", L"n\0m"s);
    Set(L"FileTitle", L"title");
    Set(L"MaxFileSize", 300);
    arguments_ = {Arg(false)};
    EXPECT_FALSE(Show());
    EXPECT_EQ(1, save.calls());
    EXPECT_EQ(L"n\0m"s, TextIn(L"Filename"));
    EXPECT_EQ(L"title", TextIn(L"FileTitle"));
}

TEST_F(FileDialog, AnAnswerIsTrimmedIntoTheProperties) {
    struct Answer {
        std::wstring before;
        std::string buffer;  // what the dialog writes over the first bytes
        std::wstring after;
    };
    const Answer answers[] = {
        {L"", "C:\\a.txt\0"s, L"C:\\a.txt"},
        {L"C:\\a long long name.txt", "C:\\dir\0a\0b c\0\0"s, L"C:\\dir a b c"},
        {L"C:\\long.txt", "C:\\a\0"s, L"C:\\a"},
        {L"", std::string(40, 'x'), L""},
        {L"", std::string(38, 'x') + "\0\0"s, L""},
        {L"", std::string(37, 'x') + "\0\0\0"s, std::wstring(37, L'x')},
        {L"", "\x80\xE9\0"s, L"\u20AC\u00E9"},
    };
    Set(L"MaxFileSize", 40);
    for (const Answer& answer : answers) {
        FakeOpen open("GetOpenFileNameA", [&](OPENFILENAMEA& record) {
            answer.buffer.copy(record.lpstrFile, answer.buffer.size());
            answer.buffer.copy(record.lpstrFileTitle, answer.buffer.size());
            record.Flags = FleReadOnly;
            record.nFilterIndex = 7;
            return TRUE;
        });
        Set(L"Filename", answer.before);
        Set(L"FileTitle", answer.before);
        EXPECT_TRUE(Show());
        EXPECT_EQ(answer.after, TextIn(L"Filename"));
        EXPECT_EQ(answer.after, TextIn(L"FileTitle"));
    }
    EXPECT_EQ(0, NumberIn(L"Flags"));
    EXPECT_EQ(0, NumberIn(L"FilterIndex"));
}

TEST_F(FileDialog, TextsLongerThanTheBuffersAreReportedAndNothingIsShown) {
    struct Case {
        LONG size;
        std::size_t name, title;
        bool shown;
    };
    const Case cases[] = {{0, 0, 0, true},   {0, 1, 0, false},      {1, 1, 1, true},         {1, 0, 2, false},
                          {-1, 0, 0, false}, {-32768, 0, 0, false}, {32767, 32767, 0, true}, {32767, 32768, 0, false}};
    for (const Case& c : cases) {
        const ReportRecorder recorder(Library());
        FakeOpen open("GetOpenFileNameA", [&](OPENFILENAMEA& record) {
            EXPECT_EQ(static_cast<DWORD>(c.size), record.nMaxFile);
            EXPECT_EQ(c.name, strlen(record.lpstrFile));
            return TRUE;
        });
        Set(L"Filename", std::wstring(c.name, L'n'));
        Set(L"FileTitle", std::wstring(c.title, L't'));
        Set(L"MaxFileSize", c.size);
        EXPECT_EQ(c.shown, Show()) << c.size;
        EXPECT_EQ(c.shown ? 1 : 0, open.calls()) << c.size;
        ASSERT_EQ(c.shown ? 0u : 1u, recorder.reports().size()) << c.size;
        if (c.shown) continue;
        EXPECT_EQ(L"Show", recorder.reports()[0].title);
        EXPECT_EQ(L"Error: 5. Invalid procedure call or argument", recorder.reports()[0].text);
    }
}

TEST_F(FileDialog, MayLoseItsLastReferenceWhileItIsOpen) {
    const auto raw = dialog_.As<_CFileDialog>().get();
    FakeOpen open("GetOpenFileNameA", [&](OPENFILENAMEA&) {
        dialog_ = nullptr;
        return TRUE;
    });
    VARIANT_BOOL toOpen = VARIANT_TRUE;
    VARIANT_BOOL result = 99;
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
    for (const wchar_t* name : {L"a rather long name.txt", L"b.txt", L"a.txt"}) {
        EXPECT_TRUE(Choose(name));
        EXPECT_EQ(folder_.Path(name), TextIn(L"Filename"));
        EXPECT_EQ(name, TextIn(L"FileTitle"));
    }
    EXPECT_FALSE(Show(Cancel));
    EXPECT_TRUE(sawDialog_);
    EXPECT_EQ(folder_.Path(L"a.txt"), TextIn(L"Filename"));
    arguments_ = {Arg(false)};
    Set(L"DefaultExt", L"dat");
    EXPECT_TRUE(Choose(L"new"));
    EXPECT_EQ(folder_.Path(L"new.dat"), TextIn(L"Filename"));
}

TEST_F(RealFileDialog, ShowsTitleNameAndFilters) {
    std::wstring caption, filter;
    Set(L"DialogTitle", L"Open a scale");
    Set(L"Filename", L"scale.dat");
    Set(L"Filter", L"Scales|*.dat|Texts|*.txt|Odd");
    Set(L"FilterIndex", 2);
    EXPECT_FALSE(Show([&](HWND window) {
        caption = TextOfWindow(window);
        EXPECT_TRUE(WaitUntil([&] { return TextOfWindow(ControlOf(window, kNameBox)) == L"scale.dat"; }));
        filter = TextOfWindow(ControlOf(window, 0x470));
        Cancel(window);
    }));
    EXPECT_EQ(L"Open a scale", caption);
    EXPECT_EQ(L"Texts", filter);
}

TEST_F(RealFileDialog, SeveralFilesComeAsFolderAndNames) {
    Set(L"Flags", FleExplorer | FleNoChangeDir | FleAllowMultiSelect);
    EXPECT_TRUE(Choose(L"\"a.txt\" \"b.txt\""));
    EXPECT_EQ(folder_.path() + L" a.txt b.txt", TextIn(L"Filename"));
    Set(L"Filename", L"");
    Set(L"Flags", FleNoChangeDir | FleAllowMultiSelect);  // the old style
    EXPECT_TRUE(Choose(L"a.txt", kOldNameBox));
    EXPECT_EQ(folder_.Path(L"a.txt"), TextIn(L"Filename"));
}

TEST_F(RealFileDialog, AChoiceThatDoesNotFitIsNone) {
    for (const LONG size : {0L, 1L, 10L, 32767L}) {
        Set(L"MaxFileSize", size);
        EXPECT_EQ(size == 32767, Choose(L"a.txt")) << size;
        EXPECT_TRUE(sawDialog_) << size;
        EXPECT_EQ(size == 32767 ? folder_.Path(L"a.txt") : L"", TextIn(L"Filename"));
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
