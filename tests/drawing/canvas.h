#pragma once

#include <vector>

#include "frame/gdi.h"

namespace velk::test {

// A picture in memory whose pixels can be read, 0xBBGGRR as colours are.
class Canvas {
  public:
    static constexpr int kSize = 80;
    static constexpr COLORREF kPaper = 0xFFFFFF;

    Canvas() { Clear(kPaper); }

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
        std::vector<COLORREF> pixels;
        for (int i = 0; i < kSize * kSize; ++i) pixels.push_back(At(i % kSize, i / kSize));
        return pixels;
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
