// cMemDC, cNCMetrics and cDottedBrush, whose pixels are read back.
#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <string>
#include <utility>

#include "support/facts.h"
#include "support/fake.h"
#include "support/process_counts.h"
#include "support/report_recorder.h"
#include "support/sheet.h"
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

// What is tested lies in this program, too.
HMODULE Here() { return GetModuleHandleW(nullptr); }

void ExpectReport(const std::wstring& member, int error, const std::function<void()>& action) {
    const ReportRecorder recorder(Here());
    action();
    ASSERT_EQ(1u, recorder.reports().size());
    EXPECT_TRUE(recorder.reports()[0].type & MB_ICONSTOP);
    const std::wstring begins = L"An error has occured in VelkSupport." + member + L" \r\n\r\nError:" +
                                std::to_wstring(error) + L"\r\nDescription";
    EXPECT_EQ(begins, recorder.reports()[0].text.substr(0, begins.size()));
}

class DrawingSupport : public testing::Test {
  protected:
    ~DrawingSupport() override { EXPECT_EQ(before, GdiObjects()) << "nothing is left behind"; }
    const ComPtr<IPictureDisp> warmUp = PictureOf(L"red.bmp");  // the platform keeps what this takes
    const int before = GdiObjects();
};

TEST_F(DrawingSupport, MemDCGrowsAndNeverShrinks) {
    cMemDC memory;
    EXPECT_EQ(nullptr, memory.HDC());
    EXPECT_EQ(0, memory.Width() | memory.Height());
    memory.SetWidth(20), memory.SetHeight(10);
    const HDC context = memory.HDC();
    Paint(context, kRed, {0, 0, 20, 10});
    memory.SetWidth(20), memory.SetWidth(5), memory.SetHeight(-3);
    EXPECT_EQ(context, memory.HDC());
    EXPECT_EQ(kRed, GetPixel(context, 19, 9));
    EXPECT_EQ(CLR_INVALID, GetPixel(context, 20, 9));
    HGDIOBJ removed = nullptr;
    const auto remove = [&](HGDIOBJ object) {
        EXPECT_NE(nullptr, GetCurrentObject(memory.HDC(), OBJ_BITMAP)) << "the context goes last";
        EXPECT_NE(object, GetCurrentObject(memory.HDC(), OBJ_BITMAP)) << "still selected";
        return removed = object, TRUE;
    };
    {
        const Fake removes("DeleteObject", &DeleteObject, remove, Here());
        memory.SetHeight(11);
    }
    EXPECT_TRUE(DeleteObject(removed));
    EXPECT_EQ(20, memory.Width());
    EXPECT_NE(kRed, GetPixel(memory.HDC(), 19, 9)) << "a new bitmap is empty";
    EXPECT_NE(CLR_INVALID, GetPixel(memory.HDC(), 19, 10));
    {
        const auto refused = [](HDC, HGDIOBJ) { return HGDIOBJ{}; };
        const Fake refuse("SelectObject", &SelectObject, refused, Here());
        memory.SetWidth(21);
    }
    EXPECT_EQ(nullptr, memory.HDC());
    EXPECT_EQ(20, memory.Width()) << "the size stays";
    EXPECT_EQ(before, GdiObjects());
}

// The members of an object without a class.
HRESULT STDMETHODCALLTYPE Query(void* object, REFIID iid, void** found) {
    *found = iid == IID_IPicture ? object : nullptr;
    return *found ? S_OK : E_NOINTERFACE;
}
ULONG STDMETHODCALLTYPE Count(void*) { return 1; }
HRESULT STDMETHODCALLTYPE NoHandle(void*, OLE_HANDLE*) { return OLE_E_BLANK; }

TEST_F(DrawingSupport, MemDCCopiesPicturesToItsTopLeftCorner) {
    const ComPtr<IPictureDisp> large = PictureOf(L"blue.bmp"), small = PictureOf(L"red.bmp");
    const void* const members[] = {Address(&Query), Address(&Count), Address(&Count), Address(&NoHandle)};
    const void* const* failing = members;
    cMemDC memory;
    memory.CreateFromPicture(large.get());
    EXPECT_EQ(12, memory.Height());
    memory.CreateFromPicture(small.get());
    EXPECT_EQ(30, memory.Width());
    ExpectReport(L"cMemDC.CreateFromPicture", 91, [&] { memory.CreateFromPicture(nullptr); });
    ExpectReport(L"cMemDC.CreateFromPicture", OLE_E_BLANK,
                 [&] { memory.CreateFromPicture(reinterpret_cast<IUnknown*>(&failing)); });
    EXPECT_EQ(kRed, GetPixel(memory.HDC(), 3, 2));
    EXPECT_EQ(kBlue, GetPixel(memory.HDC(), 4, 2));
    EXPECT_EQ(kBlue, GetPixel(memory.HDC(), 29, 11));
}

