// Icons of every kind, and a canvas that a menu's items are drawn on and read back from.
#pragma once

#include <algorithm>
#include <array>
#include <optional>
#include <set>
#include <vector>

#include "frame/gdi.h"
#include "winhelpers/menu_fixture.h"

namespace velk::test {

constexpr HRESULT RunTime(int number) { return static_cast<HRESULT>(0x800A0000) + number; }

constexpr COLORREF kMagenta = RGB(255, 0, 255);

struct ImageListTraits {
    using Handle = HIMAGELIST;
    static Handle Invalid() noexcept { return nullptr; }
    static void Close(Handle handle) noexcept { ImageList_Destroy(handle); }
};
using Images = UniqueHandle<ImageListTraits>;

inline GdiObject Bitmap(COLORREF colour, int width, int height) {
    const ScreenContext screen(GetDC(nullptr));
    GdiObject bitmap(CreateCompatibleBitmap(screen.get(), width, height));
    const CreatedContext context(CreateCompatibleDC(screen.get()));
    const SelectedObject selected(context.get(), bitmap.get());
    const GdiObject brush(CreateSolidBrush(colour));
    const RECT all{0, 0, width, height};
    FillRect(context.get(), &all, static_cast<HBRUSH>(brush.get()));
    return bitmap;
}

// Image 0 is red, image 1 blue.
inline Images TwoImages(int side) {
    Images images(ImageList_Create(side, side, ILC_COLOR24, 2, 2));
    for (const COLORREF colour : {kRed, kBlue}) {
        const GdiObject bitmap = Bitmap(colour, side, side);
        ImageList_Add(images.get(), static_cast<HBITMAP>(bitmap.get()), nullptr);
    }
    return images;
}

// The picture keeps the handle.
inline ComPtr<IPictureDisp> PictureOf(PICTDESC description) {
    description.cbSizeofstruct = sizeof description;
    ComPtr<IPictureDisp> picture;
    EXPECT_EQ(S_OK, OleCreatePictureIndirect(&description, IID_IPictureDisp, TRUE, picture.ReceiveVoid()));
    return picture;
}

// Red with a magenta upper half.
inline ComPtr<IPictureDisp> BitmapPicture(int side) {
    const ScreenContext screen(GetDC(nullptr));
    const HBITMAP bitmap = CreateCompatibleBitmap(screen.get(), side, side);
    const CreatedContext context(CreateCompatibleDC(screen.get()));
    const SelectedObject selected(context.get(), bitmap);
    for (const auto& [colour, top] : {std::pair{kMagenta, 0}, {kRed, side / 2}}) {
        const GdiObject brush(CreateSolidBrush(colour));
        const RECT rows{0, top, side, side};
        FillRect(context.get(), &rows, static_cast<HBRUSH>(brush.get()));
    }
    PICTDESC description{};
    description.picType = PICTYPE_BITMAP;
    description.bmp.hbitmap = bitmap;
    return PictureOf(description);
}

inline ComPtr<IPictureDisp> IconPicture(COLORREF colour, int side) {
    const GdiObject bitmap = Bitmap(colour, side, side), mask = Bitmap(0, side, side);
    ICONINFO info{TRUE, 0, 0, static_cast<HBITMAP>(mask.get()), static_cast<HBITMAP>(bitmap.get())};
    PICTDESC description{};
    description.picType = PICTYPE_ICON;
    description.icon.hicon = CreateIconIndirect(&info);
    return PictureOf(description);
}

inline ComPtr<IPictureDisp> MetafilePicture(COLORREF colour) {
    const HDC recording = CreateEnhMetaFileW(nullptr, nullptr, nullptr, nullptr);
    const GdiObject brush(CreateSolidBrush(colour));
    const RECT all{0, 0, 200, 200};
    FillRect(recording, &all, static_cast<HBRUSH>(brush.get()));
    PICTDESC description{};
    description.picType = PICTYPE_ENHMETAFILE;
    description.emf.hemf = CloseEnhMetaFile(recording);
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
        const GdiObject bitmap = Bitmap(kOutside, fullWidth, fullHeight);
        const SelectedObject selected(context.get(), bitmap.get());
        DRAWITEMSTRUCT drawn{};
        drawn.CtlType = ODT_MENU;
        drawn.itemID = item.id;
        drawn.itemState = state;
        drawn.hwndItem = reinterpret_cast<HWND>(menu);
        drawn.hDC = context.get();
        drawn.rcItem = {kMargin, kMargin, kMargin + width_, kMargin + height_};
        drawn.itemData = item.data;
        EXPECT_EQ(TRUE, SendMessageW(window, WM_DRAWITEM, 0, reinterpret_cast<LPARAM>(&drawn)));
        clipped_ = !RectVisible(context.get(), &drawn.rcItem);
        for (int y = 0; y < fullHeight; ++y) {
            for (int x = 0; x < fullWidth; ++x) pixels_.push_back(Read(context.get(), x, y));
        }
    }

    int width() const { return width_; }
    int height() const { return height_; }
    bool clipped() const { return clipped_; }
    COLORREF At(int x, int y) const { return pixels_[Index(x, y)]; }
    bool operator==(const Drawing& other) const { return pixels_ == other.pixels_; }

    template <class Matches>
    RECT Bounds(Matches matches) const {
        RECT bounds{width_, height_, 0, 0};
        for (int y = 0; y < height_; ++y) {
            for (int x = 0; x < width_; ++x) {
                if (!matches(At(x, y))) continue;
                bounds = {std::min<LONG>(bounds.left, x), std::min<LONG>(bounds.top, y),
                          std::max<LONG>(bounds.right, x + 1), std::max<LONG>(bounds.bottom, y + 1)};
            }
        }
        return bounds;
    }
    RECT Bounds(COLORREF colour) const {
        return Bounds([colour](COLORREF pixel) { return pixel == colour; });
    }
    int Count(COLORREF colour) const { return static_cast<int>(std::ranges::count(pixels_, colour)); }
    bool MarginIsUntouched() const { return Count(kOutside) == static_cast<int>(pixels_.size()) - width_ * height_; }

  private:
    static COLORREF Read(HDC context, int x, int y) { return GetPixel(context, x, y); }
    std::size_t Index(int x, int y) const {
        return static_cast<std::size_t>((y + kMargin) * (width_ + 2 * kMargin) + x + kMargin);
    }

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
    IDispatch* Late() { return late_.get(); }

    static constexpr int kSide = 16;
    Images images_ = TwoImages(kSide);
    Menu menu_ = FullMenu();
    ComPtr<IDispatch> late_ = icons_.As<IDispatch>();
};

}  // namespace velk::test
