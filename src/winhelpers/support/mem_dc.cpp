#include "winhelpers/support/mem_dc.h"

#include "platform/com_ptr.h"
#include "platform/long_handles.h"
#include "platform/system_errors.h"
#include "winhelpers/support/support_report.h"

namespace velk {
namespace {

constexpr const wchar_t* kClass = L"cMemDC";

CreatedContext DisplayContext() noexcept { return CreatedContext(CreateDCA("DISPLAY", nullptr, nullptr, nullptr)); }

HGDIOBJ BitmapOf(IUnknown* object) {
    if (!object) throw RuntimeError(Error::ObjectNotSet);
    const auto picture = ComPtr<IUnknown>(object).As<IPicture>();
    if (!picture) throw RuntimeError(Error::TypeMismatch);
    OLE_HANDLE handle = 0;
    ThrowIfFailed(picture->get_Handle(&handle));
    return HandleFrom<HGDIOBJ>(static_cast<LONG>(handle));
}

}  // namespace

void cMemDC::put_Width(LONG lW) noexcept {
    Trap(kClass, L"Width", [&] {
        if (lW > width_) pCreate(lW, height_);
    });
}

void cMemDC::put_Height(LONG lH) noexcept {
    Trap(kClass, L"Height", [&] {
        if (lH > height_) pCreate(width_, lH);
    });
}

void cMemDC::CreateFromPicture(IUnknown* sPic) noexcept {
    Trap(kClass, L"CreateFromPicture", [&] {
        const HGDIOBJ source = BitmapOf(sPic);
        BITMAP header{};
        GetObjectA(source, sizeof header, &header);
        put_Width(header.bmWidth);
        put_Height(header.bmHeight);
        const CreatedContext display = DisplayContext();
        const CreatedContext temporary(CreateCompatibleDC(display.get()));
        const SelectedObject selected(temporary.get(), source);
        BitBlt(context_.get(), 0, 0, header.bmWidth, header.bmHeight, temporary.get(), 0, 0, SRCCOPY);
    });
}

void cMemDC::pCreate(LONG w, LONG h) noexcept {
    Trap(kClass, L"pCreate", [&] {
        pDestroy();
        const CreatedContext display = DisplayContext();
        context_ = CreatedContext(CreateCompatibleDC(display.get()));
        bitmap_ = GdiObject(CreateCompatibleBitmap(display.get(), w, h));
        previousBitmap_ = SelectObject(context_.get(), bitmap_.get());
        if (!previousBitmap_) return pDestroy();
        width_ = w;
        height_ = h;
    });
}

void cMemDC::pDestroy() noexcept {
    if (previousBitmap_) SelectObject(context_.get(), previousBitmap_);
    previousBitmap_ = nullptr;
    bitmap_ = {};
    context_ = {};
}

}  // namespace velk
