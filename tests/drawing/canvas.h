#pragma once

#include <utility>
#include <vector>

#include "platform/drawing_handles.h"

namespace velk::test {

// A picture in memory whose pixels can be read, 0xBBGGRR as colours are.
class Canvas {
  public:
    static constexpr int kSize = 80;

    Canvas() { Clear(0xFFFFFF); }

    HDC get() const noexcept { return context_.get(); }
    LONG handle() const noexcept { return HandleToLong(context_.get()); }

    void Clear(COLORREF colour) {
        const GdiObject brush(CreateSolidBrush(colour));
        const RECT all{0, 0, kSize, kSize};
        FillRect(get(), &all, static_cast<HBRUSH>(brush.get()));
    }
    COLORREF At(int x, int y) const {
        GdiFlush();
        const DWORD pixel = bits_[y * kSize + x];
        return (pixel & 0xFF) << 16 | (pixel & 0xFF00) | (pixel >> 16 & 0xFF);
    }
    std::vector<COLORREF> Pixels() const {
        GdiFlush();
        return {bits_, bits_ + kSize * kSize};
    }
    std::pair<LONG, LONG> Position() const {
        POINT position{};
        GetCurrentPositionEx(get(), &position);
        return {position.x, position.y};
    }

  private:
    static HBITMAP MakeBitmap(DWORD** bits) {
        BITMAPINFO info{};
        info.bmiHeader = {sizeof info.bmiHeader, kSize, -kSize, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
        return CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, reinterpret_cast<void**>(bits), nullptr, 0);
    }

    DWORD* bits_ = nullptr;
    GdiObject bitmap_{MakeBitmap(&bits_)};
    CreatedContext context_{CreateCompatibleDC(nullptr)};
    SelectedObject selected_{context_.get(), bitmap_.get()};
};

}  // namespace velk::test
