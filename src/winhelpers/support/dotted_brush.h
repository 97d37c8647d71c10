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
    void DrawLine(HDC context, LONG x, LONG y, LONG width, LONG height, DWORD rop = PATCOPY, LONG back = kLeaveColour,
                  LONG fore = kLeaveColour) noexcept;

    // Deliberate: the right and the bottom band lie outside the width and height, and their common corner stays
    // unpainted; after a fill the colours are not put back.
    void Rectangle(HDC context, LONG x, LONG y, LONG width, LONG height, LONG lineSize, DWORD rop = PATCOPY,
                   bool fill = false, LONG back = kLeaveColour, LONG fore = kLeaveColour) noexcept;

    // Aligns the pattern with a point.
    void SetBrushOrigin(HDC context, LONG x, LONG y) noexcept;

  private:
    class Colours;

    GdiObject brush_;
    std::array<std::uint32_t, 4> pattern_;  // eight rows of two bytes, 0x55 and 0xAA in turn
};

}  // namespace velk