// Every size and font gets its place in the record as its number, so that a mix-up shows.
class NCMetrics : public testing::Test {
  protected:
    static BOOL WINAPI Numbered(UINT action, UINT parameter, void* record, UINT flags) {
        EXPECT_EQ(0u, parameter + flags);
        if (action == refused_) return FALSE;
        auto* const words = static_cast<UINT*>(record);
        if (action == SPI_GETICONTITLELOGFONT) return words[0] = 99, TRUE;
        EXPECT_EQ(340u, words[0]);
        for (UINT i = 1; i < 340 / sizeof(UINT); ++i) words[i] = i;
        return words[59] = 700, TRUE;  // the status font's weight
    }
    static LOGFONTA Read(LONG font) {
        LOGFONTA logFont{};
        GetObjectA(LongToHandle(font), sizeof logFont, &logFont);
        return logFont;
    }

    static inline UINT refused_;
    cNCMetrics metrics_;
    ImportPatch patch_{Here(), "SystemParametersInfoA", Address(&Numbered)};
};

TEST_F(NCMetrics, IsASnapshotOfBothRecordsWithCachedFontsAndBolderOnes) {
    for (const UINT refused : {SPI_GETNONCLIENTMETRICS, SPI_GETICONTITLELOGFONT, 0}) {
        refused_ = refused;
        EXPECT_EQ(refused == 0, metrics_.GetMetrics()) << refused;
    }
    const std::array sizes{metrics_.BorderWidth(),     metrics_.ScrollWidth(),   metrics_.ScrollHeight(),
                           metrics_.CaptionWIdth(),    metrics_.CaptionHeight(), metrics_.SMCaptionWIdth(),
                           metrics_.SMCaptionHeight(), metrics_.MenuWidth(),     metrics_.MenuHeight()};
    EXPECT_EQ((std::array{1L, 2L, 3L, 4L, 5L, 21L, 22L, 38L, 39L}), sizes);
    for (LONG number = 1; number <= 6; ++number) {
        constexpr LONG kPlaces[] = {99, 6, 23, 40, 55, 70};
        const LONG font = metrics_.FontHandle(number);
        EXPECT_EQ(kPlaces[number - 1], Read(font).lfHeight);
        EXPECT_EQ(font, metrics_.FontHandle(number));
    }
    const LONG first = metrics_.FontHandle(1);
    metrics_.GetMetrics();
    EXPECT_EQ(0, Read(first).lfHeight) << "a second reading deletes the fonts";
    EXPECT_EQ(VT_EMPTY, metrics_.ClearUp().vt);
    EXPECT_EQ(first, metrics_.FontHandle(1)) << "the deleted handle stays in the cache";
    for (const LONG number : {0, 7, -1}) {
        ExpectReport(L"cNCMetrics.plGetFont", 9, [&] { EXPECT_EQ(0, metrics_.FontHandle(number)); });
    }
    for (const auto& [number, weight] : {std::pair{4L, 700}, {5L, 900}, {0L, 700}}) {
        const GdiObject one(LongToHandle(metrics_.BoldenedFontHandle(number)));
        const GdiObject other(LongToHandle(metrics_.BoldenedFontHandle(number)));
        EXPECT_NE(one.get(), other.get());
        EXPECT_EQ(weight, Read(HandleToLong(one.get())).lfWeight) << number;
    }
    CY size{};
    EXPECT_EQ(S_OK, metrics_.Font(nullptr, 2).As<IFont>()->get_Size(&size));
    EXPECT_NEAR(400000, size.int64, 12000) << "always the menu font; the platform rounds its size to what it has";
}

TEST(NCMetricsOfThePlatform, AreThoseOfItsWindows) {
    cNCMetrics metrics;
    ASSERT_TRUE(metrics.GetMetrics());
    EXPECT_EQ(GetSystemMetrics(SM_CYMENU), metrics.MenuHeight() + 1);  // a line below
}

// Notes what a font is set to, in order: the platform's own rounds sizes and replaces faces by what it has.
std::wstring notes;
template <int slot, class Value>
HRESULT STDMETHODCALLTYPE Note(void*, Value value) {
    notes += L'|' + std::to_wstring(slot) + L' ';
    if constexpr (std::is_same_v<Value, BSTR>) {
        notes += value + std::to_wstring(SysStringLen(value));
    } else if constexpr (std::is_same_v<Value, CY>) {
        notes += std::to_wstring(value.int64);
    } else {
        notes += std::to_wstring(value);
    }
    return S_OK;
}

