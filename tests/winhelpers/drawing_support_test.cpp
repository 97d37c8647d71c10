// cMemDC, cNCMetrics and cDottedBrush, whose pixels are read back.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>

#include "support/fake.h"
#include "support/gdi_objects.h"
#include "support/import_patch.h"
#include "support/report_recorder.h"
#include "winhelpers/menu/fading_canvas.h"
#include "winhelpers/support/dotted_brush.h"
#include "winhelpers/support/mem_dc.h"
#include "winhelpers/support/nc_metrics.h"
#include "winhelpers/test_bitmaps.h"

namespace velk {

struct NCMetricsProbe {
    static void Fill(const LOGFONTA& logFont, HDC context, IFont* font) {
        cNCMetrics::pLogFontToStdFont(logFont, context, font);
    }
};

namespace test {
namespace {

// The one report that an action brings about, up to its number.
std::wstring ReportOf(const std::function<void()>& action) {
    const ReportRecorder recorder(GetModuleHandleW(nullptr));
    action();
    if (recorder.reports().size() != 1) return std::to_wstring(recorder.reports().size()) + L" reports";
    EXPECT_TRUE(recorder.reports()[0].type & MB_ICONSTOP);
    const std::wstring& text = recorder.reports()[0].text;
    return text.substr(0, text.find(L"\r\nDescription"));
}

class DrawingSupport : public testing::Test {
  protected:
    ~DrawingSupport() override { EXPECT_EQ(before, GdiObjects()) << "nothing is left behind"; }
    const ComPtr<IPictureDisp> warmUp = PictureOf(NewBitmap(kRed, 1, 1));  // the platform keeps what this takes
    const int before = GdiObjects();
};

// A function of the platform past this program's own imports, where what is tested lies too.
template <class Function>
Function* Platforms(const char* name, Function*) {
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"gdi32.dll"), name)));
}

HGDIOBJ WINAPI RefuseSelection(HDC, HGDIOBJ) { return nullptr; }

TEST_F(DrawingSupport, MemDCGrowsAndNeverShrinks) {
    cMemDC memory;
    EXPECT_EQ(nullptr, memory.HDC());
    memory.SetWidth(20);
    memory.SetHeight(10);
    Paint(memory.HDC(), kRed, {0, 0, 20, 10});
    const HDC context = memory.HDC();
    memory.SetWidth(20);
    memory.SetWidth(5);
    memory.SetHeight(-3);
    EXPECT_EQ(context, memory.HDC());
    EXPECT_EQ(kRed, GetPixel(context, 19, 9));
    EXPECT_EQ(CLR_INVALID, GetPixel(context, 20, 9));
    memory.SetHeight(11);
    EXPECT_EQ(20, memory.Width());
    EXPECT_NE(kRed, GetPixel(memory.HDC(), 19, 9)) << "a new bitmap is empty";
    EXPECT_NE(CLR_INVALID, GetPixel(memory.HDC(), 19, 10));
    {
        std::string calls;  // + selects, - deletes
        const HMODULE here = GetModuleHandleW(nullptr);
        const auto select = Platforms("SelectObject", &SelectObject);
        const auto remove = Platforms("DeleteObject", &DeleteObject);
        const auto close = Platforms("DeleteDC", &DeleteDC);
        const auto noteSelect = [&](HDC to, HGDIOBJ object) { return calls += "+bitmap ", select(to, object); };
        const auto noteRemove = [&](HGDIOBJ object) { return calls += "-bitmap ", remove(object); };
        const auto noteClose = [&](HDC gone) { return calls += "-dc ", close(gone); };
        const Fake selects("SelectObject", select, noteSelect, here);
        const Fake removes("DeleteObject", remove, noteRemove, here);
        const Fake closes("DeleteDC", close, noteClose, here);
        memory.SetHeight(12);
        EXPECT_EQ("+bitmap -bitmap -dc +bitmap -dc ", calls) << "the old ones, and the display's";
    }
    {
        const ImportPatch refuse(GetModuleHandleW(nullptr), "SelectObject", reinterpret_cast<void*>(&RefuseSelection));
        memory.SetWidth(21);
    }
    EXPECT_EQ(nullptr, memory.HDC());
    EXPECT_EQ(20, memory.Width()) << "the size stays";
    EXPECT_EQ(before, GdiObjects());
}

