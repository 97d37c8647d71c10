// The marks of menu items as filled boxes, sharp at every size. No font is asked: not every system has the one with
// these signs.
#pragma once

#include <cmath>

#include "platform/geometry.h"

namespace velk {

// A tick as wide as `side`, in the middle of a box.
template <class Put>
void CheckMark(const Box& within, int side, Put put) {
    const int turn = side / 3, thickness = (3 * side + 3) / 7, deepest = side - 1 - turn;
    const Box tick = Centred(within, {side, deepest + thickness});
    for (int x = 0; x < side; ++x) {
        const int y = tick.top + deepest - std::abs(x - turn);
        put(Box{tick.left + x, y, tick.left + x + 1, y + thickness});
    }
}

// A disc as wide as `side`.
template <class Put>
void Bullet(const Box& within, int side, Put put) {
    const Box disc = Centred(within, {side, side});
    for (int y = 0; y < side; ++y) {
        const double fromMiddle = y + 0.5 - side / 2.0;
        const double half = std::sqrt(side * side / 4.0 - fromMiddle * fromMiddle);
        const int inset = static_cast<int>(std::lround(side / 2.0 - half));
        put(Box{disc.left + inset, disc.top + y, disc.right - inset, disc.top + y + 1});
    }
}

// A triangle that points to the right and fills a box.
template <class Put>
void ArrowHead(const Box& box, Put put) {
    for (int x = 0; x < box.width(); ++x) put(Box{box.left + x, box.top + x, box.left + x + 1, box.bottom - x});
}

}  // namespace velk
