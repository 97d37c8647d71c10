// cMemDC: an off-screen context with a bitmap of its own, compatible with the display. The bitmap grows and never
// shrinks; growing loses what was drawn.
#pragma once

#include "platform/drawing_handles.h"

namespace velk {

class cMemDC {
  public:
    cMemDC() noexcept = default;
    cMemDC(const cMemDC&) = delete;
    cMemDC& operator=(const cMemDC&) = delete;
    ~cMemDC() { pDestroy(); }

    ::HDC HDC() const noexcept { return context_.get(); }  // null when there is none
    LONG Width() const noexcept { return width_; }         // pixels
    LONG Height() const noexcept { return height_; }
    void SetWidth(LONG width) noexcept;
    void SetHeight(LONG height) noexcept;

    // Copies a picture that is a bitmap to the top left corner, growing to its size.
    void CreateFromPicture(IUnknown* picture) noexcept;

  private:
    void pCreate(LONG width, LONG height) noexcept;
    void pDestroy() noexcept;

    CreatedContext context_;
    HGDIOBJ previousBitmap_ = nullptr;
    GdiObject bitmap_;
    LONG width_ = 0;
    LONG height_ = 0;
};

}  // namespace velk
