#include "winhelpers/menu/menu_icons.h"

#include "platform/long_handles.h"
#include "platform/system_errors.h"
#include "winhelpers/menu/density.h"

namespace velk {
namespace {

// From hundredths of a millimetre, the unit of pictures without pixels.
Size ScreenSize(IPicture* picture) noexcept {
    constexpr int kPerInch = 2540;
    OLE_XSIZE_HIMETRIC width = 0;
    OLE_YSIZE_HIMETRIC height = 0;
    picture->get_Width(&width);
    picture->get_Height(&height);
    const ScreenContext screen(GetDC(nullptr));
    return {MulDiv(width, GetDeviceCaps(screen.get(), LOGPIXELSX), kPerInch),
            MulDiv(height, GetDeviceCaps(screen.get(), LOGPIXELSY), kPerInch)};
}

}  // namespace

MenuPicture::MenuPicture(IUnknown* object) : picture_(ComPtr<IUnknown>(object).As<IPicture>()) {
    if (!picture_) throw RuntimeError(Error::TypeMismatch);
    ThrowIfMemberFailed(picture_->get_Type(&kind_), *picture_.get());
    if (IsEmpty()) return;
    OLE_HANDLE handle = 0;
    ThrowIfMemberFailed(picture_->get_Handle(&handle), *picture_.get());
    handle_ = HandleFrom<HANDLE>(static_cast<LONG>(handle));
    size_ = ScreenSize(picture_.get());
    if (kind_ != PICTYPE_BITMAP) return;
    BITMAP header{};
    GetObjectA(handle_, sizeof header, &header);
    size_ = {header.bmWidth, header.bmHeight};
    bits_.CreateFromPicture(picture_.get());
}

void MenuPicture::Draw(HDC context, const Box& place, COLORREF mask) const noexcept {
    if (kind_ == PICTYPE_BITMAP) {
        DrawBitmap(context, place, mask);
    } else if (kind_ == PICTYPE_ICON) {
        DrawIconEx(context, place.left, place.top, static_cast<HICON>(handle_), place.width(), place.height(), 0,
                   nullptr, DI_NORMAL);
    } else if (kind_ == PICTYPE_ENHMETAFILE) {
        const RECT whole = ToRect(place);
        PlayEnhMetaFile(context, static_cast<HENHMETAFILE>(handle_), &whole);
    } else {
        Render(context, place);
    }
}

void MenuPicture::DrawBitmap(HDC context, const Box& place, COLORREF mask) const noexcept {
    if (mask == CLR_INVALID) {
        SetStretchBltMode(context, COLORONCOLOR);
        StretchBlt(context, place.left, place.top, place.width(), place.height(), bits_.HDC(), 0, 0, size_.width,
                   size_.height, SRCCOPY);
    } else {
        GdiTransparentBlt(context, place.left, place.top, place.width(), place.height(), bits_.HDC(), 0, 0, size_.width,
                          size_.height, mask);
    }
}

// A picture's own coordinates run upwards.
void MenuPicture::Render(HDC context, const Box& place) const noexcept {
    OLE_XSIZE_HIMETRIC width = 0;
    OLE_YSIZE_HIMETRIC height = 0;
    picture_->get_Width(&width);
    picture_->get_Height(&height);
    picture_->Render(context, place.left, place.top, place.width(), place.height(), 0, height, width, -height, nullptr);
}

Size MenuIcons::CellSize(int density) const noexcept {
    const Size size = list.IconSize();
    if (size.width > 0 && size.height > 0) return size;
    const auto small = [&](int metric) { return MulDiv(GetSystemMetrics(metric), density, SystemDensity()); };
    return {small(SM_CXSMICON), small(SM_CYSMICON)};
}

Size MenuIcons::DrawnSize(const MenuIcon& icon, const MenuLayout& layout) const noexcept {
    if (!icon.picture || icon.picture->size().width == 0) return layout.icon();  // not every metafile knows its size
    return layout.Fit(icon.picture->size());
}

void MenuIcons::Draw(const MenuIcon& icon, HDC context, const Box& place) const noexcept {
    if (icon.picture) {
        icon.picture->Draw(context, place, mask);
    } else {
        list.Draw(icon.image, context, place.left, place.top);
    }
}

}  // namespace velk
