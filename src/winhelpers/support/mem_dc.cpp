#include "winhelpers/support/mem_dc.h"

#include "platform/com_ptr.h"
#include "platform/long_handles.h"
#include "platform/system_errors.h"
#include "winhelpers/support/support_guard.h"

namespace velk {
namespace {

constexpr const wchar_t* kClass = L"cMemDC";

CreatedContext DisplayContext() noexcept { return CreatedContext(CreateDCA("DISPLAY", nullptr, nullptr, nullptr)); }

HGDIOBJ BitmapOf(IUnknown* object) {
    if (!object) throw RuntimeError(Error::ObjectNotSet);
    const auto picture = ComPtr<IUnknown>(object).As<IPicture>();
    if (!picture) throw RuntimeError(Error::TypeMismatch);
    OLE_HANDLE handle = 0;
    ThrowIfMemberFailed(picture->get_Handle(&handle), *picture.get());
    return HandleFrom<HGDIOBJ>(static_cast<LONG>(handle));
}

}  // namespace

void cMemDC::SetWidth(LONG width) noexcept {
    Guard(kClass, L"Width", [&] {
        if (width > width_) pCreate(width, height_);
    });
}

void cMemDC::SetHeight(LONG height) noexcept {
    Guard(kClass, L"Height", [&] {
        if (height > height_) pCreate(width_, height);
    });
}

void cMemDC::CreateFromPicture(IUnknown* picture) noexcept {
    Guard(kClass, L"CreateFromPicture", [&] {
        const HGDIOBJ source = BitmapOf(picture);
        BITMAP header{};
        GetObjectA(source, sizeof header, &header);
        SetWidth(header.bmWidth);
        SetHeight(header.bmHeight);
        const CreatedContext display = DisplayContext();
        const CreatedContext temporary(CreateCompatibleDC(display.get()));
        const SelectedObject selected(temporary.get(), source);
        BitBlt(context_.get(), 0, 0, header.bmWidth, header.bmHeight, temporary.get(), 0, 0, SRCCOPY);
    });
}

void cMemDC::pCreate(LONG width, LONG height) noexcept {
    Guard(kClass, L"pCreate", [&] {
        pDestroy();
        const CreatedContext display = DisplayContext();
        context_ = CreatedContext(CreateCompatibleDC(display.get()));
        bitmap_ = GdiObject(CreateCompatibleBitmap(display.get(), width, height));
        previousBitmap_ = SelectObject(context_.get(), bitmap_.get());
        if (!previousBitmap_) return pDestroy();
        width_ = width;
        height_ = height;
    });
}

void cMemDC::pDestroy() noexcept {
    if (previousBitmap_) SelectObject(context_.get(), previousBitmap_);
    previousBitmap_ = nullptr;
    bitmap_ = {};
    context_ = {};
}

}  // namespace velk
