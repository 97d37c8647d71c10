// CFontDialog: the exact records, its font object, and the real dialog under a driver's hands.
#include "platform/drawing_handles.h"
#include "platform/text.h"
#include "shell/dialog_test.h"
#include "support/gdi_objects.h"
#include "support/test_printer.h"

namespace velk::test {
namespace {

constexpr DWORD kRecordSize = SizeOf(60, sizeof(CHOOSEFONTA));
constexpr int kFaceBox = 0x470;
constexpr int kStyleBox = 0x471;
constexpr int kSizeBox = 0x472;
constexpr int kColourBox = 0x473;

class FontDialog : public DialogTest {
  protected:
    FontDialog() : DialogTest(__uuidof(::CFontDialog)) {}
    void SetUp() override {
        const ScreenContext screen(GetDC(nullptr));
        ASSERT_EQ(96, GetDeviceCaps(screen.get(), LOGPIXELSY)) << "the heights below are for 96 pixels per inch";
    }
    ComPtr<IDispatch> Font() { return ComPtr<IDispatch>(Get(dialog_.get(), L"Font").value.pdispVal); }
    void SetFont(const wchar_t* name, VARIANT value) { EXPECT_EQ(S_OK, Let(Font().get(), name, {value}).result); }
    std::wstring FontFacts(std::initializer_list<const wchar_t*> names) { return Facts(Font().get(), names); }
};

// The platform's font object answers with the name of an installed font that is like the one asked for. As long as this
// lives, font objects answer with another name.
class OtherName {
  public:
    OtherName(const ComPtr<IDispatch>& font, std::wstring name)
        : slot_(*reinterpret_cast<void***>(font.As<IFont>(IID_IFont).get()) + kGetName) {
        name_ = std::move(name);
        original_ = WriteInto(slot_, Address(&GetName));
    }
    OtherName(const OtherName&) = delete;
    OtherName& operator=(const OtherName&) = delete;
    ~OtherName() { WriteInto(slot_, original_); }

  private:
    static constexpr int kGetName = 3;  // the first slot behind IUnknown's

