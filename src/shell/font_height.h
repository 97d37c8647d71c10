// Font sizes in points and font heights in pixels of the screen, in the runtime's 16-bit arithmetic: what does not fit
// is error 6 (overflow), halves go to the even neighbour.
#pragma once

#include <cstdint>

namespace velk::font_height {

// From the dots per inch that the screen reports, by way of whole twips (1440 to the inch) per pixel. 168 dots are 9
// twips a pixel, and those make 160 pixels an inch.
std::int16_t PixelsPerInch(int dotsPerInch);

// The height of a font record, negative: it leaves the internal leading out.
std::int16_t FromPoints(std::int16_t points, std::int16_t pixelsPerInch);

// Overflows beyond heights of 455 either way.
std::int16_t ToPoints(std::int32_t height, std::int16_t pixelsPerInch);

}  // namespace velk::font_height
