// Points, sizes and boxes, in pixels or a device context's units. Needs no Windows.
#pragma once

namespace velk {

struct Point {
    int x = 0;
    int y = 0;

    constexpr bool operator==(const Point&) const noexcept = default;
};

struct Size {
    int width = 0;
    int height = 0;
};

struct Box {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    constexpr int width() const noexcept { return right - left; }
    constexpr int height() const noexcept { return bottom - top; }
    constexpr bool operator==(const Box&) const noexcept = default;
};

// A box of that size in the middle of another.
constexpr Box Centred(const Box& within, Size size) noexcept {
    const int left = within.left + (within.width() - size.width) / 2;
    const int top = within.top + (within.height() - size.height) / 2;
    return {left, top, left + size.width, top + size.height};
}

}  // namespace velk
