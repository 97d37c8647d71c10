#include "winhelpers/support/nc_metrics.h"

#include <cmath>
#include <string_view>

#include "platform/long_handles.h"
#include "platform/system_errors.h"
#include "platform/text.h"
#include "winhelpers/support/support_guard.h"

namespace velk {
namespace {

constexpr const wchar_t* kClass = L"cNCMetrics";
constexpr UINT kRecordSize = 340;
constexpr LONG kBoldFrom = 401;

bool IsFont(LONG number) noexcept { return number >= kIconTitleFont && number <= kMessageFont; }

// Points. A positive height counts as points without conversion, deliberately.
double PointsOf(const LOGFONTA& logFont, HDC context) {
    if (logFont.lfHeight >= 1) return logFont.lfHeight;
    const int dotsPerInch = GetDeviceCaps(context, LOGPIXELSY);
    if (dotsPerInch == 0) throw RuntimeError(Error::DivisionByZero);
    return std::abs(static_cast<double>(logFont.lfHeight)) * 72 / dotsPerInch;
}

CY CurrencyOf(double value) {
    CY currency{};
    ThrowIfFailed(VarCyFromR8(value, &currency));
    return currency;
}

}  // namespace

bool cNCMetrics::GetMetrics() noexcept {
    bool read = false;
    Guard(kClass, L"GetMetrics", [&] {
        ClearUp();
        metrics_.cbSize = kRecordSize;
        read = SystemParametersInfoA(SPI_GETNONCLIENTMETRICS, 0, &metrics_, 0) &&
               SystemParametersInfoA(SPI_GETICONTITLELOGFONT, 0, &iconTitle_, 0);
    });
    return read;
}

Variant cNCMetrics::ClearUp() noexcept {
    for (const LONG font : fonts_) {
        if (font) DeleteObject(HandleFrom<HGDIOBJ>(font));  // the cache keeps the handle on purpose
    }
    return {};
}

LONG cNCMetrics::FontHandle(LONG number) noexcept {
    LONG handle = 0;
    Guard(kClass, L"FontHandle", [&] { handle = plGetFont(number, LogFontOf(number)).lVal; });
    return handle;
}

LONG cNCMetrics::BoldenedFontHandle(LONG number) const noexcept {
    LONG handle = 0;
    Guard(kClass, L"BoldenedFontHandle", [&] {
        LOGFONTA logFont = LogFontOf(number);
        logFont.lfWeight = logFont.lfWeight >= FW_BOLD ? FW_HEAVY : FW_BOLD;
        handle = LongFrom(CreateFontIndirectA(&logFont));
    });
    return handle;
}

ComPtr<IFontDisp> cNCMetrics::Font(HDC context, LONG) const noexcept {
    ComPtr<IFontDisp> made;
    Guard(kClass, L"Font", [&] {
        ComPtr<IFont> font;
        ThrowIfFailed(OleCreateFontIndirect(nullptr, IID_IFont, font.ReceiveVoid()));
        pLogFontToStdFont(LogFontOf(kMenuFont), context, font.get());
        made = font.As<IFontDisp>();
    });
    return made;
}

// An empty record for a number that is none.
LOGFONTA cNCMetrics::LogFontOf(LONG number) const noexcept {
    const LOGFONTA* const fonts[] = {&iconTitle_,          &metrics_.lfCaptionFont, &metrics_.lfSmCaptionFont,
                                     &metrics_.lfMenuFont, &metrics_.lfStatusFont,  &metrics_.lfMessageFont};
    return IsFont(number) ? *fonts[number - kIconTitleFont] : LOGFONTA{};
}

Variant cNCMetrics::plGetFont(LONG number, const LOGFONTA& logFont) noexcept {
    Variant handle;
    Guard(kClass, L"plGetFont", [&] {
        if (!IsFont(number)) throw RuntimeError(Error::SubscriptOutOfRange);
        LONG& cached = fonts_[static_cast<std::size_t>(number) - 1];
        if (!cached) cached = LongFrom(CreateFontIndirectA(&logFont));
        handle.vt = VT_I4;
        handle.lVal = cached;
    });
    return handle;
}

void cNCMetrics::pLogFontToStdFont(const LOGFONTA& logFont, HDC context, IFont* font) noexcept {
    Guard(kClass, L"pLogFontToStdFont", [&] {
        const std::u16string name = FromAnsi({logFont.lfFaceName, LF_FACESIZE});  // with its trailing NULs
        ThrowIfFailed(font->put_Name(Bstr(Wide(name)).get()));
        ThrowIfFailed(font->put_Size(CurrencyOf(PointsOf(logFont, context))));
        ThrowIfFailed(font->put_Charset(logFont.lfCharSet));
        ThrowIfFailed(font->put_Italic(logFont.lfItalic != 0));
        ThrowIfFailed(font->put_Underline(logFont.lfUnderline != 0));
        ThrowIfFailed(font->put_Strikethrough(logFont.lfStrikeOut != 0));
        ThrowIfFailed(font->put_Bold(logFont.lfWeight >= kBoldFrom));
    });
}

// A diagnostic that nothing calls: tries every size that the record could have.
Variant cNCMetrics::XXXTest1() noexcept {
    for (UINT size = 0; size <= 1024; ++size) {
        metrics_.cbSize = size;
        SystemParametersInfoA(SPI_GETNONCLIENTMETRICS, 0, &metrics_, 0);
    }
    return {};
}

}  // namespace velk
