// cNCMetrics: a snapshot of the system's non-client sizes and fonts.
#pragma once

#include <array>

#include "platform/com_ptr.h"
#include "platform/platform.h"
#include "platform/variant.h"

namespace velk {

// The fonts that cNCMetrics knows, as its members count them.
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

    LONG BorderWidth() const noexcept { return metrics_.iBorderWidth; }  // all in pixels
    LONG ScrollWidth() const noexcept { return metrics_.iScrollWidth; }
    LONG ScrollHeight() const noexcept { return metrics_.iScrollHeight; }
    LONG CaptionWIdth() const noexcept { return metrics_.iCaptionWidth; }
    LONG CaptionHeight() const noexcept { return metrics_.iCaptionHeight; }
    LONG SMCaptionWIdth() const noexcept { return metrics_.iSmCaptionWidth; }
    LONG SMCaptionHeight() const noexcept { return metrics_.iSmCaptionHeight; }
    LONG MenuWidth() const noexcept { return metrics_.iMenuWidth; }
    LONG MenuHeight() const noexcept { return metrics_.iMenuHeight; }

    // The cached handle, made at the first request; it stays ours.
    LONG FontHandle(LONG number) noexcept;

    // A bolder font that the caller owns.
    LONG BoldenedFontHandle(LONG number) const noexcept;

    // Deliberate: the menu font, whichever is asked for.
    ComPtr<IFontDisp> Font(HDC context, LONG number) const noexcept;

  private:
    LOGFONTA LogFontOf(LONG number) const noexcept;
    Variant plGetFont(LONG number, const LOGFONTA& logFont) noexcept;
    static void pLogFontToStdFont(const LOGFONTA& logFont, HDC context, IFont* font) noexcept;
    Variant XXXTest1() noexcept;

    // 340 bytes are read; the last field is newer than the record that is asked for.
    NONCLIENTMETRICSA metrics_{};
    LOGFONTA iconTitle_{};
    std::array<LONG, 6> fonts_{};
};

}  // namespace velk
