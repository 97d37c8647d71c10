// cDottedBrush: a one-pixel checkerboard brush for dotted lines and rectangles.
#pragma once

#include <array>
#include <cstdint>

#include "platform/drawing_handles.h"

namespace velk {

class cDottedBrush {
  public:
    static constexpr LONG kLeaveColour = -1;  // for the colour arguments: as the context has it

    cDottedBrush() noexcept { pattern_.fill(0xAAAA5555); }
    cDottedBrush(const cDottedBrush&) = delete;
    cDottedBrush& operator=(const cDottedBrush&) = delete;
    ~cDottedBrush() { Destroy(); }

    // Deliberate: the result is False, made or not.
    bool Create() noexcept;
    void Destroy() noexcept;

    // Pixels. The dots take the text colour, the gaps the background colour; both are put back.
    void DrawLine(::HDC hDC, LONG xPixels, LONG yPixels, LONG widthPixels, LONG heightPixels, DWORD eRop = PATCOPY,
                  LONG oBackColor = kLeaveColour, LONG oForeColor = kLeaveColour) noexcept;

    // Deliberate: the right and the bottom band lie outside the width and height, and their common corner stays
    // unpainted; after a fill the colours are not put back.
    void Rectangle(::HDC hDC, LONG xPixels, LONG yPixels, LONG widthRectPixels, LONG heightRectPixels,
                   LONG lineSizePixels, DWORD eRop = PATCOPY, bool bFill = false, LONG oBackColor = kLeaveColour,
                   LONG oForeColor = kLeaveColour) noexcept;

    // Lines the pattern up with a point.
    void SetBrushOrigin(::HDC hDC, LONG xPixels, LONG yPixels) noexcept;

  private:
    static LONG TranslateColor(LONG oColor, HPALETTE palette = nullptr) noexcept;
    class Colours;

    GdiObject brush_;
    std::array<std::uint32_t, 4> pattern_;  // eight rows of two bytes, 0x55 and 0xAA in turn
};

}  // namespace velk