TEST_F(DrawingSupport, MemDCCopiesPicturesToItsTopLeftCorner) {
    const ComPtr<IPictureDisp> large = PictureOf(NewBitmap(kBlue, 30, 12)), small = PictureOf(NewBitmap(kRed, 4, 3));
    cMemDC memory;
    memory.CreateFromPicture(large.get());
    EXPECT_EQ(12, memory.Height());
    memory.CreateFromPicture(small.get());
    EXPECT_EQ(30, memory.Width());
    EXPECT_EQ(L"An error has occured in VelkSupport.cMemDC.CreateFromPicture \r\n\r\nError:91",
              ReportOf([&] { memory.CreateFromPicture(nullptr); }));
    EXPECT_EQ(kRed, GetPixel(memory.HDC(), 3, 2));
    EXPECT_EQ(kBlue, GetPixel(memory.HDC(), 4, 2));
    EXPECT_EQ(kBlue, GetPixel(memory.HDC(), 29, 11));
}

TEST_F(DrawingSupport, FadingCanvasGrowsInBothDirections) {
    FadingCanvas canvas;
    for (const Size size : {Size{4, 20}, {20, 4}, {30, 8}, {5, 5}}) {
        ASSERT_TRUE(canvas.Require(size));
        canvas.Clear(kBlue);
    }
    EXPECT_EQ(kBlue, GetPixel(canvas.get(), 29, 19));
    EXPECT_EQ(CLR_INVALID, GetPixel(canvas.get(), 30, 19));
}

UINT refusedAction;

// Every size and font gets a number of its own, so that a mix-up shows.
BOOL WINAPI Numbered(UINT action, UINT parameter, void* record, UINT flags) {
    EXPECT_EQ(0u, parameter + flags);
    if (action == refusedAction) return FALSE;
    if (action == SPI_GETICONTITLELOGFONT) return static_cast<LOGFONTA*>(record)->lfHeight = 21, TRUE;
    auto& metrics = *static_cast<NONCLIENTMETRICSA*>(record);
    EXPECT_EQ(340u, metrics.cbSize);
    int number = 0;
    for (int* size : {&metrics.iBorderWidth, &metrics.iScrollWidth, &metrics.iScrollHeight, &metrics.iCaptionWidth,
                      &metrics.iCaptionHeight, &metrics.iSmCaptionWidth, &metrics.iSmCaptionHeight, &metrics.iMenuWidth,
                      &metrics.iMenuHeight}) {
        *size = ++number;
    }
    number = 21;
    for (LOGFONTA* font : {&metrics.lfCaptionFont, &metrics.lfSmCaptionFont, &metrics.lfMenuFont, &metrics.lfStatusFont,
                           &metrics.lfMessageFont}) {
        font->lfHeight = ++number;
    }
    metrics.lfMenuFont.lfWeight = 400;
    metrics.lfStatusFont.lfWeight = 700;
    return TRUE;
}

class NCMetrics : public testing::Test {
  protected:
    static LOGFONTA Read(LONG font) {
        LOGFONTA logFont{};
        GetObjectA(LongToHandle(font), sizeof logFont, &logFont);
        return logFont;
    }
    static double SizeOf(IFont* font) {
        CY size{};
        EXPECT_EQ(S_OK, font->get_Size(&size));
        return static_cast<double>(size.int64) / 10000;
    }

    static constexpr double kPixel = 0.8;  // the platform rounds a font's size, in points, to what it has
    ImportPatch patch_{GetModuleHandleW(nullptr), "SystemParametersInfoA", reinterpret_cast<void*>(&Numbered)};
    cNCMetrics metrics_;
};

TEST_F(NCMetrics, IsASnapshotOfBothRecords) {
    for (const UINT refused : {SPI_GETNONCLIENTMETRICS, SPI_GETICONTITLELOGFONT, 0}) {
        refusedAction = refused;
        EXPECT_EQ(refused == 0, metrics_.GetMetrics()) << refused;
    }
    using Size = LONG (cNCMetrics::*)() const noexcept;
    constexpr Size sizes[] = {&cNCMetrics::BorderWidth,     &cNCMetrics::ScrollWidth,   &cNCMetrics::ScrollHeight,
                              &cNCMetrics::CaptionWIdth,    &cNCMetrics::CaptionHeight, &cNCMetrics::SMCaptionWIdth,
                              &cNCMetrics::SMCaptionHeight, &cNCMetrics::MenuWidth,     &cNCMetrics::MenuHeight};
    LONG number = 0;
    for (const Size size : sizes) EXPECT_EQ(++number, (metrics_.*size)());
}

