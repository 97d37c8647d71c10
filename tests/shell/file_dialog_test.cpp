// CFileDialog: the exact records, what becomes of each answer, and the real dialogs under a driver's hands.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "frame/text.h"
#include "shell/fake_dialog.h"
#include "support/dialog_driver.h"
#include "support/late_bound.h"
#include "support/report_recorder.h"
#include "support/scratch_folder.h"

namespace velk::test {
namespace {

using namespace std::string_literals;
using FakeOpen = FakeDialog<OPENFILENAMEA, 1>;
using FakeSave = FakeDialog<OPENFILENAMEA, 2>;

constexpr int kNameBox = 0x47C;     // of the Explorer-style dialog
constexpr int kOldNameBox = 0x480;  // of the old one
constexpr DWORD kRecordSize = SizeOf(76, sizeof(OPENFILENAME_NT4A));
constexpr LONG kNoWindow = 0x7FFFFE;  // no such handle

class FileDialog : public testing::Test {
  protected:
    void Set(const wchar_t* name, const std::wstring& text) {
        Bstr value(text);
        EXPECT_EQ(S_OK, Let(dialog_.get(), name, {Arg(value.get())}).result) << name;
    }
    void Set(const wchar_t* name, LONG value) {
        EXPECT_EQ(S_OK, Let(dialog_.get(), name, {Arg(value)}).result) << name;
    }
    std::wstring TextIn(const wchar_t* name) { return TextOf(Get(dialog_.get(), name).value); }
    LONG NumberIn(const wchar_t* name) {
        const Outcome outcome = Get(dialog_.get(), name);
        return outcome.value.vt == VT_I2 ? outcome.value.iVal : outcome.value.lVal;
    }
    bool Show(bool toOpen = true) {
        VARIANT_BOOL open = toOpen ? VARIANT_TRUE : VARIANT_FALSE;
        VARIANT_BOOL result = 99;
        EXPECT_EQ(S_OK, dialog_->Show(&open, &result));
        return result != VARIANT_FALSE;
    }
    bool Drive(std::function<void(HWND)> actions, bool toOpen = true) {
        DialogDriver driver(std::move(actions));
        const bool shown = Show(toOpen);
        driver.Finish();
        sawDialog_ = driver.sawDialog();
        return shown;
    }
    bool Choose(const std::wstring& name, bool toOpen = true, int box = kNameBox) {
        return Drive(
            [&](HWND window) {
                TypeInto(window, box, name);
                Press(window, IDOK);
            },
            toOpen);
    }

