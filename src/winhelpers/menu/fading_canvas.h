#pragma once

#include <cstdint>
#include <span>

#include "platform/drawing_handles.h"
#include "platform/geometry.h"

namespace velk {

// Where the icon of a disabled item is drawn before it is made grey. Grows and never shrinks.
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

  private:
    std::span<std::uint32_t> Pixels() noexcept;

    CreatedContext context_;
    GdiObject bitmap_;
    HGDIOBJ previous_ = nullptr;
    std::uint32_t* pixels_ = nullptr;
    Size size_;
};

}  // namespace velk
