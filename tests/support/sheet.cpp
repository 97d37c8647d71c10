#include "support/sheet.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "support/client.h"

#include <gdiplus.h>

namespace velk::test {
namespace {

struct GdiPlus {
    GdiPlus() { Gdiplus::GdiplusStartup(&token, &input, nullptr); }
    ~GdiPlus() { Gdiplus::GdiplusShutdown(token); }
    Gdiplus::GdiplusStartupInput input;
    ULONG_PTR token = 0;
};

GdiObject MakeBitmap(int width, int height, DWORD** pixels) {
    BITMAPINFO info{};
    info.bmiHeader = {sizeof info.bmiHeader, width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    return GdiObject(CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, reinterpret_cast<void**>(pixels), nullptr, 0));
}

}  // namespace

Sheet::Sheet(int width, int height)
    : width_(width),
      height_(height),
      bitmap_(MakeBitmap(width, height, &pixels_)),
      selected_(context_.get(), bitmap_.get()) {
    std::fill_n(pixels_, width * height, DWORD{RGB(GetBValue(kPaper), GetGValue(kPaper), GetRValue(kPaper))});
}

void Sheet::ExpectIs(const wchar_t* picture) const {
    constexpr CLSID kPng{0x557CF406, 0x1A04, 0x11D3, {0x9A, 0x73, 0x00, 0x00, 0xF8, 0x1E, 0xF3, 0x2E}};
    GdiFlush();
    const GdiPlus started;
    const std::wstring name = std::wstring(picture) + L".png", path = BuiltFile((L"tests/" + name).c_str());
    Gdiplus::Bitmap wanted(BuiltFile((L"tests/pictures/" + name).c_str()).c_str());
    Gdiplus::Bitmap drawn(width_, height_, 4 * width_, PixelFormat32bppRGB, reinterpret_cast<BYTE*>(pixels_));
    const bool fits = static_cast<int>(wanted.GetWidth()) == width_ && static_cast<int>(wanted.GetHeight()) == height_;
    Gdiplus::BitmapData data;
    wanted.LockBits(nullptr, Gdiplus::ImageLockModeRead, PixelFormat32bppRGB, &data);
    const auto alike = [](DWORD one, DWORD other) { return ((one ^ other) & 0xFFFFFF) == 0; };
    const auto* const first = static_cast<const DWORD*>(data.Scan0);
    const auto same = fits ? std::mismatch(pixels_, pixels_ + width_ * height_, first, alike).first - pixels_ : 0;
    wanted.UnlockBits(&data);
    if (same == width_ * height_) return;
    EXPECT_EQ(Gdiplus::Ok, drawn.Save(path.c_str(), &kPng, nullptr));
    ADD_FAILURE() << (fits ? "other pixels" : "no such picture, or another size") << ", the first at " << same % width_
                  << ", " << same / width_ << "; drawn: " << std::string(path.begin(), path.end());
}

}  // namespace velk::test
