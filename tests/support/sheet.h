// Pictures of known colours: what is drawn, and what clients draw with.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>

#include "platform/com_ptr.h"
#include "platform/drawing_handles.h"
#include "platform/text.h"
#include "support/client.h"

#include <gdiplus.h>

namespace velk::test {

constexpr COLORREF kRed = RGB(255, 0, 0), kBlue = RGB(0, 0, 255), kWhite = RGB(255, 255, 255),
                   kMagenta = RGB(255, 0, 255);

inline void Paint(HDC context, COLORREF colour, const RECT& place) {
    const GdiObject brush(CreateSolidBrush(colour));
    FillRect(context, &place, static_cast<HBRUSH>(brush.get()));
}

// One of the committed pictures.
inline std::wstring PathOf(const std::wstring& picture) { return BuiltFile((L"tests\\pictures\\" + picture).c_str()); }

// Loaded from a file, as clients do; red and blue, what is to be transparent is magenta.
inline ComPtr<IPictureDisp> PictureOf(const wchar_t* file) {
    std::wstring path = L"file:///" + PathOf(file);
    ComPtr<IPictureDisp> picture;
    EXPECT_EQ(S_OK, OleLoadPicturePath(path.data(), nullptr, 0, 0, IID_IPictureDisp, picture.ReceiveVoid())) << file;
    return picture;
}

// A drawing surface whose pixels are compared with a committed picture.
class Sheet {
  public:
    Sheet(int width, int height)
        : width_(width),
          height_(height),
          bitmap_(MakeBitmap(width, height, &pixels_)),
          selected_(context_.get(), bitmap_.get()) {
        std::fill_n(pixels_, width * height, DWORD{0xFFF0DC});  // no colour that anything is drawn in
    }

    HDC get() const noexcept { return context_.get(); }

    // The picture is a PNG. When the pixels differ, what was drawn is left under the same name beside the program, to
    // be looked at and, if it is right, committed.
    void ExpectIs(const std::wstring& picture) const {
        constexpr CLSID kPng{0x557CF406, 0x1A04, 0x11D3, {0x9A, 0x73, 0x00, 0x00, 0xF8, 0x1E, 0xF3, 0x2E}};
        const Started started;
        const std::wstring path = BuiltFile((L"tests\\" + picture + L".png").c_str());
        Gdiplus::Bitmap wanted(PathOf(picture + L".png").c_str());
        Gdiplus::Bitmap drawn(width_, height_, 4 * width_, PixelFormat32bppRGB, reinterpret_cast<BYTE*>(pixels_));
        GdiFlush();
        bool same = std::pair(wanted.GetWidth(), wanted.GetHeight()) == std::pair(drawn.GetWidth(), drawn.GetHeight());
        Gdiplus::Color one, other;
        for (int i = 0; same && i < width_ * height_; ++i) {
            wanted.GetPixel(i % width_, i / width_, &one), drawn.GetPixel(i % width_, i / width_, &other);
            same = one.GetValue() == other.GetValue();
        }
        if (same) return;
        EXPECT_EQ(Gdiplus::Ok, drawn.Save(path.c_str(), &kPng, nullptr));
        ADD_FAILURE() << "not as committed: " << ToAnsi(path);
    }

  private:
    struct Started {
        Started() { Gdiplus::GdiplusStartup(&token, &input, nullptr); }
        ~Started() { Gdiplus::GdiplusShutdown(token); }
        Gdiplus::GdiplusStartupInput input;
        ULONG_PTR token = 0;
    };

    static GdiObject MakeBitmap(int width, int height, DWORD** pixels) {
        BITMAPINFO info{};
        info.bmiHeader = {sizeof info.bmiHeader, width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
        void** const bits = reinterpret_cast<void**>(pixels);
        return GdiObject(CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, bits, nullptr, 0));
    }

    int width_, height_;
    DWORD* pixels_ = nullptr;  // 0x00RRGGBB, from the top down
    GdiObject bitmap_;
    CreatedContext context_{CreateCompatibleDC(nullptr)};
    SelectedObject selected_;
};

}  // namespace velk::test