TEST_F(NCMetrics, FillsAFontFromARecord) {
    const ScreenContext screen(GetDC(nullptr));
    ASSERT_EQ(96, GetDeviceCaps(screen.get(), LOGPIXELSY));
    const void* slots[27] = {};  // of IFont: the setters of name, size, bold, italic, under-, strike- and character set
    slots[4] = Address(&Note<4, BSTR>), slots[6] = Address(&Note<6, CY>), slots[8] = Address(&Note<8, BOOL>);
    slots[10] = Address(&Note<10, BOOL>), slots[12] = Address(&Note<12, BOOL>), slots[14] = Address(&Note<14, BOOL>);
    slots[18] = Address(&Note<18, short>);
    const void* const* members = slots;
    auto* const font = reinterpret_cast<IFont*>(&members);
    const std::pair<LOGFONTA, const wchar_t*> cases[] = {
        // the name with all that follows in its field
        {{1, 0, 0, 0, 400, 0, 1, 255, 0, 0, 0, 0, 0, "Face "}, L"|4 Face 32|6 10000|18 0|10 0|12 1|14 1|8 0"},
        {{-13, 0, 0, 0, 401, 255, 0, 0, 238, 0, 0, 0, 0, "Face "}, L"|4 Face 32|6 97500|18 238|10 1|12 0|14 0|8 1"}};
    for (const auto& [record, set] : cases) {
        notes.clear();
        NCMetricsProbe::Fill(record, screen.get(), font);
        EXPECT_EQ(set, notes);
    }
    notes.clear();
    ExpectReport(L"cNCMetrics.pLogFontToStdFont", 11, [&] { NCMetricsProbe::Fill(cases[1].first, nullptr, font); });
    EXPECT_EQ(L"|4 Face 32", notes) << "the rest stays as it was";
}

// On white, with black text on yellow ground as the context's own colours.
TEST_F(DrawingSupport, DottedBrushDrawsLinesFramesAndFillings) {
    const Sheet sheet(112, 36);
    const HDC dc = sheet.get();
    const HGDIOBJ selected = GetCurrentObject(dc, OBJ_BRUSH);
    constexpr COLORREF kBack = RGB(255, 255, 0), kText = 0;
    SetBkColor(dc, kBack);
    SetTextColor(dc, kText);
    {
        cDottedBrush brush;
        EXPECT_FALSE(brush.Create());
        brush.DrawLine(dc, 2, 3, 17, 2);
        brush.DrawLine(dc, 22, 1, 5, 20, PATCOPY, kBlue, kRed);
        brush.DrawLine(dc, 30, 0, 24, 1, PATCOPY, static_cast<LONG>(0x80000000 | COLOR_WINDOWTEXT), kRed);
        brush.Rectangle(dc, 30, 3, 10, 10, 1);
        brush.Rectangle(dc, 43, 2, 9, 7, 2, PATCOPY, false, kBlue, kRed);
        Paint(dc, kWhite, {58, 0, 112, 14});
        brush.DrawLine(dc, 60, 0, 24, 3, PATINVERT);
        brush.Rectangle(dc, 90, 0, 10, 10, 1, PATINVERT);
        EXPECT_EQ(kBack, GetBkColor(dc));
        EXPECT_EQ(kText, GetTextColor(dc));
        brush.SetBrushOrigin(dc, 3, 0);
        brush.DrawLine(dc, 0, 28, 24, 2);
        POINT origin{};
        GetBrushOrgEx(dc, &origin);
        EXPECT_EQ((std::pair{5L, 0L}), (std::pair{origin.x, origin.y}));
        brush.Rectangle(dc, 30, 28, 6, 5, 1, PATCOPY, true, kBlue, kRed);
        EXPECT_EQ(kBlue, GetBkColor(dc)) << "a filling keeps the colours that it set";
        EXPECT_EQ(kRed, GetTextColor(dc));
        EXPECT_EQ(selected, GetCurrentObject(dc, OBJ_BRUSH));
        ExpectReport(L"cDottedBrush.SetBrushOrigin", 6, [&] { brush.SetBrushOrigin(dc, LONG_MIN, 0); });
        const int made = GdiObjects();
        brush.Create();
        EXPECT_EQ(made, GdiObjects());
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
}  // namespace test
}  // namespace velk
