// CFontDialog: names that fill a record, and the real dialog under a driver's hands. The records are in dialogs.facts.
#include "platform/text.h"
#include "shell/dialog_test.h"

namespace velk::test {
namespace {

constexpr int kFaceBox = 0x470;
constexpr int kStyleBox = 0x471;
constexpr int kSizeBox = 0x472;
constexpr int kColourBox = 0x473;

class FontDialog : public DialogTest {
  protected:
    FontDialog() : DialogTest(__uuidof(::CFontDialog)) {}
    ComPtr<IDispatch> Font() { return ComPtr<IDispatch>(Get(dialog_.get(), L"Font").value.pdispVal); }
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
