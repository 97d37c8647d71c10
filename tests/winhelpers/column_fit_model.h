#pragma once

#include <cmath>
#include <cstdint>

#include "fuzz/model.h"
#include "winhelpers/hooks/column_fit.h"

namespace velk::test {

// The same in arithmetic of twice the width: what does not fit is refused, and refused numbers change nothing.
inline void ColumnFitModel(Bytes& bytes) {
    const auto fits = [](auto value) { return value >= INT32_MIN && value <= INT32_MAX; };
    const std::int32_t width = bytes.Number(), lastWidth = bytes.Number();
    const double ratio = StretchRatio(width, lastWidth);
    Require(lastWidth > 0 ? ratio == static_cast<double>(width) / lastWidth : ratio == 1);
    ColumnFit fit(width, ratio);
    for (std::int64_t taken = 0; !bytes.empty();) {
        const std::int32_t column = bytes.Number();
        const double exact = std::nearbyint(column * ratio);  // halves to the even neighbour
        const bool isTaken = fits(exact) && fits(taken + static_cast<std::int64_t>(exact));
        std::int64_t scaled = 0;
        Require(Answer([&] { scaled = fit.Scale(column); }) == (isTaken ? 0 : -1006));
        Require(!isTaken || static_cast<double>(scaled) == exact);
        taken += scaled;
        std::int64_t rest = width - taken;
        Require(Answer([&] { rest -= fit.Rest(); }) == (fits(rest) ? 0 : -1006));
        Require(rest == 0 || !fits(width - taken));
    }
}

}  // namespace velk::test
