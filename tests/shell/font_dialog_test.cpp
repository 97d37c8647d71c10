// CFontDialog: the exact records, its font object, and the real dialog under a driver's hands.
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "frame/gdi.h"
#include "frame/text.h"
#include "shell/fake_dialog.h"
#include "support/dialog_driver.h"
#include "support/event_sink.h"
#include "support/gdi_objects.h"
#include "support/late_bound.h"
#include "support/report_recorder.h"
#include "support/test_printer.h"

namespace velk::test {
namespace {

using FakeFont = FakeDialog<CHOOSEFONTA>;

constexpr int kFaceBox = 0x470;
constexpr int kStyleBox = 0x471;
constexpr int kSizeBox = 0x472;
constexpr int kColourBox = 0x473;
constexpr DWORD kRecordSize = SizeOf(60, sizeof(CHOOSEFONTA));
constexpr LONG kNoWindow = 0x7FFFFE;

class FontDialog : public testing::Test {
  protected:
    void SetUp() override {
        const ScreenContext screen(GetDC(nullptr));
        ASSERT_EQ(96, GetDeviceCaps(screen.get(), LOGPIXELSY)) << "the heights below are for 96 pixels per inch";
    }
    void Set(const wchar_t* name, LONG value) {
        EXPECT_EQ(S_OK, Let(dialog_.get(), name, {Arg(value)}).result) << name;
    }
    LONG NumberIn(const wchar_t* name) {
        const Outcome outcome = Get(dialog_.get(), name);
        return outcome.value.vt == VT_I2 ? outcome.value.iVal : outcome.value.lVal;
    }
    ComPtr<IFontDisp> Font() {
        ComPtr<IFontDisp> font;
        EXPECT_EQ(S_OK, dialog_->get_Font(font.Receive()));
        return font;
    }
    void SetFont(const wchar_t* name, VARIANT value) {
        EXPECT_EQ(S_OK, Let(Font().get(), name, {value}).result) << name;
    }
    std::wstring FontText(const wchar_t* name) {
        Variant value = std::move(Get(Font().get(), name).value);
        EXPECT_EQ(S_OK, VariantChangeType(&value, &value, 0, VT_BSTR));
        return TextOf(value);
    }
    bool Show() {
        VARIANT_BOOL result = 99;
        EXPECT_EQ(S_OK, dialog_->Show(&result));
        return result != VARIANT_FALSE;
    }
    bool Drive(std::function<void(HWND)> actions) {
        DialogDriver driver(std::move(actions));
        const bool confirmed = Show();
        driver.Finish();
        sawDialog_ = driver.sawDialog();
        return confirmed;
    }

    ComPtr<_CFontDialog> dialog_ = CreateObject<_CFontDialog>(__uuidof(::CFontDialog));
    bool sawDialog_ = false;
};

// The platform's font object answers with the name of an installed font that is like the one asked for. As long as this
// lives, font objects answer with another name.
class OtherName {
  public:
    OtherName(IFontDisp* font, std::wstring name) {
        name_ = std::move(name);
        const auto object = ComPtr<IFontDisp>(font).As<IFont>(IID_IFont);
        slot_ = *reinterpret_cast<void***>(object.get()) + kGetName;
        original_ = *slot_;
        Write(reinterpret_cast<void*>(&GetName));
    }
    OtherName(const OtherName&) = delete;
    OtherName& operator=(const OtherName&) = delete;
    ~OtherName() { Write(original_); }

  private:
    static constexpr int kGetName = 3;  // the first slot behind IUnknown's

    static HRESULT WINAPI GetName(IFont*, BSTR* name) {
        *name = Bstr(name_).Detach();
        return S_OK;
    }
    void Write(void* function) {
        DWORD before = 0;
        VirtualProtect(slot_, sizeof(void*), PAGE_READWRITE, &before);
        *slot_ = function;
        VirtualProtect(slot_, sizeof(void*), before, &before);
    }

