#include "support/sheet.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

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

// Nothing when there is no such picture, or one of another size.
std::vector<DWORD> Committed(const wchar_t* picture, int width, int height) {
    Gdiplus::Bitmap image(BuiltFile((std::wstring(L"tests/pictures/") + picture + L".png").c_str()).c_str());
    if (static_cast<int>(image.GetWidth()) != width || static_cast<int>(image.GetHeight()) != height) return {};
    std::vector<DWORD> pixels;
    for (int i = 0; i < width * height; ++i) {
        Gdiplus::Color colour;
        image.GetPixel(i % width, i / width, &colour);
        pixels.push_back(colour.GetValue() & 0xFFFFFF);
    }
    return pixels;
}

void Save(const std::wstring& path, DWORD* pixels, int width, int height) {
    constexpr CLSID kPng{0x557CF406, 0x1A04, 0x11D3, {0x9A, 0x73, 0x00, 0x00, 0xF8, 0x1E, 0xF3, 0x2E}};
    Gdiplus::Bitmap image(width, height, 4 * width, PixelFormat32bppRGB, reinterpret_cast<BYTE*>(pixels));
    EXPECT_EQ(Gdiplus::Ok, image.Save(path.c_str(), &kPng, nullptr));
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
    GdiFlush();
    const GdiPlus started;
    const auto wanted = Committed(picture, width_, height_);
    const auto differs = std::mismatch(wanted.begin(), wanted.end(), pixels_,
                                       [](DWORD pixel, DWORD drawn) { return pixel == (drawn & 0xFFFFFF); });
    if (!wanted.empty() && differs.first == wanted.end()) return;
    const std::wstring path = BuiltFile((std::wstring(L"tests/") + picture + L".png").c_str());
    Save(path, pixels_, width_, height_);
    const auto first = static_cast<int>(differs.first - wanted.begin());
    ADD_FAILURE() << (wanted.empty() ? "no such picture, or another size" : "other pixels") << ", the first at "
                  << first % width_ << ", " << first / width_ << "; drawn: " << std::string(path.begin(), path.end());
}

}  // namespace velk::test
