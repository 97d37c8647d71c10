// cMemDC, cNCMetrics and cDottedBrush, whose pixels are read back.
#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <string>
#include <utility>

#include "support/boxes.h"
#include "support/fake.h"
#include "support/late_bound.h"
#include "support/process_counts.h"
#include "support/sheet.h"
#include "winhelpers/support/dotted_brush.h"
#include "winhelpers/support/mem_dc.h"
#include "winhelpers/support/nc_metrics.h"

namespace velk::test {
namespace {

// What is tested lies in this program, too.
HMODULE Here() { return GetModuleHandleW(nullptr); }

void ExpectReport(const std::wstring& member, int error, const std::function<void()>& action) {
    std::wstring shown;
    const auto show = [&](HWND, const std::wstring& text, LPCWSTR, UINT type) {
        shown += std::to_wstring(type & MB_ICONSTOP) + text.substr(0, text.find(L"\r\nDescription"));
    };
    const Boxes boxes(show, Here());
    action();
    EXPECT_EQ(L"16An error has occured in VelkSupport." + member + L" \r\n\r\nError:" + std::to_wstring(error), shown);
}

class DrawingSupport : public testing::Test {
  protected:
    ~DrawingSupport() override { EXPECT_EQ(before, GdiObjects()) << "nothing is left behind"; }
    const ComPtr<IPictureDisp> warmUp = PictureOf(L"red.bmp");  // the platform keeps what this takes
    const int before = GdiObjects();
};

HRESULT STDMETHODCALLTYPE NoHandle(void*, OLE_HANDLE*) { return OLE_E_BLANK; }

TEST_F(DrawingSupport, MemDCGrowsAndCopiesPicturesToItsTopLeftCorner) {
    const ComPtr<IPictureDisp> large = PictureOf(L"blue.bmp"), small = PictureOf(L"red.bmp");
    cMemDC memory;
    EXPECT_EQ(nullptr, memory.HDC());
    EXPECT_EQ(0, memory.Width() | memory.Height());
    memory.CreateFromPicture(large.get());
    const HDC context = memory.HDC();
    memory.SetWidth(30), memory.SetWidth(5), memory.SetHeight(-3);
    memory.CreateFromPicture(small.get());
    EXPECT_EQ(context, memory.HDC()) << "it never shrinks";
    ExpectReport(L"cMemDC.CreateFromPicture", 91, [&] { memory.CreateFromPicture(nullptr); });
    const ComPtr<IUnknown> none = CreateUnknown(__uuidof(CStack));
    ExpectReport(L"cMemDC.CreateFromPicture", 13, [&] { memory.CreateFromPicture(none.get()); });
    void** const slot = *reinterpret_cast<void***>(small.As<IPicture>(IID_IPicture).get()) + 3;  // get_Handle
    void* const original = WriteInto(slot, Address(&NoHandle));
    ExpectReport(L"cMemDC.CreateFromPicture", OLE_E_BLANK, [&] { memory.CreateFromPicture(large.get()); });
    WriteInto(slot, original);
    const auto at = [&](int x, int y) { return GetPixel(memory.HDC(), x, y); };
    EXPECT_EQ((std::array<COLORREF, 6>{kRed, kBlue, kBlue, kBlue, CLR_INVALID, CLR_INVALID}),
              (std::array{at(3, 2), at(4, 2), at(3, 3), at(29, 11), at(30, 11), at(29, 12)}));
    HGDIOBJ removed = nullptr;
    const auto remove = [&](HGDIOBJ object) {
        const HGDIOBJ selected = GetCurrentObject(memory.HDC(), OBJ_BITMAP);
        EXPECT_TRUE(selected && selected != object) << "the context goes last";
        return removed = object, TRUE;
    };
    Fake("DeleteObject", &DeleteObject, remove, Here()), memory.SetHeight(13);
    EXPECT_TRUE(DeleteObject(removed));
    EXPECT_EQ(RGB(0, 0, 0), at(29, 12)) << "a new bitmap is empty";
    const auto refuse = [](HDC, HGDIOBJ) { return HGDIOBJ{}; };
    Fake("SelectObject", &SelectObject, refuse, Here()), memory.SetWidth(31);
    EXPECT_EQ(nullptr, memory.HDC());
    EXPECT_EQ((std::pair{30L, 13L}), (std::pair{memory.Width(), memory.Height()})) << "the size stays";
}

LOGFONTA Read(LONG font) {
    LOGFONTA logFont{};
    GetObjectA(LongToHandle(font), sizeof logFont, &logFont);
    return logFont;
}

// Every size and font gets its place in the record as its number, so that a mix-up shows.
TEST_F(DrawingSupport, NCMetricsAreASnapshotOfBothRecordsWithCachedFontsAndBolderOnes) {
    UINT refused = 0;
    const auto number = [&](UINT action, UINT parameter, void* record, UINT flags) {
        EXPECT_EQ(0u, parameter + flags);
        if (action == refused) return FALSE;
        auto* const words = static_cast<UINT*>(record);
        if (action == SPI_GETICONTITLELOGFONT) return words[0] = 99, TRUE;
        EXPECT_EQ(340u, words[0]);
        for (UINT i = 1; i < 340 / sizeof(UINT); ++i) words[i] = i;
        return words[59] = 700, TRUE;  // the status font's weight
    };
    const Fake numbered("SystemParametersInfoA", &SystemParametersInfoA, number, Here());
    cNCMetrics metrics;
    for (const UINT action : {SPI_GETNONCLIENTMETRICS, SPI_GETICONTITLELOGFONT, 0})
        EXPECT_EQ(action == 0, (refused = action, metrics.GetMetrics())) << action;
    EXPECT_EQ((std::array{1L, 2L, 3L, 4L, 5L, 21L, 22L, 38L, 39L}),
              (std::array{metrics.BorderWidth(), metrics.ScrollWidth(), metrics.ScrollHeight(), metrics.CaptionWIdth(),
                          metrics.CaptionHeight(), metrics.SMCaptionWIdth(), metrics.SMCaptionHeight(),
                          metrics.MenuWidth(), metrics.MenuHeight()}));
    for (const auto& [font, place] : {std::pair{1L, 99L}, {2L, 6L}, {3L, 23L}, {4L, 40L}, {5L, 55L}, {6L, 70L}})
        EXPECT_EQ(place, Read(metrics.FontHandle(font)).lfHeight) << font;
    const LONG first = metrics.FontHandle(1);
    metrics.GetMetrics();
    EXPECT_EQ(0, Read(first).lfHeight) << "a second reading deletes the fonts";
    EXPECT_EQ(VT_EMPTY, metrics.ClearUp().vt);
    EXPECT_EQ(first, metrics.FontHandle(1)) << "the deleted handle stays in the cache";
    for (const LONG none : {0, 7, -1})
        ExpectReport(L"cNCMetrics.plGetFont", 9, [&] { EXPECT_EQ(0, metrics.FontHandle(none)); });
    for (const auto& [font, weight] : {std::pair{4L, 700}, {5L, 900}, {0L, 700}}) {
        const GdiObject one(LongToHandle(metrics.BoldenedFontHandle(font)));
        const GdiObject other(LongToHandle(metrics.BoldenedFontHandle(font)));
        EXPECT_NE(one.get(), other.get());
        EXPECT_EQ(weight, Read(HandleToLong(one.get())).lfWeight) << font;
    }
}

// As the platform makes a font of the same description: it rounds sizes and replaces faces by what it has.
TEST(NCMetrics, GiveTheMenuFontAsAnObject) {
    const ScreenContext screen(GetDC(nullptr));
    ASSERT_EQ(96, GetDeviceCaps(screen.get(), LOGPIXELSY));
    const auto values = [](const ComPtr<IFontDisp>& font) {
        std::wstring all;
        for (const auto* name : {L"Name", L"Size", L"Charset", L"Italic", L"Underline", L"Strikethrough", L"Bold"})
            all += Fact(font.get(), name) + L"|";
        return all;
    };
    wchar_t one[] = L"Tahoma", other[] = L"DejaVu Serif";  // not both are what stands in for fonts that are missing
    const std::pair<LOGFONTA, FONTDESC> cases[] = {
        {{20, 0, 0, 0, 400, 0, 1, 255, 0, 0, 0, 0, 0, "Tahoma"},
         {sizeof(FONTDESC), one, {{200000, 0}}, FW_NORMAL, 0, FALSE, TRUE, TRUE}},
        {{-13, 0, 0, 0, 401, 255, 0, 0, 238, 0, 0, 0, 0, "DejaVu Serif"},
         {sizeof(FONTDESC), other, {{97500, 0}}, FW_BOLD, 238, TRUE, FALSE, FALSE}}};
    cNCMetrics metrics;
    for (auto [record, description] : cases) {
        const auto tell = [font = record](UINT action, UINT, void* to, UINT) {
            if (action == SPI_GETNONCLIENTMETRICS) static_cast<NONCLIENTMETRICSA*>(to)->lfMenuFont = font;
            return TRUE;
        };
        const Fake system("SystemParametersInfoA", &SystemParametersInfoA, tell, Here());
        EXPECT_TRUE(metrics.GetMetrics());
        ComPtr<IFontDisp> wanted;
        EXPECT_EQ(S_OK, OleCreateFontIndirect(&description, IID_IFontDisp, wanted.ReceiveVoid()));
        EXPECT_EQ(values(wanted), values(metrics.Font(screen.get(), 2))) << "whichever is asked for";
    }
    ExpectReport(L"cNCMetrics.pLogFontToStdFont", 11, [&] { EXPECT_TRUE(metrics.Font(nullptr, 1)); });
}

// On white, with black text on yellow ground as the context's own colours.
TEST_F(DrawingSupport, DottedBrushDrawsLinesFramesAndFillings) {
    const Sheet sheet(112, 36);
    const HDC dc = sheet.get();
    const HGDIOBJ selected = GetCurrentObject(dc, OBJ_BRUSH);
    SetBkColor(dc, RGB(255, 255, 0));
    SetTextColor(dc, 0);
    {
        cDottedBrush brush;
        EXPECT_FALSE(brush.Create());
        const int made = GdiObjects();
        brush.Create();
        EXPECT_EQ(made, GdiObjects());
        brush.DrawLine(dc, 2, 3, 17, 2);
        brush.DrawLine(dc, 22, 1, 5, 20, PATCOPY, kBlue, kRed);
        brush.DrawLine(dc, 30, 0, 24, 1, PATCOPY, static_cast<LONG>(0x80000000 | COLOR_WINDOWTEXT), kRed);
        brush.Rectangle(dc, 30, 3, 10, 10, 1);
        brush.Rectangle(dc, 43, 2, 9, 7, 2, PATCOPY, false, kBlue, kRed);
        Paint(dc, kWhite, {58, 0, 112, 14});
        brush.DrawLine(dc, 60, 0, 24, 3, PATINVERT);
        brush.Rectangle(dc, 90, 0, 10, 10, 1, PATINVERT);
        brush.SetBrushOrigin(dc, 3, 0);
        ExpectReport(L"cDottedBrush.SetBrushOrigin", 6, [&] { brush.SetBrushOrigin(dc, LONG_MIN, 0); });
        brush.DrawLine(dc, 0, 28, 24, 2);
        brush.Rectangle(dc, 30, 28, 6, 5, 1, PATCOPY, true, kBlue, kRed);
        brush.DrawLine(dc, 40, 28, 24, 2);  // a filling keeps the colours that it set
        EXPECT_EQ(selected, GetCurrentObject(dc, OBJ_BRUSH));
        brush.Destroy();
        EXPECT_EQ(made - 1, GdiObjects());
    }
    sheet.ExpectIs(L"dotted_brush");
    Paint(dc, kWhite, {0, 0, 112, 36});
    ExpectReport(L"cDottedBrush.Rectangle", 6,
                 [&] { cDottedBrush().Rectangle(dc, 2, 3, 200, LONG_MAX, 2, BLACKNESS); });
    EXPECT_EQ(RGB(0, 0, 0), GetPixel(dc, 60, 4)) << "the bands before the one that overflows";
    EXPECT_EQ(before + 2, GdiObjects()) << "the sheet's";
}

}  // namespace
}  // namespace velk::test