    static inline std::wstring name_;
    void** slot_ = nullptr;
    void* original_ = nullptr;
};

// An installed font other than this one.
std::string InstalledFont(const std::string& except) {
    struct Search {
        std::string except, found;
    } search{except, ""};
    const auto look =
        [](const LOGFONTA* font, const TEXTMETRICA*, DWORD type, LPARAM parameter) __attribute__((stdcall))->int {
        auto& wanted = *reinterpret_cast<Search*>(parameter);
        if (type == TRUETYPE_FONTTYPE && wanted.except != font->lfFaceName) wanted.found = font->lfFaceName;
        return wanted.found.empty();
    };
    const ScreenContext screen(GetDC(nullptr));
    EnumFontFamiliesA(screen.get(), nullptr, look, reinterpret_cast<LPARAM>(&search));
    EXPECT_NE("", search.found);
    return search.found;
}

void ExpectReport(const ReportRecorder& recorder, const wchar_t* title, const wchar_t* text) {
    ASSERT_EQ(1u, recorder.reports().size()) << title;
    EXPECT_EQ(title, recorder.reports()[0].title);
    EXPECT_EQ(text, recorder.reports()[0].text);
}

TEST_F(FontDialog, PropertiesHoldWhatTheyAreGiven) {
    const std::map<const wchar_t*, LONG> numbers{
        {L"Color", 0}, {L"Flags", 67}, {L"hWndParent", 0}, {L"Max", 0}, {L"Min", 0}};
    for (const auto& [name, first] : numbers) {
        EXPECT_EQ(first, NumberIn(name)) << name;
        for (const LONG value : {-32768L, 32767L}) {
            Set(name, value);
            EXPECT_EQ(value, NumberIn(name)) << name;
        }
    }
    Bstr style(L"Bold Oblique");
    EXPECT_EQ(L"", TextOf(Get(dialog_.get(), L"Style").value));
    EXPECT_EQ(S_OK, Let(dialog_.get(), L"Style", {Arg(style.get())}).result);
    EXPECT_EQ(L"Bold Oblique", TextOf(Get(dialog_.get(), L"Style").value));
    EXPECT_EQ(0, NumberIn(L"FontType"));
    EXPECT_EQ(DISP_E_MEMBERNOTFOUND, Let(dialog_.get(), L"FontType", {Arg(1L)}).result);
    EXPECT_EQ(Font().get(), Font().get());
    EXPECT_NE(L"", FontText(L"Name"));
}

TEST_F(FontDialog, TheRecordsDescribeFontAndLimits) {
    const OtherName name(Font().get(), L"Caf\u00E9 Sans");
    SetFont(L"Size", Arg(8.0));
    SetFont(L"Bold", Arg(true));
    SetFont(L"Italic", Arg(true));
    SetFont(L"Strikethrough", Arg(true));
    Set(L"Color", 0x00FF8040);
    Set(L"Flags", FonWYSIWYG | FonEnableHook | FonUseStyle);
    Set(L"Min", -8);
    Set(L"Max", 72);
    Set(L"hWndParent", kNoWindow);
    FakeFont fake("ChooseFontA", [](CHOOSEFONTA& record) {
        CHOOSEFONTA expected{};
        expected.lStructSize = kRecordSize;
        expected.hwndOwner = static_cast<HWND>(LongToHandle(kNoWindow));
        expected.lpLogFont = record.lpLogFont;
        expected.Flags = 0xFFFF8000u | 8 | 128;  // hook and style stay null
        expected.rgbColors = 0x00FF8040;
        expected.nSizeMin = -8;
        expected.nSizeMax = 72;
        EXPECT_EQ(0, memcmp(&expected, &record, kRecordSize));
        LOGFONTA font{};
        font.lfHeight = -11;
        font.lfWeight = 700;
        font.lfItalic = font.lfStrikeOut = TRUE;
        strcpy(font.lfFaceName, "Caf\xE9 Sans");
        EXPECT_EQ(0, memcmp(&font, record.lpLogFont, sizeof(font)));
        return FALSE;
    });
    EXPECT_FALSE(Show());
    EXPECT_EQ(1, fake.calls());
}

// Records what a font object tells of its changes: in which order, and whether it was bold at that moment.
class FontWatcher final : public IPropertyNotifySink {
  public:
    explicit FontWatcher(IUnknown* font)
        : font_(ComPtr<IUnknown>(font).As<IFont>(IID_IFont)), connection_(font, IID_IPropertyNotifySink, this) {
        EXPECT_EQ(S_OK, connection_.result());
    }
    std::vector<DISPID> changes;
    BOOL boldWhenSet = 99;

    STDMETHODIMP QueryInterface(REFIID iid, void** object) noexcept override {
        *object = iid == IID_IUnknown || iid == IID_IPropertyNotifySink ? this : nullptr;
        return *object ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return 2; }
    STDMETHODIMP_(ULONG) Release() noexcept override { return 1; }
    STDMETHODIMP OnRequestEdit(DISPID) noexcept override { return S_OK; }
    STDMETHODIMP OnChanged(DISPID id) noexcept override {
        changes.push_back(id);
        if (id == DISPID_FONT_BOLD) font_->get_Bold(&boldWhenSet);
        return S_OK;
    }

