#include "shell/font_height.h"

#include "platform/whole_numbers.h"

namespace velk::font_height {
namespace {

constexpr std::int16_t kTwipsPerInch = 1440;
constexpr std::int16_t kPointsPerInch = 72;

double Divided(double dividend, int divisor) {
    if (divisor == 0) throw RuntimeError(Error::DivisionByZero);
    return dividend / divisor;
}

}  // namespace

std::int16_t PixelsPerInch(int dotsPerInch) {
    const std::int16_t twipsPerPixel = RoundToInteger(Divided(kTwipsPerInch, dotsPerInch));
    return RoundToInteger(Divided(kTwipsPerInch, twipsPerPixel));
}

std::int16_t FromPoints(std::int16_t points, std::int16_t pixelsPerInch) {
    const std::int16_t negated = ToInteger(-std::int64_t{MultiplyInteger(pixelsPerInch, points)});
    return RoundToInteger(Divided(negated, kPointsPerInch));
}

std::int16_t ToPoints(std::int32_t height, std::int16_t pixelsPerInch) {
    const std::int16_t product = MultiplyInteger(ToInteger(height), kPointsPerInch);
    return RoundToInteger(std::abs(Divided(product, pixelsPerInch)));
}

}  // namespace velk::font_height
