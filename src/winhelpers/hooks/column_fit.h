// How the columns of a list view follow its width.
#pragma once

#include <cstdint>

#include "platform/whole_numbers.h"

namespace velk {

// Widths in pixels. At first, with a last width of 0, columns keep their widths.
inline double StretchRatio(std::int32_t width, std::int32_t lastWidth) noexcept {
    return lastWidth > 0 ? static_cast<double>(width) / lastWidth : 1.0;
}

// Scales the columns one after the other; the last one takes what they leave of the width.
class ColumnFit {
  public:
    ColumnFit(std::int32_t width, double ratio) noexcept : width_(width), ratio_(ratio) {}

    std::int32_t Scale(std::int32_t column) {
        const std::int32_t scaled = RoundToLong(column * ratio_);
        taken_ = AddLong(taken_, scaled);
        return scaled;
    }
    std::int32_t Rest() const { return SubtractLong(width_, taken_); }

  private:
    std::int32_t width_;
    double ratio_;
    std::int32_t taken_ = 0;
};

}  // namespace velk
