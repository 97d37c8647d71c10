#include "winhelpers/menu/menu_layout.h"

#include <algorithm>
#include <cstdint>

namespace velk {
namespace {

// At 96 dots per inch.
constexpr int kEdge = 1;         // round the icon cell, and at the right
constexpr int kIconPadding = 3;  // round icon and text; the frame that shows a check lies there
constexpr int kTextGap = 6;      // between the icon cell and the label
constexpr int kColumnGap = 20;   // between label and accelerator
constexpr int kArrowWidth = 16;
constexpr int kSeparatorPadding = 3;
constexpr int kTextHeight = 16;  // the highest that is usual

}  // namespace

MenuLayout::MenuLayout(int dotsPerInch, Size icon, int textHeight) noexcept
    : dotsPerInch_(dotsPerInch), icon_(icon), textHeight_(textHeight) {}

int MenuLayout::Scaled(int pixels) const noexcept { return (pixels * dotsPerInch_ + 48) / 96; }

int MenuLayout::Grown(int pixels) const noexcept {
    return std::max(Scaled(pixels), textHeight_ * pixels / kTextHeight);
}

int MenuLayout::CellSide() const noexcept {
    return std::max({icon_.width, icon_.height, textHeight_}) + 2 * Scaled(kIconPadding);
}

int MenuLayout::TextLeft() const noexcept { return Scaled(kEdge) + CellSide() + Scaled(kTextGap); }

Size MenuLayout::ItemSize(int labelWidth, int widestAccelerator) const noexcept {
    const int accelerator = widestAccelerator ? Scaled(kColumnGap) + widestAccelerator : 0;
    return {TextLeft() + labelWidth + accelerator + Grown(kArrowWidth) + Scaled(kEdge), CellSide() + 2 * Scaled(kEdge)};
}

Size MenuLayout::SeparatorSize() const noexcept { return {CellSide(), 2 * Scaled(kSeparatorPadding) + 1}; }

Box MenuLayout::IconCell(const Box& item) const noexcept {
    const Box column{item.left + Scaled(kEdge), item.top, item.left + Scaled(kEdge) + CellSide(), item.bottom};
    return Centred(column, {CellSide(), CellSide()});
}

Box MenuLayout::Icon(const Box& item, Size icon) const noexcept { return Centred(IconCell(item), icon); }

Box MenuLayout::Plate(const Box& icon) const noexcept {
    const int edge = Scaled(kEdge);
    return {icon.left - edge, icon.top - edge, icon.right + edge, icon.bottom + edge};
}

Box MenuLayout::Text(const Box& item) const noexcept {
    return {item.left + TextLeft(), item.top, item.right - Scaled(kEdge) - Grown(kArrowWidth), item.bottom};
}

// A triangle twice as high as wide, of odd height so that it has a tip.
Box MenuLayout::Arrow(const Box& item) const noexcept {
    const Box column{item.right - Scaled(kEdge) - Grown(kArrowWidth), item.top, item.right - Scaled(kEdge),
                     item.bottom};
    const int width = Grown(4);
    return Centred(column, {width, 2 * width - 1});
}

Box MenuLayout::SeparatorLine(const Box& item) const noexcept {
    const int top = item.top + item.height() / 2;
    return {item.left + TextLeft(), top, item.right - Scaled(kEdge), top + 1};
}

Size MenuLayout::Fit(Size picture) const noexcept {
    if (picture.width <= icon_.width && picture.height <= icon_.height) return picture;
    const auto scaled = [](int length, int to, int from) {
        return std::max(1, static_cast<int>(std::int64_t{length} * to / from));
    };
    const bool wide = std::int64_t{picture.width} * icon_.height >= std::int64_t{picture.height} * icon_.width;
    return wide ? Size{icon_.width, scaled(picture.height, icon_.width, picture.width)}
                : Size{scaled(picture.width, icon_.height, picture.height), icon_.height};
}

}  // namespace velk