  private:
    ComPtr<IFont> font_;
    Connection connection_;
};

TEST_F(FontDialog, AChoiceIsWrittenBackInOrder) {
    const std::string face = InstalledFont(ToAnsi(FontText(L"Name")));
    for (const LONG weight : {700L, 600L, 800L, 400L}) {
        FakeFont fake("ChooseFontA", [&](CHOOSEFONTA& record) {
            LOGFONTA& font = *record.lpLogFont;
            font.lfHeight = -16;
            font.lfWeight = weight;
            font.lfItalic = 0;
            font.lfUnderline = 1;
            font.lfStrikeOut = 255;
            strcpy(font.lfFaceName, face.c_str());
            record.rgbColors = 0x00123456;
            record.iPointSize = 990;
            record.nFontType = BOLD_FONTTYPE;
            return TRUE;
        });
        FontWatcher watcher(Font().get());
        EXPECT_TRUE(Show());
        EXPECT_EQ((std::vector<DISPID>{DISPID_FONT_NAME, DISPID_FONT_BOLD, DISPID_FONT_ITALIC, DISPID_FONT_STRIKE,
                                       DISPID_FONT_UNDER, DISPID_FONT_SIZE, DISPID_FONT_WEIGHT}),
                  watcher.changes);
        EXPECT_EQ(weight == 700, watcher.boldWhenSet == TRUE) << weight;
        EXPECT_EQ(std::to_wstring(weight), FontText(L"Weight"));
        EXPECT_EQ(face, ToAnsi(FontText(L"Name")));
        EXPECT_EQ(L"12", FontText(L"Size"));
        EXPECT_EQ(L"0", FontText(L"Italic"));
        EXPECT_EQ(L"-1", FontText(L"Underline"));
        EXPECT_EQ(L"-1", FontText(L"Strikethrough"));
        EXPECT_EQ(0x00123456, NumberIn(L"Color"));
        EXPECT_EQ(0, NumberIn(L"FontType"));
        EXPECT_EQ(L"", TextOf(Get(dialog_.get(), L"Style").value));
    }
}

TEST_F(FontDialog, ACancelledDialogChangesNothing) {
    // -1 is what Wine answers when it cannot make the dialog.
    for (const BOOL answer : {FALSE, -1}) {
        FakeFont fake("ChooseFontA", [&](CHOOSEFONTA& record) {
            strcpy(record.lpLogFont->lfFaceName, "Scribbled");
            record.rgbColors = 1;
            return answer;
        });
        FontWatcher watcher(Font().get());
        EXPECT_FALSE(Show());
        EXPECT_TRUE(watcher.changes.empty());
        EXPECT_EQ(0, NumberIn(L"Color"));
    }
}

TEST_F(FontDialog, ANameMayHave33BytesAndNoMore) {
    for (const std::size_t length : {0u, 31u, 32u, 33u}) {
        FakeFont fake("ChooseFontA", [&](CHOOSEFONTA& record) {
            const char* const face = reinterpret_cast<const char*>(record.lpLogFont) + 28;
            EXPECT_EQ(std::string(length, 'F') + '\0', std::string(face, length + 1));
            return TRUE;
        });
        const OtherName name(Font().get(), std::wstring(length, L'F'));
        EXPECT_TRUE(Show()) << length;
    }
    FakeFont fake("ChooseFontA", [](CHOOSEFONTA&) { return TRUE; });
    for (const std::size_t length : {34u, 5000u}) {
        const ReportRecorder recorder(Library());
        const OtherName name(Font().get(), std::wstring(length, L'F'));
        EXPECT_FALSE(Show());
        ExpectReport(recorder, L"Show", L"Error: 9. Subscript out of range");
    }
    EXPECT_EQ(0, fake.calls());
}

TEST_F(FontDialog, SizesThatDoNotFitAreReportedByTheConversion) {
    const ReportRecorder ahead(Library());
    SetFont(L"Size", Arg(342.0));
    FakeFont fake("ChooseFontA", [](CHOOSEFONTA& record) {
        EXPECT_EQ(0, record.lpLogFont->lfHeight);
        record.lpLogFont->lfHeight = -456;
        return TRUE;
    });
    EXPECT_TRUE(Show()) << "both conversions give 0 and Show goes on";
    ASSERT_EQ(2u, ahead.reports().size());
    EXPECT_EQ(L"PointsToHeight", ahead.reports()[0].title);
    EXPECT_EQ(L"HeightToPoints", ahead.reports()[1].title);
    for (const auto& report : ahead.reports()) EXPECT_EQ(L"Error: 6. Overflow", report.text);
    EXPECT_EQ(L"400", FontText(L"Weight"));

    const ReportRecorder beyond(Library());
    SetFont(L"Size", Arg(40000.0));
    EXPECT_FALSE(Show());
    ExpectReport(beyond, L"Show", L"Error: 6. Overflow");
    EXPECT_EQ(1, fake.calls());
}

TEST_F(FontDialog, LendsTheDialogTheDefaultPrinter) {
    bool isPrinter = false;
    FakeFont fake("ChooseFontA", [&](CHOOSEFONTA& record) {
        isPrinter = GetDeviceCaps(record.hDC, TECHNOLOGY) == DT_RASPRINTER;
        return FALSE;
    });
    Show();
    EXPECT_FALSE(isPrinter);
    const TestPrinter printer;
    Show();
    EXPECT_TRUE(isPrinter);
    const int objects = GdiObjects();
    Show();
    EXPECT_EQ(objects, GdiObjects());
}

TEST_F(FontDialog, MayLoseItsLastReferenceWhileItIsOpen) {
    _CFontDialog* const raw = dialog_.get();
    FakeFont fake("ChooseFontA", [&](CHOOSEFONTA&) {
        dialog_ = nullptr;
        return TRUE;
    });
    VARIANT_BOOL result = 99;
    EXPECT_EQ(S_OK, raw->Show(&result));
    EXPECT_EQ(VARIANT_TRUE, result);
    EXPECT_TRUE(CanUnload());
}

// ---- The real dialog ----

TEST_F(FontDialog, GivesTheChosenFontAndColour) {
    Set(L"Flags", FonScreenFonts | FonInitToLogFontStruct | FonEffects);
    const auto font = Font();
    const std::wstring before = FontText(L"Name");
    std::wstring face;
    EXPECT_TRUE(Drive([&](HWND window) {
        face = SelectIn(window, kFaceBox, [&](const std::wstring& name) { return name != before; });
        SelectIn(window, kStyleBox, [](const std::wstring& style) { return style == L"Bold"; });
        SelectIn(window, kSizeBox, L"14");
        SelectIn(window, kColourBox, L"Red");
        Press(window, IDOK);
    }));
    EXPECT_EQ(face, FontText(L"Name"));
    EXPECT_EQ(L"-1", FontText(L"Bold"));
    EXPECT_EQ(L"700", FontText(L"Weight"));
    EXPECT_EQ(L"14", FontText(L"Size").substr(0, 2));  // 14.25: font objects keep what whole pixels make of a size
    EXPECT_EQ(0x0000FF, NumberIn(L"Color"));
    EXPECT_EQ(0, NumberIn(L"FontType"));
    EXPECT_EQ(font.get(), Font().get());

    std::wstring shown;
    EXPECT_FALSE(Drive([&](HWND window) {
        WaitUntil([&] { return (shown = TextOfWindow(ControlOf(window, kFaceBox))) == face; });
        SelectIn(window, kSizeBox, L"8");
        Press(window, IDCANCEL);
    }));
    EXPECT_EQ(face, shown);
    EXPECT_EQ(L"14", FontText(L"Size").substr(0, 2));
}

// What the platform makes of these is its own affair, as long as Show comes back.
TEST_F(FontDialog, ComesBackWhateverItIsGiven) {
    const auto cancel = [](HWND window) { Press(window, IDCANCEL); };
    for (const LONG flag : {static_cast<LONG>(FonWYSIWYG), 4L, 8L, 16L, 32L, 128L, 512L, 8192L, 0L}) {
        Set(L"Flags", 67 | flag);
        EXPECT_FALSE(Drive(cancel)) << flag;
    }
    for (const std::size_t length : {0u, 32u, 33u}) {
        const OtherName name(Font().get(), std::wstring(length, L'F'));
        EXPECT_FALSE(Drive(cancel)) << length;
        EXPECT_TRUE(sawDialog_);
    }
    Set(L"hWndParent", kNoWindow);
    EXPECT_FALSE(Drive(cancel));
}

}  // namespace
}  // namespace velk::test
