#pragma once

#include <cstdint>
#include <span>

#include "platform/drawing_handles.h"
#include "platform/geometry.h"

namespace velk {

// Where an icon is drawn on a plain background before it is made grey or put to the menu. Grows and never shrinks.
class FadingCanvas {
  public:
    FadingCanvas() noexcept = default;
    FadingCanvas(const FadingCanvas&) = delete;
    FadingCanvas& operator=(const FadingCanvas&) = delete;
    ~FadingCanvas();

    // False when there is no memory for it.
    bool Require(Size size) noexcept;

    HDC get() const noexcept { return context_.get(); }
    void Clear(COLORREF background) noexcept;
    void MakeGrey(COLORREF background) noexcept;
    void MakePlain(COLORREF background, COLORREF colour) noexcept;
    bool StandsOut(COLORREF background) noexcept;

  private:
    std::span<std::uint32_t> Pixels() noexcept;

    CreatedContext context_;
    GdiObject bitmap_;
    HGDIOBJ previous_ = nullptr;
    std::uint32_t* pixels_ = nullptr;
    Size size_;
};

}  // namespace velk
