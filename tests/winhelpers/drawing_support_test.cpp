// cMemDC, cNCMetrics and cDottedBrush, whose pixels are read back.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "support/gdi_objects.h"
#include "support/import_patch.h"
#include "support/report_recorder.h"
#include "winhelpers/dotted_brush.h"
#include "winhelpers/mem_dc.h"
#include "winhelpers/nc_metrics.h"

namespace velk {

struct NCMetricsProbe {
    static void Fill(const LOGFONTA& logFont, HDC context, IFont* font) {
        cNCMetrics::pLogFontToStdFont(logFont, context, font);
    }
};

namespace test {
namespace {

constexpr COLORREF kRed = RGB(255, 0, 0), kBlue = RGB(0, 0, 255), kWhite = RGB(255, 255, 255);

void Paint(HDC context, COLORREF colour, int width, int height) {
    const GdiObject brush(CreateSolidBrush(colour));
    const RECT all{0, 0, width, height};
    FillRect(context, &all, static_cast<HBRUSH>(brush.get()));
}

ComPtr<IUnknown> BitmapPicture(COLORREF colour, int width, int height) {
    const ScreenContext screen(GetDC(nullptr));
    const HBITMAP bitmap = CreateCompatibleBitmap(screen.get(), width, height);
    const CreatedContext context(CreateCompatibleDC(screen.get()));
    {
        const SelectedObject selected(context.get(), bitmap);
        Paint(context.get(), colour, width, height);
    }
    PICTDESC description{};
    description.cbSizeofstruct = sizeof description;
    description.picType = PICTYPE_BITMAP;
    description.bmp.hbitmap = bitmap;
    ComPtr<IUnknown> picture;
    EXPECT_EQ(S_OK, OleCreatePictureIndirect(&description, IID_IUnknown, TRUE, picture.ReceiveVoid()));
    return picture;
}

// The platform rounds a font's size, in points, to what it has.
constexpr double kPixel = 0.8;

std::wstring HeadingOf(const ReportRecorder& recorder) {
    if (recorder.reports().size() != 1) return std::to_wstring(recorder.reports().size()) + L" reports";
    const std::wstring& text = recorder.reports()[0].text;
    EXPECT_TRUE(recorder.reports()[0].type & MB_ICONSTOP);
    return text.substr(0, text.find(L"\r\nDescription"));
}

TEST(MemDC, GrowsAndNeverShrinks) {
    const int before = GdiObjects();
    {
        cMemDC memory;
        EXPECT_EQ(nullptr, memory.get_HDC());
        memory.put_Width(20);
        memory.put_Height(10);
        Paint(memory.get_HDC(), kRed, 20, 10);
        const HDC context = memory.get_HDC();
        memory.put_Width(20);
        memory.put_Width(5);
        memory.put_Height(-3);
        EXPECT_EQ(context, memory.get_HDC());
        EXPECT_EQ(kRed, GetPixel(memory.get_HDC(), 19, 9));
        EXPECT_EQ(CLR_INVALID, GetPixel(memory.get_HDC(), 20, 9));
        memory.put_Height(11);
        EXPECT_EQ(20, memory.get_Width());
        EXPECT_EQ(11, memory.get_Height());
        EXPECT_NE(kRed, GetPixel(memory.get_HDC(), 19, 9)) << "a new bitmap is empty";
        EXPECT_NE(CLR_INVALID, GetPixel(memory.get_HDC(), 19, 10));
    }
    EXPECT_EQ(before, GdiObjects());
}

HGDIOBJ WINAPI RefuseSelection(HDC, HGDIOBJ) { return nullptr; }

TEST(MemDC, IsEmptyAfterARefusedBitmapAndKeepsItsSize) {
    const int before = GdiObjects();
    cMemDC memory;
    memory.put_Width(8);
    memory.put_Height(8);
    {
        const ImportPatch refuse(GetModuleHandleW(nullptr), "SelectObject", reinterpret_cast<void*>(&RefuseSelection));
        memory.put_Width(9);
    }
    EXPECT_EQ(nullptr, memory.get_HDC());
    EXPECT_EQ(8, memory.get_Width());
    EXPECT_EQ(before, GdiObjects());
}

TEST(MemDC, CopiesPicturesToItsTopLeftCorner) {
    const ComPtr<IUnknown> large = BitmapPicture(kBlue, 30, 12), small = BitmapPicture(kRed, 4, 3);
    const int before = GdiObjects();
    {
        cMemDC memory;
        memory.CreateFromPicture(large.get());
        EXPECT_EQ(30, memory.get_Width());
        EXPECT_EQ(12, memory.get_Height());
        memory.CreateFromPicture(small.get());
        EXPECT_EQ(30, memory.get_Width());
        EXPECT_EQ(kRed, GetPixel(memory.get_HDC(), 3, 2));
        EXPECT_EQ(kBlue, GetPixel(memory.get_HDC(), 4, 2));
        EXPECT_EQ(kBlue, GetPixel(memory.get_HDC(), 29, 11));

        const ReportRecorder recorder(GetModuleHandleW(nullptr));
        memory.CreateFromPicture(nullptr);
        EXPECT_EQ(L"An error has occured in VelkSupport.cMemDC.CreateFromPicture \r\n\r\nError:91",
                  HeadingOf(recorder));
        EXPECT_EQ(kRed, GetPixel(memory.get_HDC(), 3, 2));
    }
    EXPECT_EQ(before, GdiObjects());
}

TEST(NCMetrics, IsASnapshotOfTheSystemsSizes) {
    cNCMetrics metrics;
    EXPECT_EQ(0, metrics.get_CaptionHeight());
    ASSERT_TRUE(metrics.GetMetrics());
    NONCLIENTMETRICSA expected{};
    expected.cbSize = 340;
    ASSERT_TRUE(SystemParametersInfoA(SPI_GETNONCLIENTMETRICS, 340, &expected, 0));
    EXPECT_EQ(expected.iBorderWidth, metrics.get_BorderWidth());
    EXPECT_EQ(expected.iScrollWidth, metrics.get_ScrollWidth());
    EXPECT_EQ(expected.iScrollHeight, metrics.get_ScrollHeight());
    EXPECT_EQ(expected.iCaptionWidth, metrics.get_CaptionWIdth());
    EXPECT_EQ(expected.iCaptionHeight, metrics.get_CaptionHeight());
    EXPECT_EQ(expected.iSmCaptionWidth, metrics.get_SMCaptionWIdth());
    EXPECT_EQ(expected.iSmCaptionHeight, metrics.get_SMCaptionHeight());
    EXPECT_EQ(expected.iMenuWidth, metrics.get_MenuWidth());
    EXPECT_EQ(expected.iMenuHeight, metrics.get_MenuHeight());
}

UINT refusedAction;

// Every font gets a height of its own, so that a mix-up shows.
BOOL WINAPI NumberedFonts(UINT action, UINT parameter, void* record, UINT flags) {
    EXPECT_EQ(0u, parameter);
    EXPECT_EQ(0u, flags);
    if (action == refusedAction) return FALSE;
    if (action == SPI_GETICONTITLELOGFONT) {
        static_cast<LOGFONTA*>(record)->lfHeight = 21;
        return TRUE;
    }
    auto* const metrics = static_cast<NONCLIENTMETRICSA*>(record);
    EXPECT_EQ(340u, metrics->cbSize);
    metrics->lfCaptionFont.lfHeight = 22;
    metrics->lfSmCaptionFont.lfHeight = 23;
    metrics->lfMenuFont.lfHeight = 24;
    metrics->lfMenuFont.lfWeight = 400;
    metrics->lfStatusFont.lfHeight = 25;
    metrics->lfStatusFont.lfWeight = 700;
    metrics->lfMessageFont.lfHeight = 26;
    return TRUE;
}

class NumberedMetrics : public testing::Test {
  protected:
    static LOGFONTA Read(LONG font) {
        LOGFONTA logFont{};
        EXPECT_NE(0, GetObjectA(LongToHandle(font), sizeof logFont, &logFont));
        return logFont;
    }

