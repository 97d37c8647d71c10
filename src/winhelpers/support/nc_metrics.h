// cNCMetrics: a snapshot of the system's non-client sizes and fonts.
#pragma once

#include <array>

#include "platform/com_ptr.h"
#include "platform/platform.h"
#include "platform/variant.h"

namespace velk {

// The fonts that cNCMetrics knows, as its eFontNum arguments take them.
enum FontNumber : LONG {
    kIconTitleFont = 1,
    kCaptionFont = 2,
    kSmallCaptionFont = 3,
    kMenuFont = 4,
    kStatusFont = 5,
    kMessageFont = 6,
};

class cNCMetrics {
  public:
    cNCMetrics() noexcept = default;
    cNCMetrics(const cNCMetrics&) = delete;
    cNCMetrics& operator=(const cNCMetrics&) = delete;
    ~cNCMetrics() { ClearUp(); }

    // Reads both records; False if either cannot be read. To be called once for an object, before a font is asked for.
    bool GetMetrics() noexcept;

    // Deletes the cached fonts. Deliberate: the deleted handles stay in the cache and are given out again.
    Variant ClearUp() noexcept;

    LONG get_BorderWidth() const noexcept { return metrics_.iBorderWidth; }  // all in pixels
    LONG get_ScrollWidth() const noexcept { return metrics_.iScrollWidth; }
    LONG get_ScrollHeight() const noexcept { return metrics_.iScrollHeight; }
    LONG get_CaptionWIdth() const noexcept { return metrics_.iCaptionWidth; }
    LONG get_CaptionHeight() const noexcept { return metrics_.iCaptionHeight; }
    LONG get_SMCaptionWIdth() const noexcept { return metrics_.iSmCaptionWidth; }
    LONG get_SMCaptionHeight() const noexcept { return metrics_.iSmCaptionHeight; }
    LONG get_MenuWidth() const noexcept { return metrics_.iMenuWidth; }
    LONG get_MenuHeight() const noexcept { return metrics_.iMenuHeight; }

    // The cached handle, made at the first request; it stays ours.
    LONG get_FontHandle(LONG eFontNum) noexcept;

    // A bolder font that the caller owns.
    LONG get_BoldenedFontHandle(LONG eFontNum) const noexcept;

    // Deliberate: the menu font, whichever is asked for.
    ComPtr<IFontDisp> get_Font(::HDC lHDC, LONG eFontNum) const noexcept;

  private:
    friend struct NCMetricsProbe;  // tests

    LOGFONTA LogFontOf(LONG eFontNum) const noexcept;
    Variant plGetFont(LONG eFontNum, const LOGFONTA& logFont) noexcept;
    static void pLogFontToStdFont(const LOGFONTA& logFont, ::HDC hDC, IFont* font) noexcept;
    Variant XXXTest1() noexcept;

    // 340 bytes are read; the last field is newer than the record that is asked for.
    NONCLIENTMETRICSA metrics_{};
    LOGFONTA iconTitle_{};
    std::array<LONG, 6> fonts_{};
};

}  // namespace velk
