// Bitmaps and pictures of known colours.
#pragma once

#include <gtest/gtest.h>

#include "platform/com_ptr.h"
#include "platform/drawing_handles.h"

namespace velk::test {

constexpr COLORREF kRed = RGB(255, 0, 0), kBlue = RGB(0, 0, 255), kWhite = RGB(255, 255, 255),
                   kMagenta = RGB(255, 0, 255);

inline void Paint(HDC context, COLORREF colour, const RECT& place) {
    const GdiObject brush(CreateSolidBrush(colour));
    FillRect(context, &place, static_cast<HBRUSH>(brush.get()));
}

// The caller's to delete. From `lowerTop` on in another colour.
inline HBITMAP NewBitmap(COLORREF colour, int width, int height, COLORREF lower = kRed, int lowerTop = INT_MAX) {
    const ScreenContext screen(GetDC(nullptr));
    const HBITMAP bitmap = CreateCompatibleBitmap(screen.get(), width, height);
    const CreatedContext context(CreateCompatibleDC(screen.get()));
    const SelectedObject selected(context.get(), bitmap);
    Paint(context.get(), colour, {0, 0, width, height});
    if (lowerTop < height) Paint(context.get(), lower, {0, lowerTop, width, height});
    return bitmap;
}

// The picture keeps the handle; metafiles of the old kind have a size, in hundredths of a millimetre.
inline ComPtr<IPictureDisp> PictureOf(UINT type, void* handle, int width = 0, int height = 0) {
    PICTDESC description{};
    description.cbSizeofstruct = sizeof description;
    description.picType = type;
    description.wmf = {static_cast<HMETAFILE>(handle), width, height};
    ComPtr<IPictureDisp> picture;
    EXPECT_EQ(S_OK, OleCreatePictureIndirect(&description, IID_IPictureDisp, TRUE, picture.ReceiveVoid()));
    return picture;
}
inline ComPtr<IPictureDisp> PictureOf(HBITMAP bitmap) { return PictureOf(PICTYPE_BITMAP, bitmap); }

}  // namespace velk::test