    ImportPatch patch_{GetModuleHandleW(nullptr), "SystemParametersInfoA", reinterpret_cast<void*>(&NumberedFonts)};
    cNCMetrics metrics_;
};

TEST_F(NumberedMetrics, AreOnlyReadWhenBothRecordsAre) {
    for (const auto& [refused, read] : {std::pair{0u, true},
                                        {unsigned{SPI_GETNONCLIENTMETRICS}, false},
                                        {unsigned{SPI_GETICONTITLELOGFONT}, false}}) {
        refusedAction = refused;
        EXPECT_EQ(read, metrics_.GetMetrics()) << refused;
    }
    refusedAction = 0;
}

TEST_F(NumberedMetrics, GiveSixCachedFonts) {
    ASSERT_TRUE(metrics_.GetMetrics());
    LONG first = 0;
    for (LONG number = 1; number <= 6; ++number) {
        const LONG font = metrics_.get_FontHandle(number);
        EXPECT_EQ(20 + number, Read(font).lfHeight);
        EXPECT_EQ(font, metrics_.get_FontHandle(number));
        if (number == 1) first = font;
    }
    EXPECT_EQ(VT_EMPTY, metrics_.ClearUp().vt);
    EXPECT_EQ(first, metrics_.get_FontHandle(1)) << "the deleted handle stays in the cache";
    LOGFONTA gone{};
    EXPECT_EQ(0, GetObjectA(LongToHandle(first), sizeof gone, &gone));
}

TEST_F(NumberedMetrics, RefuseANumberThatIsNoFont) {
    ASSERT_TRUE(metrics_.GetMetrics());
    for (const LONG number : {0, 7, -1}) {
        const ReportRecorder recorder(GetModuleHandleW(nullptr));
        EXPECT_EQ(0, metrics_.get_FontHandle(number));
        EXPECT_EQ(L"An error has occured in VelkSupport.cNCMetrics.plGetFont \r\n\r\nError:9", HeadingOf(recorder));
    }
}

TEST_F(NumberedMetrics, BoldenedFontsAreNewAndBolder) {
    ASSERT_TRUE(metrics_.GetMetrics());
    for (const auto& [number, weight] : {std::pair{LONG{kMenuFont}, 700}, {LONG{kStatusFont}, 900}, {LONG{0}, 700}}) {
        const GdiObject one(LongToHandle(metrics_.get_BoldenedFontHandle(number)));
        const GdiObject other(LongToHandle(metrics_.get_BoldenedFontHandle(number)));
        EXPECT_NE(one.get(), other.get());
        EXPECT_EQ(weight, Read(HandleToLong(one.get())).lfWeight) << number;
    }
}

TEST_F(NumberedMetrics, FontIsTheMenuFontWhateverIsAsked) {
    ASSERT_TRUE(metrics_.GetMetrics());
    const ComPtr<IFontDisp> font = metrics_.get_Font(nullptr, kCaptionFont);
    ASSERT_TRUE(font);
    CY size{};
    EXPECT_EQ(S_OK, font.As<IFont>()->get_Size(&size));
    EXPECT_NEAR(24, static_cast<double>(size.int64) / 10000, kPixel);
}

TEST(NCMetrics, FillsAFontFromARecord) {
    const ScreenContext screen(GetDC(nullptr));
    const double dotsPerInch = GetDeviceCaps(screen.get(), LOGPIXELSY);
    ComPtr<IFont> font;
    ASSERT_EQ(S_OK, OleCreateFontIndirect(nullptr, IID_IFont, font.ReceiveVoid()));
    LOGFONTA record{};
    strcpy(record.lfFaceName, "Courier New");
    for (const auto& [height, points] : {std::pair{13L, 13.0}, {-13L, 13 * 72 / dotsPerInch}}) {
        record.lfHeight = height;
        NCMetricsProbe::Fill(record, screen.get(), font.get());
        CY size{};
        EXPECT_EQ(S_OK, font->get_Size(&size));
        EXPECT_NEAR(points, static_cast<double>(size.int64) / 10000, kPixel) << height;
    }
    struct Case {
        LONG weight;
        BYTE italic, underline, strikeOut;
        bool bold;
    };
    for (const Case& c : {Case{400, 0, 1, 0, false}, Case{401, 1, 0, 0, true}, Case{700, 0, 0, 255, true}}) {
        record.lfWeight = c.weight;
        record.lfItalic = c.italic;
        record.lfUnderline = c.underline;
        record.lfStrikeOut = c.strikeOut;
        NCMetricsProbe::Fill(record, screen.get(), font.get());
        BOOL bold = -1, italic = -1, underline = -1, strikeOut = -1;
        font->get_Bold(&bold);
        font->get_Italic(&italic);
        font->get_Underline(&underline);
        font->get_Strikethrough(&strikeOut);
        EXPECT_EQ(c.bold, bold != 0) << c.weight;
        EXPECT_EQ(c.italic != 0, italic != 0) << c.weight;
        EXPECT_EQ(c.underline != 0, underline != 0) << c.weight;
        EXPECT_EQ(c.strikeOut != 0, strikeOut != 0) << c.weight;
    }
}

TEST(NCMetrics, ReportsAContextThatHasNoResolution) {
    ComPtr<IFont> font;
    ASSERT_EQ(S_OK, OleCreateFontIndirect(nullptr, IID_IFont, font.ReceiveVoid()));
    LOGFONTA record{};
    record.lfHeight = -13;
    const ReportRecorder recorder(GetModuleHandleW(nullptr));
    NCMetricsProbe::Fill(record, nullptr, font.get());
    EXPECT_EQ(L"An error has occured in VelkSupport.cNCMetrics.pLogFontToStdFont \r\n\r\nError:11",
              HeadingOf(recorder));
}

// A canvas of 24 x 24 white pixels with black text on yellow ground as the context's own colours.
class DottedBrush : public testing::Test {
  protected:
    static constexpr COLORREF kBack = RGB(255, 255, 0), kText = RGB(0, 0, 0);