    ComPtr<_CFileDialog> dialog_ = CreateObject<_CFileDialog>(__uuidof(::CFileDialog));
    bool sawDialog_ = false;
};

TEST_F(FileDialog, PropertiesHoldWhatTheyAreGiven) {
    for (const wchar_t* name : {L"DefaultExt", L"DialogTitle", L"Filename", L"FileTitle", L"Filter", L"InitialDir"}) {
        EXPECT_EQ(L"", TextIn(name));
        for (const std::wstring& text : {L"a\0|b*?"s, std::wstring(70000, L'x'), L""s}) {
            Set(name, text);
            EXPECT_EQ(text, TextIn(name)) << name;
        }
    }
    const std::pair<const wchar_t*, LONG> numbers[] = {
        {L"FilterIndex", 0}, {L"Flags", 0}, {L"hWndParent", 0}, {L"MaxFileSize", 260}};
    for (const auto& [name, first] : numbers) {
        EXPECT_EQ(first, NumberIn(name)) << name;
        for (const LONG value : {-32768L, 32767L, 0L}) {
            Set(name, value);
            EXPECT_EQ(value, NumberIn(name)) << name;
        }
    }
    EXPECT_EQ(E_POINTER, dialog_->put_Filename(nullptr));
    EXPECT_EQ(E_POINTER, dialog_->Show(nullptr, nullptr));
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

TEST_F(FileDialog, TheRecordCarriesEachProperty) {
    FakeOpen open("GetOpenFileNameA", [](OPENFILENAMEA&) { return FALSE; });
    FakeSave save("GetSaveFileNameA", [](OPENFILENAMEA& record) {
        EXPECT_EQ(kRecordSize, record.lStructSize);
        EXPECT_EQ(LongToHandle(kNoWindow), record.hwndOwner);
        EXPECT_STREQ("Caption \xE9?", record.lpstrTitle);
        EXPECT_STREQ("dat", record.lpstrDefExt);
        EXPECT_EQ(0xFFFF8000u | 32 | 64 | 128, record.Flags);
        EXPECT_EQ(nullptr, reinterpret_cast<void*>(record.lpfnHook));
        EXPECT_EQ(nullptr, record.lpTemplateName);
        EXPECT_EQ(nullptr, record.hInstance);
        EXPECT_EQ(0xFFFFFFFEu, record.nFilterIndex);
        EXPECT_STREQ("C:\\start", record.lpstrInitialDir);
        EXPECT_EQ("A\0a\0B\0\0\0"s, std::string(record.lpstrFilter, 8));
        EXPECT_EQ("n\0m"s + std::string(297, '\0'), std::string(record.lpstrFile, 300));
        EXPECT_EQ("title"s + std::string(295, '\0'), std::string(record.lpstrFileTitle, 300));
        EXPECT_EQ(300u, record.nMaxFile);
        EXPECT_EQ(300u, record.nMaxFileTitle);
        return FALSE;
    });
    Set(L"hWndParent", kNoWindow);
    Set(L"DialogTitle", L"Caption \u00E9\u6F22");
    Set(L"DefaultExt", L"dat");
    Set(L"Flags", FleNoReadOnlyReturn | FleEnableHook | FleEnableTemplate | FleEnableTemplateHandle);
    Set(L"FilterIndex", -2);
    Set(L"InitialDir", L"C:\\start");
    Set(L"Filter", L"A|a|B|");
    Set(L"Filename", L"n\0m"s);
    Set(L"FileTitle", L"title");
    Set(L"MaxFileSize", 300);
    EXPECT_FALSE(Show(false));
    EXPECT_EQ(0, open.calls());
    EXPECT_EQ(1, save.calls());
}

TEST_F(FileDialog, AFolderThatWasSetToNothingIsNotOneThatWasNeverSet) {
    std::vector<bool> isNull;
    FakeOpen open("GetOpenFileNameA", [&](OPENFILENAMEA& record) {
        isNull.push_back(record.lpstrInitialDir == nullptr);
        return FALSE;
    });
    BSTR none = nullptr;
    Show();
    Set(L"InitialDir", L"");
    Show();
    EXPECT_EQ(S_OK, dialog_->put_InitialDir(&none));
    Show();
    EXPECT_EQ((std::vector<bool>{true, false, true}), isNull);
}

struct Answer {
    const char* what;
    std::wstring before;
    std::string buffer;  // what the dialog writes over the first bytes
    std::wstring after;
};

TEST_F(FileDialog, AnAnswerIsTrimmedIntoTheProperties) {
    const Answer answers[] = {
        {"one name", L"", "C:\\a.txt\0"s, L"C:\\a.txt"},
        {"several", L"", "C:\\dir\0a\0b c\0\0"s, L"C:\\dir a b c"},
        {"a shorter name", L"C:\\long.txt", "C:\\a\0"s, L"C:\\a"},
        {"several over a longer name", L"C:\\a long long name.txt", "C:\\d\0a\0b\0\0"s, L"C:\\d a b"},
        {"nothing", L"", "\0"s, L""},
        {"filled to the end", L"", std::string(40, 'x'), L""},
        {"filled to the last but one", L"", std::string(39, 'x') + '\0', L""},
        {"filled to the last but two", L"", std::string(38, 'x') + "\0\0"s, L""},
        {"filled to the last but three", L"", std::string(37, 'x') + "\0\0\0"s, std::wstring(37, L'x')},
        {"beyond ASCII", L"", "\x80\xE9\0"s, L"\u20AC\u00E9"},
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
        EXPECT_TRUE(Show()) << answer.what;
        EXPECT_EQ(answer.after, TextIn(L"Filename")) << answer.what;
        EXPECT_EQ(answer.after, TextIn(L"FileTitle")) << answer.what;
    }
    EXPECT_EQ(0, NumberIn(L"Flags"));
    EXPECT_EQ(0, NumberIn(L"FilterIndex"));
}

TEST_F(FileDialog, ACancelledDialogChangesNothing) {
    FakeSave save("GetSaveFileNameA", [](OPENFILENAMEA& record) {
        strcpy(record.lpstrFile, "scribbled");
        strcpy(record.lpstrFileTitle, "scribbled");
        return FALSE;
    });
    Set(L"Filename", L"before");
    Set(L"FileTitle", L"title before");
    EXPECT_FALSE(Show(false));
    EXPECT_EQ(L"before", TextIn(L"Filename"));
    EXPECT_EQ(L"title before", TextIn(L"FileTitle"));
}

TEST_F(FileDialog, TextsLongerThanTheBuffersAreReportedAndNothingIsShown) {
    struct Case {
        LONG size;
        std::size_t name;
        std::size_t title;
        bool shown;
    };
    const Case cases[] = {{0, 0, 0, true},         {0, 1, 0, false},        {1, 1, 1, true},       {1, 0, 2, false},
                          {-1, 0, 0, false},       {-32768, 0, 0, false},   {260, 260, 260, true}, {260, 261, 0, false},
                          {32767, 32767, 0, true}, {32767, 32768, 0, false}};
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
        EXPECT_EQ(c.name, TextIn(L"Filename").size());
    }
}

TEST_F(FileDialog, MayLoseItsLastReferenceWhileItIsOpen) {
    _CFileDialog* const raw = dialog_.get();
    FakeOpen open("GetOpenFileNameA", [&](OPENFILENAMEA& record) {
        dialog_ = nullptr;
        strcpy(record.lpstrFile, "chosen");
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
    ScratchFolder folder_;
};

TEST_F(RealFileDialog, GivesPathAndTitleOfEachChoice) {
    for (const wchar_t* name : {L"a rather long name.txt", L"b.txt", L"a.txt"}) {
        EXPECT_TRUE(Choose(name));
        EXPECT_EQ(folder_.Path(name), TextIn(L"Filename"));
        EXPECT_EQ(name, TextIn(L"FileTitle"));
    }
    EXPECT_FALSE(Drive([](HWND window) { Press(window, IDCANCEL); }));
    EXPECT_TRUE(sawDialog_);
    EXPECT_EQ(folder_.Path(L"a.txt"), TextIn(L"Filename"));
    EXPECT_EQ(L"a.txt", TextIn(L"FileTitle"));
}

TEST_F(RealFileDialog, ShowsTitleNameAndFilters) {
    std::wstring caption, name, shown;
    Set(L"DialogTitle", L"Open a scale");
    Set(L"Filename", L"scale.dat");
    Set(L"Filter", L"Scales|*.dat|Texts|*.txt|Odd");
    Set(L"FilterIndex", 2);
    EXPECT_FALSE(Drive([&](HWND window) {
        caption = TextOfWindow(window);
        WaitUntil([&] { return !(name = TextOfWindow(ControlOf(window, kNameBox))).empty(); });
        shown = TextOfWindow(ControlOf(window, 0x470));
        Press(window, IDCANCEL);
    }));
    EXPECT_EQ(L"Open a scale", caption);
    EXPECT_EQ(L"scale.dat", name);
    EXPECT_EQ(L"Texts", shown);
}

TEST_F(RealFileDialog, SeveralFilesComeAsFolderAndNames) {
    Set(L"Flags", FleExplorer | FleNoChangeDir | FleAllowMultiSelect);
    EXPECT_TRUE(Choose(L"\"a.txt\" \"b.txt\""));
    EXPECT_EQ(folder_.path() + L" a.txt b.txt", TextIn(L"Filename"));
    Set(L"Filename", L"");
    Set(L"Flags", FleNoChangeDir | FleAllowMultiSelect);  // the old style
    EXPECT_TRUE(Choose(L"a.txt", true, kOldNameBox));
    EXPECT_EQ(folder_.Path(L"a.txt"), TextIn(L"Filename"));
}

TEST_F(RealFileDialog, SavingAppendsTheExtension) {
    Set(L"DefaultExt", L"dat");
    EXPECT_TRUE(Choose(L"new", false));
    EXPECT_EQ(folder_.Path(L"new.dat"), TextIn(L"Filename"));
    EXPECT_EQ(L"new.dat", TextIn(L"FileTitle"));
}

TEST_F(RealFileDialog, AChoiceThatDoesNotFitIsNone) {
    for (const LONG size : {0L, 1L, 2L, 10L}) {
        Set(L"MaxFileSize", size);
        EXPECT_FALSE(Choose(L"a.txt")) << size;
        EXPECT_TRUE(sawDialog_) << size;
        EXPECT_EQ(L"", TextIn(L"Filename")) << size;
    }
    Set(L"MaxFileSize", 32767);
    EXPECT_TRUE(Choose(L"a.txt"));
    EXPECT_EQ(folder_.Path(L"a.txt"), TextIn(L"Filename"));
}

// What the platform makes of these is its own affair, as long as Show comes back.
TEST_F(RealFileDialog, ComesBackWhateverItIsGiven) {
    const std::wstring filters[] = {L"|", L"||", L"odd", L"|a|b", L"a||b|c", std::wstring(20000, L'|'), L"a\0|b"s};
    for (const std::wstring& filter : filters) {
        Set(L"Filter", filter);
        EXPECT_FALSE(Drive([](HWND window) { Press(window, IDCANCEL); }));
    }
    const LONG flags[] = {FleEnableHook,       FleEnableTemplate, FleEnableTemplateHandle,
                          FleNoReadOnlyReturn, FleShowHelp,       -225};
    for (const LONG flag : flags) {
        Set(L"Flags", flag);
        EXPECT_FALSE(Drive([](HWND window) { Press(window, IDCANCEL); })) << flag;
    }
    Set(L"Filename", L"a\0b"s);
    EXPECT_FALSE(Drive([](HWND window) { Press(window, IDCANCEL); }));
    Set(L"hWndParent", kNoWindow);
    EXPECT_FALSE(Drive([](HWND window) { Press(window, IDCANCEL); }));
    EXPECT_EQ(L"a\0b"s, TextIn(L"Filename"));
}

}  // namespace
}  // namespace velk::test
