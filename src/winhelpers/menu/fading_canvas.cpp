#include "winhelpers/menu/fading_canvas.h"

#include <algorithm>

#include "winhelpers/menu/menu_pixels.h"

namespace velk {
namespace {

// Pixels are 0x00RRGGBB, colours the other way round.
std::uint32_t PixelOf(COLORREF colour) noexcept { return RGB(GetBValue(colour), GetGValue(colour), GetRValue(colour)); }

GdiObject MakeBitmap(Size size, void** pixels) noexcept {
    BITMAPINFO description{};
    description.bmiHeader = {
        sizeof(BITMAPINFOHEADER), size.width, -size.height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};  // from the top down
    return GdiObject(CreateDIBSection(nullptr, &description, DIB_RGB_COLORS, pixels, nullptr, 0));
}

}  // namespace

FadingCanvas::~FadingCanvas() {
    if (previous_) SelectObject(context_.get(), previous_);
}

bool FadingCanvas::Require(Size size) noexcept {
    if (size.width <= size_.width && size.height <= size_.height) return true;
    const Size grown{std::max(size.width, size_.width), std::max(size.height, size_.height)};
    if (!context_) context_ = CreatedContext(CreateCompatibleDC(nullptr));
    void* pixels = nullptr;
    GdiObject bitmap = MakeBitmap(grown, &pixels);
    if (!context_ || !bitmap) return false;
    const HGDIOBJ before = SelectObject(context_.get(), bitmap.get());
    if (!previous_) previous_ = before;
    bitmap_ = std::move(bitmap);
    pixels_ = static_cast<std::uint32_t*>(pixels);
    size_ = grown;
    return true;
}

std::span<std::uint32_t> FadingCanvas::Pixels() noexcept {
    GdiFlush();
    return {pixels_, static_cast<std::size_t>(size_.width) * static_cast<std::size_t>(size_.height)};
}

void FadingCanvas::Clear(COLORREF background) noexcept { std::ranges::fill(Pixels(), PixelOf(background)); }

void FadingCanvas::MakeGrey(COLORREF background) noexcept { Fade(Pixels(), PixelOf(background)); }

void FadingCanvas::MakePlain(COLORREF background, COLORREF colour) noexcept {
    velk::MakePlain(Pixels(), PixelOf(background), PixelOf(colour));
}

bool FadingCanvas::StandsOut(COLORREF background) noexcept { return velk::StandsOut(Pixels(), PixelOf(background)); }

}  // namespace velk
