// Where the parts of a drawn menu item lie. All sizes are in device pixels; the ones that are given here for 96 dots
// per inch grow with the density, and marks with a text that is higher than usual.
//
//   | edge | icon cell | gap | label ... gap ... accelerator | arrow | edge |
#pragma once

#include "platform/geometry.h"

namespace velk {

class MenuLayout {
  public:
    MenuLayout() noexcept = default;
    MenuLayout(int dotsPerInch, Size icon, int textHeight) noexcept;

    // What an item asks for. `widestAccelerator` is that of the whole menu, so that labels never run into them.
    Size ItemSize(int labelWidth, int widestAccelerator) const noexcept;
    Size SeparatorSize() const noexcept;

    // Parts of an item in its coordinates.
    Box IconCell(const Box& item) const noexcept;         // the square that a check mark or a frame round an icon fills
    Box Icon(const Box& item, Size icon) const noexcept;  // an icon of that size in the middle of its cell
    Box Plate(const Box& icon) const noexcept;            // what an icon that would not be seen is put on
    Box Text(const Box& item) const noexcept;             // labels to the left, accelerators to the right
    Box Arrow(const Box& item) const noexcept;
    Box SeparatorLine(const Box& item) const noexcept;

    // A size within the icon's that keeps the picture's proportions. Small pictures are not enlarged.
    Size Fit(Size picture) const noexcept;

    Size icon() const noexcept { return icon_; }
    int Grown(int pixels) const noexcept;  // with the density and the text

  private:
    int Scaled(int pixels) const noexcept;
    int CellSide() const noexcept;
    int TextLeft() const noexcept;

    int dotsPerInch_ = 96;
    Size icon_{16, 16};
    int textHeight_ = 16;
};

}  // namespace velk