    static HRESULT WINAPI GetName(IFont*, BSTR* name) {
        *name = Bstr(name_).Detach();
        return S_OK;
    }
    static inline std::wstring name_;
    void** slot_;
    void* original_ = nullptr;
};

TEST_F(FontDialog, PropertiesHoldWhatTheyAreGiven) {
    ExpectProperties(L"Color=0 Flags=67 hWndParent=0 Max=0 Min=0 Style=");
}

TEST_F(FontDialog, TheRecordsDescribeFontAndLimits) {
    const OtherName name(Font(), L"Caf\u00E9 Sans");
    SetFont(L"Size", Arg(8.0));
    SetFont(L"Bold", Arg(true));
    SetFont(L"Italic", Arg(true));
    SetFont(L"Strikethrough", Arg(true));
    Set(L"Color", 0x00FF8040);
    Set(L"Flags", FonWYSIWYG | FonEnableHook | FonUseStyle);
    Set(L"Min", -8);
    Set(L"Max", 72);
    Set(L"hWndParent", kNoWindow);
    const Fake fake("ChooseFontA", &ChooseFontA, [](CHOOSEFONTA* record) {
        CHOOSEFONTA expected{};
        expected.lStructSize = kRecordSize;
        expected.hwndOwner = static_cast<HWND>(LongToHandle(kNoWindow));
        expected.lpLogFont = record->lpLogFont;
        expected.Flags = 0xFFFF8000u | 8 | 128;  // hook and style stay null
        expected.rgbColors = 0x00FF8040;
        expected.nSizeMin = -8;
        expected.nSizeMax = 72;
        EXPECT_EQ(0, memcmp(&expected, record, kRecordSize));
        LOGFONTA font{};
        font.lfHeight = -11;
        font.lfWeight = 700;
        font.lfItalic = font.lfStrikeOut = TRUE;
        strcpy(font.lfFaceName, "Caf\xE9 Sans");
        EXPECT_EQ(0, memcmp(&font, record->lpLogFont, sizeof(font)));
        record->rgbColors = record->lpLogFont->lfItalic = 0;
        return FALSE;
    });
    EXPECT_FALSE(Show());
    EXPECT_EQ(1, fake.calls());
    EXPECT_EQ(L"True|", FontFacts({L"Italic"}));
    EXPECT_EQ(std::to_wstring(0x00FF8040), Value(L"Color"));
}

TEST_F(FontDialog, AChoiceIsWrittenBack) {
    for (const LONG weight : {700L, 600L, 800L, 400L}) {
        const Fake fake("ChooseFontA", &ChooseFontA, [&](CHOOSEFONTA* record) {
            LOGFONTA& font = *record->lpLogFont;
            font.lfHeight = -16;
            font.lfWeight = weight;
            font.lfUnderline = 1;
            font.lfStrikeOut = 255;
            record->rgbColors = 0x00123456;
            record->iPointSize = 990;
            record->nFontType = BOLD_FONTTYPE;
            return TRUE;
        });
        EXPECT_TRUE(Show());
        // The weight is written last: Bold would set one of its own.
        EXPECT_EQ(std::to_wstring(weight) + L"|12|False|True|True|",
                  FontFacts({L"Weight", L"Size", L"Italic", L"Underline", L"Strikethrough"}));
        EXPECT_EQ(std::to_wstring(0x00123456) + L"|0||", Facts(dialog_.get(), {L"Color", L"FontType", L"Style"}));
    }
}

TEST_F(FontDialog, ANameMayHave33BytesAndNoMore) {
    ReportRecorder recorder(Library());
    for (const std::size_t length : {0u, 32u, 33u, 34u}) {
        const OtherName name(Font(), std::wstring(length, L'F'));
        const Fake fake("ChooseFontA", &ChooseFontA, [&](CHOOSEFONTA* record) {
            const char* const face = reinterpret_cast<const char*>(record->lpLogFont) + offsetof(LOGFONTA, lfFaceName);
            EXPECT_EQ(std::string(length, 'F') + '\0', std::string(face, length + 1));
            return TRUE;
        });
        EXPECT_EQ(length <= 33, Show()) << length;
        EXPECT_EQ(length <= 33 ? 1 : 0, fake.calls()) << length;
        EXPECT_EQ(length <= 33 ? L"" : L"Show: Error: 9. Subscript out of range|", recorder.Shown());
    }
}

TEST_F(FontDialog, SizesThatDoNotFitAreReportedByTheConversion) {
    ReportRecorder recorder(Library());
    SetFont(L"Size", Arg(342.0));
    LONG weight = 300;
    const Fake fake("ChooseFontA", &ChooseFontA, [&](CHOOSEFONTA* record) {
        EXPECT_EQ(weight == 300 ? 0 : -11, record->lpLogFont->lfHeight);
        record->lpLogFont->lfHeight = -456;
        record->lpLogFont->lfWeight = weight;
        return TRUE;
    });
    EXPECT_TRUE(Show()) << "both conversions give 0 and Show goes on";
    EXPECT_EQ(L"300|", FontFacts({L"Weight"}));
    EXPECT_EQ(L"PointsToHeight: Error: 6. Overflow|HeightToPoints: Error: 6. Overflow|", recorder.Shown());
    weight = 40000;  // a font object's is an Integer
    SetFont(L"Size", Arg(8.0));
    EXPECT_TRUE(Show()) << "the user confirmed";
    EXPECT_EQ(L"HeightToPoints: Error: 6. Overflow|Show: Error: 6. Overflow|", recorder.Shown());
    SetFont(L"Size", Arg(40000.0));
    EXPECT_FALSE(Show());
    EXPECT_EQ(2, fake.calls());
    EXPECT_EQ(L"Show: Error: 6. Overflow|", recorder.Shown());
}

TEST_F(FontDialog, LendsTheDialogTheDefaultPrinter) {
    bool isPrinter = false;
    const Fake fake("ChooseFontA", &ChooseFontA, [&](CHOOSEFONTA* record) {
        isPrinter = GetDeviceCaps(record->hDC, TECHNOLOGY) == DT_RASPRINTER;
        return FALSE;
    });
    { const TestPrinter goneAgain; }
    char another[64];
    Show();
    EXPECT_EQ(GetProfileStringA("windows", "device", "", another, sizeof another) != 0, isPrinter);
    const TestPrinter printer;
    Show();
    EXPECT_TRUE(isPrinter);
    const int objects = GdiObjects();
    Show();
    EXPECT_EQ(objects, GdiObjects());
}

// ---- The real dialog ----

TEST_F(FontDialog, GivesTheChosenFontAndColour) {
    Set(L"Flags", FonScreenFonts | FonInitToLogFontStruct | FonEffects);
    const ComPtr<IDispatch> font = Font();
    const std::wstring before = FontFacts({L"Name"});
    std::wstring face;
    EXPECT_TRUE(Show([&](HWND window) {
        face = SelectIn(window, kFaceBox, [&](const std::wstring& name) { return name + L"|" != before; });
        SelectIn(window, kStyleBox, L"Bold");
        SelectIn(window, kSizeBox, L"14");
        SelectIn(window, kColourBox, L"Red");
        Press(window, IDOK);
    }));
    // 14.25 points: font objects keep what whole pixels make of a size.
    const std::wstring chosen = face + L"|True|700|14.25|";
    EXPECT_EQ(chosen, FontFacts({L"Name", L"Bold", L"Weight", L"Size"}));
    EXPECT_EQ(L"255", Value(L"Color"));
    EXPECT_EQ(font.get(), Font().get());
    EXPECT_FALSE(Show([&](HWND window) {
        EXPECT_TRUE(WaitUntil([&] { return TextOfWindow(ControlOf(window, kFaceBox)) == face; }));
        SelectIn(window, kSizeBox, L"8");
        Cancel(window);
    }));
    EXPECT_EQ(chosen, FontFacts({L"Name", L"Bold", L"Weight", L"Size"}));
}

// What the platform makes of these is its own affair, as long as Show comes back.
TEST_F(FontDialog, ComesBackWhateverItIsGiven) {
    for (const LONG flags : {-32768L, 4L, 8L, 16L, 32L, 128L, 512L, 8192L, 0L}) {
        const Fake real("ChooseFontA", &ChooseFontA, [&](CHOOSEFONTA* record) {
            const BOOL answer = ChooseFontA(record);
            EXPECT_EQ(flags == FonEnableTemplateHandle && Departs("ChooseFont") ? -1 : 0, answer) << flags;
            return answer;
        });
        Set(L"Flags", 67 | flags);
        EXPECT_FALSE(Show(Cancel)) << flags;
    }
    for (const std::size_t length : {0u, 32u, 33u}) {
        const OtherName name(Font(), std::wstring(length, L'F'));
        EXPECT_FALSE(Show(Cancel)) << length;
        EXPECT_TRUE(sawDialog_);
    }
    Set(L"hWndParent", kNoWindow);
    EXPECT_FALSE(Show(Cancel));
}

}  // namespace
}  // namespace velk::test