// What windows are really drawn with, by the platform's other ways to ask for it.
TEST(NCMetricsOfThePlatform, AreThoseOfItsWindowsAndFonts) {
    cNCMetrics metrics;
    ASSERT_TRUE(metrics.GetMetrics());
    const struct {
        LONG size;
        int metric, more;  // captions and menu bars have a line below
    } cases[] = {
        {metrics.ScrollWidth(), SM_CXVSCROLL, 0},   {metrics.ScrollHeight(), SM_CYHSCROLL, 0},
        {metrics.CaptionWIdth(), SM_CXSIZE, 0},     {metrics.CaptionHeight(), SM_CYCAPTION, 1},
        {metrics.SMCaptionWIdth(), SM_CXSMSIZE, 0}, {metrics.SMCaptionHeight(), SM_CYSMCAPTION, 1},
        {metrics.MenuWidth(), SM_CXMENUSIZE, 0},    {metrics.MenuHeight(), SM_CYMENU, 1},
    };
    for (const auto& [size, metric, more] : cases) EXPECT_EQ(GetSystemMetrics(metric), size + more) << metric;
    NONCLIENTMETRICSW wide{};
    wide.cbSize = sizeof wide;
    LOGFONTW iconTitle{};
    SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof wide, &wide, 0);
    SystemParametersInfoW(SPI_GETICONTITLELOGFONT, sizeof iconTitle, &iconTitle, 0);
    EXPECT_EQ(wide.iBorderWidth, metrics.BorderWidth());
    const LOGFONTW* const fonts[] = {&iconTitle,       &wide.lfCaptionFont, &wide.lfSmCaptionFont,
                                     &wide.lfMenuFont, &wide.lfStatusFont,  &wide.lfMessageFont};
    for (LONG number = 1; number <= 6; ++number) {
        LOGFONTW font{};
        GetObjectW(LongToHandle(metrics.FontHandle(number)), sizeof font, &font);
        EXPECT_STREQ(fonts[number - 1]->lfFaceName, font.lfFaceName) << number;
        EXPECT_EQ(fonts[number - 1]->lfHeight, font.lfHeight) << number;
        EXPECT_EQ(fonts[number - 1]->lfWeight, font.lfWeight) << number;
    }
}

TEST_F(NCMetrics, GivesSixCachedFontsAndBolderOnes) {
    ASSERT_TRUE(metrics_.GetMetrics());
    for (LONG number = 1; number <= 6; ++number) {
        const LONG font = metrics_.FontHandle(number);
        EXPECT_EQ(20 + number, Read(font).lfHeight);
        EXPECT_EQ(font, metrics_.FontHandle(number));
    }
    const LONG second = metrics_.FontHandle(2);
    ASSERT_TRUE(metrics_.GetMetrics());
    EXPECT_EQ(0, Read(second).lfHeight) << "a second reading deletes the fonts";
    const LONG first = metrics_.FontHandle(1);
    EXPECT_EQ(VT_EMPTY, metrics_.ClearUp().vt);
    EXPECT_EQ(first, metrics_.FontHandle(1)) << "the deleted handle stays in the cache";
    EXPECT_EQ(0, Read(first).lfHeight);
    for (const LONG number : {0, 7, -1}) {
        EXPECT_EQ(L"An error has occured in VelkSupport.cNCMetrics.plGetFont \r\n\r\nError:9",
                  ReportOf([&] { EXPECT_EQ(0, metrics_.FontHandle(number)); }));
    }
    for (const auto& [number, weight] : {std::pair{4L, 700}, {5L, 900}, {0L, 700}}) {
        const GdiObject one(LongToHandle(metrics_.BoldenedFontHandle(number)));
        const GdiObject other(LongToHandle(metrics_.BoldenedFontHandle(number)));
        EXPECT_NE(one.get(), other.get());
        EXPECT_EQ(weight, Read(HandleToLong(one.get())).lfWeight) << number;
    }
    EXPECT_NEAR(24, SizeOf(metrics_.Font(nullptr, 2).As<IFont>().get()), kPixel) << "always the menu font";
}

// Notes what it is set to, in order: the platform's own rounds sizes and replaces faces by what it has.
class NotingFont final : public IFont {
  public:
    std::wstring Set() { return std::exchange(set_, L""); }

