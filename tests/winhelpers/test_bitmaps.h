// Pictures of known colours.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "platform/com_ptr.h"
#include "platform/drawing_handles.h"
#include "support/client.h"

namespace velk::test {

constexpr COLORREF kRed = RGB(255, 0, 0), kBlue = RGB(0, 0, 255), kWhite = RGB(255, 255, 255),
                   kMagenta = RGB(255, 0, 255);

inline void Paint(HDC context, COLORREF colour, const RECT& place) {
    const GdiObject brush(CreateSolidBrush(colour));
    FillRect(context, &place, static_cast<HBRUSH>(brush.get()));
}

// Loaded from a file, as clients do; red and blue, what is to be transparent is magenta.
inline ComPtr<IPictureDisp> PictureOf(const wchar_t* file) {
    std::wstring path = L"file:///" + BuiltFile((std::wstring(L"tests\\pictures\\") + file).c_str());
    ComPtr<IPictureDisp> picture;
    EXPECT_EQ(S_OK, OleLoadPicturePath(path.data(), nullptr, 0, 0, IID_IPictureDisp, picture.ReceiveVoid())) << file;
    return picture;
}

}  // namespace velk::test
