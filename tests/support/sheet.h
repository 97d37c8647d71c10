#pragma once

#include "platform/drawing_handles.h"

namespace velk::test {

// A drawing surface whose pixels are compared with a committed picture.
class Sheet {
  public:
    static constexpr COLORREF kPaper = RGB(255, 240, 220);  // no colour that anything is drawn in

    Sheet(int width, int height);

    HDC get() const noexcept { return context_.get(); }
    COLORREF At(int x, int y) const { return GetPixel(get(), x, y); }

    // The picture is a PNG among the committed ones. When the pixels differ, what was drawn is left under the same name
    // beside the program, to be looked at and, if it is right, committed.
    void ExpectIs(const wchar_t* picture) const;

  private:
    int width_, height_;
    DWORD* pixels_ = nullptr;  // 0x00RRGGBB, from the top down
    GdiObject bitmap_;
    CreatedContext context_{CreateCompatibleDC(nullptr)};
    SelectedObject selected_;
};

}  // namespace velk::test