    STDMETHODIMP QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    STDMETHODIMP_(ULONG) AddRef() override { return 1; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP put_Name(BSTR name) override { return Note(name, static_cast<long>(SysStringLen(name))); }
    STDMETHODIMP put_Size(CY size) override { return Note(L"size ", static_cast<long>(size.int64)); }
    STDMETHODIMP put_Charset(short charset) override { return Note(L"charset ", charset); }
    STDMETHODIMP put_Italic(BOOL italic) override { return Note(L"italic ", italic); }
    STDMETHODIMP put_Underline(BOOL underline) override { return Note(L"underline ", underline); }
    STDMETHODIMP put_Strikethrough(BOOL strikethrough) override { return Note(L"strikethrough ", strikethrough); }
    STDMETHODIMP put_Bold(BOOL bold) override { return Note(L"bold ", bold); }
    STDMETHODIMP put_Weight(short) override { return E_NOTIMPL; }
    STDMETHODIMP get_Name(BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP get_Size(CY*) override { return E_NOTIMPL; }
    STDMETHODIMP get_Bold(BOOL*) override { return E_NOTIMPL; }
    STDMETHODIMP get_Italic(BOOL*) override { return E_NOTIMPL; }
    STDMETHODIMP get_Underline(BOOL*) override { return E_NOTIMPL; }
    STDMETHODIMP get_Strikethrough(BOOL*) override { return E_NOTIMPL; }
    STDMETHODIMP get_Weight(short*) override { return E_NOTIMPL; }
    STDMETHODIMP get_Charset(short*) override { return E_NOTIMPL; }
    STDMETHODIMP get_hFont(HFONT*) override { return E_NOTIMPL; }
    STDMETHODIMP Clone(IFont**) override { return E_NOTIMPL; }
    STDMETHODIMP IsEqual(IFont*) override { return E_NOTIMPL; }
    STDMETHODIMP SetRatio(LONG, LONG) override { return E_NOTIMPL; }
    STDMETHODIMP QueryTextMetrics(TEXTMETRICOLE*) override { return E_NOTIMPL; }
    STDMETHODIMP AddRefHfont(HFONT) override { return E_NOTIMPL; }
    STDMETHODIMP ReleaseHfont(HFONT) override { return E_NOTIMPL; }
    STDMETHODIMP SetHdc(HDC) override { return E_NOTIMPL; }

  private:
    HRESULT Note(const wchar_t* what, long value) {
        set_ += what + std::to_wstring(value) + L"|";
        return S_OK;
    }

    std::wstring set_;
};

TEST_F(NCMetrics, FillsAFontFromARecord) {
    const ScreenContext screen(GetDC(nullptr));
    ASSERT_EQ(96, GetDeviceCaps(screen.get(), LOGPIXELSY));
    NotingFont font;
    LOGFONTA record{};
    strcpy(record.lfFaceName, "Face ");
    struct Case {
        LONG height, weight;
        BYTE charset, italic, underline, strikeOut;
        const wchar_t* set;  // sizes in ten thousandths of a point
    };
    // The name with all that follows in its field.
    const Case cases[] = {
        {13, 400, 0, 0, 1, 0, L"Face 32|size 130000|charset 0|italic 0|underline 1|strikethrough 0|bold 0|"},
        {-13, 401, 238, 1, 0, 0, L"Face 32|size 97500|charset 238|italic 1|underline 0|strikethrough 0|bold 1|"},
        {1, 0, 2, 255, 0, 0, L"Face 32|size 10000|charset 2|italic 1|underline 0|strikethrough 0|bold 0|"},
        {0, 700, 2, 0, 0, 255, L"Face 32|size 0|charset 2|italic 0|underline 0|strikethrough 1|bold 1|"},
    };
    for (const Case& c : cases) {
        record.lfHeight = c.height;
        record.lfWeight = c.weight;
        record.lfCharSet = c.charset;
        record.lfItalic = c.italic;
        record.lfUnderline = c.underline;
        record.lfStrikeOut = c.strikeOut;
        NCMetricsProbe::Fill(record, screen.get(), &font);
        EXPECT_EQ(c.set, font.Set());
    }
    record.lfHeight = -1;
    EXPECT_EQ(L"An error has occured in VelkSupport.cNCMetrics.pLogFontToStdFont \r\n\r\nError:11",
              ReportOf([&] { NCMetricsProbe::Fill(record, nullptr, &font); }))
        << "a context without a resolution";
    EXPECT_EQ(L"Face 32|", font.Set()) << "the rest stays as it was";
}

// A white canvas with black text on yellow ground as the context's own colours.
class DottedBrush : public DrawingSupport {
  protected:
    static constexpr COLORREF kBack = RGB(255, 255, 0), kText = 0;
    static constexpr int kSize = 24;
    using Inside = std::function<bool(int x, int y)>;

    DottedBrush() {
        canvas_.SetWidth(kSize);
        canvas_.SetHeight(kSize);
        SetBkColor(dc(), kBack);
        SetTextColor(dc(), kText);
        EXPECT_FALSE(brush_.Create());
    }
    HDC dc() const { return canvas_.HDC(); }

    // Each pixel becomes white outside and, inside, one of the two colours in turn; the context is as it was.
    void ExpectDots(const std::function<void()>& draw, const Inside& inside, COLORREF dot, COLORREF gap,
                    int shift = 0) const {
        const HGDIOBJ selected = GetCurrentObject(dc(), OBJ_BRUSH);
        Paint(dc(), kWhite, {0, 0, kSize, kSize});
        draw();
        for (int i = 0; i < kSize * kSize; ++i) {
            const int x = i % kSize, y = i / kSize;
            const COLORREF wanted = !inside(x, y) ? kWhite : (x + y + shift) % 2 ? gap : dot;
            ASSERT_EQ(wanted, GetPixel(dc(), x, y)) << x << ", " << y;
        }
        EXPECT_EQ(selected, GetCurrentObject(dc(), OBJ_BRUSH));
    }

    cMemDC canvas_;
    cDottedBrush brush_;
};

TEST_F(DottedBrush, DrawsLinesFramesAndFillings) {
    ExpectDots([&] { brush_.DrawLine(dc(), 2, 3, 17, 2); },
               [](int x, int y) { return x >= 2 && x < 19 && (y == 3 || y == 4); }, kText, kBack);
    ExpectDots([&] { brush_.DrawLine(dc(), 1, 0, 5, 20, PATCOPY, kBlue, kRed); },
               [](int x, int y) { return x >= 1 && x < 6 && y < 20; }, kRed, kBlue);
    const COLORREF face = GetSysColor(COLOR_BTNFACE);
    ExpectDots([&] { brush_.DrawLine(dc(), 0, 0, 24, 1, PATCOPY, static_cast<LONG>(0x80000000 | COLOR_BTNFACE)); },
               [](int, int y) { return y == 0; }, kText, face);
    // Frames lie outside and leave their last corner out.
    ExpectDots([&] { brush_.Rectangle(dc(), 0, 0, 10, 10, 1); },
               [](int x, int y) { return ((y == 0 || y == 10) && x < 10) || ((x == 0 || x == 10) && y < 10); }, kText,
               kBack);
    ExpectDots([&] { brush_.Rectangle(dc(), 3, 2, 9, 7, 2, PATCOPY, false, kBlue, kRed); },
               [](int x, int y) {
                   const bool across = x >= 3 && x < 12 && ((y >= 2 && y < 4) || (y >= 9 && y < 11));
                   return across || (y >= 2 && y < 9 && ((x >= 3 && x < 5) || (x >= 12 && x < 14)));
               },
               kRed, kBlue);
    // Inverting what was white; the first corner belongs to two bands.
    ExpectDots([&] { brush_.DrawLine(dc(), 0, 0, 24, 3, PATINVERT); }, [](int, int y) { return y < 3; },
               ~kText & kWhite, ~kBack & kWhite);
    ExpectDots([&] { brush_.Rectangle(dc(), 0, 0, 10, 10, 1, PATINVERT); },
               [](int x, int y) { return ((y == 0 || y == 10) && x < 10) != ((x == 0 || x == 10) && y < 10); },
               ~kText & kWhite, ~kBack & kWhite);
    EXPECT_EQ(kBack, GetBkColor(dc()));
    EXPECT_EQ(kText, GetTextColor(dc()));
    ExpectDots([&] { brush_.Rectangle(dc(), 4, 4, 6, 5, 1, PATCOPY, true, kBlue, kRed); },
               [](int x, int y) { return x >= 4 && x < 10 && y >= 4 && y < 9; }, kRed, kBlue);
    EXPECT_EQ(kBlue, GetBkColor(dc())) << "a filling keeps the colours that it set";
    EXPECT_EQ(kRed, GetTextColor(dc()));
}

TEST_F(DottedBrush, LinesItsPatternUpWithAPoint) {
    POINT origin{};
    brush_.SetBrushOrigin(dc(), 3, 0);
    GetBrushOrgEx(dc(), &origin);
    EXPECT_EQ((std::pair{5L, 0L}), (std::pair{origin.x, origin.y}));
    ExpectDots([&] { brush_.DrawLine(dc(), 0, 0, 24, 2); }, [](int, int y) { return y < 2; }, kText, kBack, 1);
    EXPECT_EQ(L"An error has occured in VelkSupport.cDottedBrush.SetBrushOrigin \r\n\r\nError:6",
              ReportOf([&] { brush_.SetBrushOrigin(dc(), LONG_MIN, 0); }));
    const int made = GdiObjects();
    brush_.Create();
    EXPECT_EQ(made, GdiObjects());
    brush_.Destroy();
    EXPECT_EQ(made - 1, GdiObjects());
}

}  // namespace
}  // namespace test
}  // namespace velk