    DottedBrush() {
        canvas_.put_Width(24);
        canvas_.put_Height(24);
        Paint(dc(), kWhite, 24, 24);
        SetBkColor(dc(), kBack);
        SetTextColor(dc(), kText);
        EXPECT_FALSE(brush_.Create());
    }
    HDC dc() const { return canvas_.get_HDC(); }

    // Each pixel is white outside and, inside, one of the two colours in turn.
    void ExpectDots(const std::function<bool(int x, int y)>& inside, COLORREF dot, COLORREF gap, int shift = 0) const {
        for (int y = 0; y < 24; ++y) {
            for (int x = 0; x < 24; ++x) {
                const COLORREF wanted = !inside(x, y) ? kWhite : (x + y + shift) % 2 ? gap : dot;
                ASSERT_EQ(wanted, GetPixel(dc(), x, y)) << x << ", " << y;
            }
        }
    }

    cMemDC canvas_;
    cDottedBrush brush_;
};

TEST_F(DottedBrush, LinesAlternateAndLeaveTheContextAsItWas) {
    const HGDIOBJ selected = GetCurrentObject(dc(), OBJ_BRUSH);
    brush_.DrawLine(dc(), 2, 3, 17, 2);
    ExpectDots([](int x, int y) { return x >= 2 && x < 19 && (y == 3 || y == 4); }, kText, kBack);
    Paint(dc(), kWhite, 24, 24);
    brush_.DrawLine(dc(), 1, 0, 5, 20, PATCOPY, kBlue, kRed);
    ExpectDots([](int x, int y) { return x >= 1 && x < 6 && y < 20; }, kRed, kBlue);
    EXPECT_EQ(kBack, GetBkColor(dc()));
    EXPECT_EQ(kText, GetTextColor(dc()));
    EXPECT_EQ(selected, GetCurrentObject(dc(), OBJ_BRUSH));
    Paint(dc(), kWhite, 24, 24);
    brush_.DrawLine(dc(), 0, 0, 24, 1, PATCOPY, static_cast<LONG>(0x80000000 | COLOR_BTNFACE), kRed);
    EXPECT_EQ(GetSysColor(COLOR_BTNFACE), GetPixel(dc(), 1, 0));
}

TEST_F(DottedBrush, FramesLieOutsideAndLeaveTheirLastCornerOut) {
    brush_.Rectangle(dc(), 0, 0, 10, 10, 1);
    ExpectDots([](int x, int y) { return ((y == 0 || y == 10) && x < 10) || ((x == 0 || x == 10) && y < 10); }, kText,
               kBack);
    Paint(dc(), kWhite, 24, 24);
    brush_.Rectangle(dc(), 3, 2, 9, 7, 2, PATCOPY, false, kBlue, kRed);
    ExpectDots(
        [](int x, int y) {
            const bool across = x >= 3 && x < 12 && ((y >= 2 && y < 4) || (y >= 9 && y < 11));
            const bool down = y >= 2 && y < 9 && ((x >= 3 && x < 5) || (x >= 12 && x < 14));
            return across || down;
        },
        kRed, kBlue);
    EXPECT_EQ(kBack, GetBkColor(dc()));
    EXPECT_EQ(kText, GetTextColor(dc()));
}

TEST_F(DottedBrush, FillsKeepTheColoursThatTheySet) {
    brush_.Rectangle(dc(), 4, 4, 6, 5, 1, PATCOPY, true, kBlue, kRed);
    ExpectDots([](int x, int y) { return x >= 4 && x < 10 && y >= 4 && y < 9; }, kRed, kBlue);
    EXPECT_EQ(kBlue, GetBkColor(dc()));
    EXPECT_EQ(kRed, GetTextColor(dc()));
}

TEST_F(DottedBrush, OriginLinesThePatternUpWithAPoint) {
    POINT origin{};
    brush_.SetBrushOrigin(dc(), 3, 0);
    GetBrushOrgEx(dc(), &origin);
    EXPECT_EQ(5, origin.x);
    EXPECT_EQ(0, origin.y);
    brush_.DrawLine(dc(), 0, 0, 24, 2);
    ExpectDots([](int, int y) { return y < 2; }, kText, kBack, 1);
    const ReportRecorder recorder(GetModuleHandleW(nullptr));
    brush_.SetBrushOrigin(dc(), LONG_MIN, 0);
    EXPECT_EQ(L"An error has occured in VelkSupport.cDottedBrush.SetBrushOrigin \r\n\r\nError:6", HeadingOf(recorder));
}

TEST(DottedBrushLife, LeavesNothingBehind) {
    const int before = GdiObjects();
    {
        cDottedBrush brush;
        brush.Create();
        brush.Create();
        EXPECT_EQ(before + 1, GdiObjects());
        brush.Destroy();
        EXPECT_EQ(before, GdiObjects());
        brush.Create();
    }
    EXPECT_EQ(before, GdiObjects());
}

}  // namespace
}  // namespace test
}  // namespace velk
