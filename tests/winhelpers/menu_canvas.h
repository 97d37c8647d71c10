// Icons of every kind, and a canvas that a menu's items are drawn on and read back from.
#pragma once

#include <algorithm>
#include <vector>

#include "winhelpers/menu_fixture.h"

namespace velk::test {

constexpr COLORREF kMagenta = RGB(255, 0, 255);

struct ImageListTraits {
    using Handle = HIMAGELIST;
    static Handle Invalid() noexcept { return nullptr; }
    static void Close(Handle handle) noexcept { ImageList_Destroy(handle); }
};
using Images = UniqueHandle<ImageListTraits>;

// Image 0 is red, image 1 blue.
inline Images TwoImages(int side) {
    Images images(ImageList_Create(side, side, ILC_COLOR24, 2, 2));
    for (const COLORREF colour : {kRed, kBlue}) {
        const GdiObject bitmap(NewBitmap(colour, side, side));
        ImageList_Add(images.get(), static_cast<HBITMAP>(bitmap.get()), nullptr);
    }
    return images;
}

inline ComPtr<IPictureDisp> IconPicture(int side) {
    const GdiObject bitmap(NewBitmap(kRed, side, side)), mask(NewBitmap(0, side, side));
    ICONINFO info{TRUE, 0, 0, static_cast<HBITMAP>(mask.get()), static_cast<HBITMAP>(bitmap.get())};
    PICTDESC description{};
    description.picType = PICTYPE_ICON;
    description.icon.hicon = CreateIconIndirect(&info);
    return PictureOf(description);
}

inline ComPtr<IPictureDisp> MetafilePicture() {
    const HDC recording = CreateEnhMetaFileW(nullptr, nullptr, nullptr, nullptr);
    Paint(recording, kRed, {0, 0, 200, 200});
    PICTDESC description{};
    description.picType = PICTYPE_ENHMETAFILE;
    description.emf.hemf = CloseEnhMetaFile(recording);
    return PictureOf(description);
}

// Twice as wide as high.
inline ComPtr<IPictureDisp> OldMetafilePicture() {
    const HDC recording = CreateMetaFileW(nullptr);
    SetMapMode(recording, MM_ANISOTROPIC);
    SetWindowExtEx(recording, 100, 100, nullptr);
    Paint(recording, kRed, {0, 0, 100, 100});
    PICTDESC description{};
    description.picType = PICTYPE_METAFILE;
    description.wmf = {CloseMetaFile(recording), 2000, 1000};
    return PictureOf(description);
}

// One item as it was drawn, with a margin that nothing may be drawn on.
class Drawing {
  public:
    static constexpr int kMargin = 4;
    static constexpr COLORREF kOutside = RGB(1, 2, 3);

    Drawing(HWND window, HMENU menu, UINT position, UINT state) {
        const ItemOfMenu item = ItemsOf(menu)[position];
        MEASUREITEMSTRUCT measured{ODT_MENU, 0, item.id, 0, 0, item.data};
        EXPECT_EQ(TRUE, SendMessageW(window, WM_MEASUREITEM, 0, reinterpret_cast<LPARAM>(&measured)));
        width_ = static_cast<int>(measured.itemWidth) + 12;  // the system adds some
        height_ = static_cast<int>(measured.itemHeight);
        const ScreenContext screen(GetDC(nullptr));
        const int fullWidth = width_ + 2 * kMargin, fullHeight = height_ + 2 * kMargin;
        const CreatedContext context(CreateCompatibleDC(screen.get()));
        const GdiObject bitmap(NewBitmap(kOutside, fullWidth, fullHeight));
        const SelectedObject selected(context.get(), bitmap.get());
        const RECT place{kMargin, kMargin, kMargin + width_, kMargin + height_};
        DRAWITEMSTRUCT drawn{ODT_MENU,      0,     item.id,  0, state, reinterpret_cast<HWND>(menu),
                             context.get(), place, item.data};
        EXPECT_EQ(TRUE, SendMessageW(window, WM_DRAWITEM, 0, reinterpret_cast<LPARAM>(&drawn)));
        clipped_ = !RectVisible(context.get(), &drawn.rcItem);
        for (int i = 0; i < fullWidth * fullHeight; ++i) {
            pixels_.push_back(GetPixel(context.get(), i % fullWidth, i / fullWidth));
        }
    }

    int width() const { return width_; }
    int height() const { return height_; }
    bool clipped() const { return clipped_; }
    COLORREF At(int x, int y) const {
        return pixels_[static_cast<std::size_t>((y + kMargin) * (width_ + 2 * kMargin) + x + kMargin)];
    }
    bool operator==(const Drawing& other) const { return pixels_ == other.pixels_; }

    // Of what has this colour.
    RECT Bounds(COLORREF colour) const {
        RECT bounds{width_, height_, 0, 0};
        for (int i = 0; i < width_ * height_; ++i) {
            const LONG x = i % width_, y = i / width_;
            if (At(x, y) != colour) continue;
            bounds = {std::min(bounds.left, x), std::min(bounds.top, y), std::max(bounds.right, x + 1),
                      std::max(bounds.bottom, y + 1)};
        }
        return bounds;
    }
    int Count(COLORREF colour) const { return static_cast<int>(std::ranges::count(pixels_, colour)); }
    bool MarginIsUntouched() const { return Count(kOutside) == static_cast<int>(pixels_.size()) - width_ * height_; }

  private:
    int width_ = 0, height_ = 0;
    bool clipped_ = false;
    std::vector<COLORREF> pixels_;
};

class IconMenuDrawing : public IconMenuTest {
  protected:
    IconMenuDrawing() {
        EXPECT_EQ(S_OK, Attach(window_.get()));
        EXPECT_EQ(S_OK, icons_->put_ImageList(HandleToLong(images_.get())));
        for (UINT position = 0; position < kPositions; ++position) {
            EXPECT_EQ(S_OK, icons_->put_CommandImage(static_cast<LONG>(CommandAt(position)), 0));
        }
        Open(menu_.get());
    }
    Drawing Draw(UINT position, UINT state = 0) const { return Drawing(window_.get(), menu_.get(), position, state); }

    static constexpr int kSide = 16;
    static constexpr LONG kCommand = CommandAt(kOpen);
    Images images_ = TwoImages(kSide);
    Menu menu_ = FullMenu();
};

}  // namespace velk::test
