#include "winhelpers/menu/image_list.h"

#include "platform/long_handles.h"
#include "platform/memory.h"
#include "platform/run_time_error.h"

namespace velk {
namespace {

template <class Function>
void Load(HMODULE module, const char* name, Function* function) {
    *function = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
    if (!*function) throw RuntimeError(Error::InvalidProcedureCall);
}

}  // namespace

void ImageList::Set(LONG handle) {
    ImageList made;
    if (handle) {
        // Whoever has an image list has loaded the library; asked for by name, the version that the client uses.
        const HMODULE controls = GetModuleHandleA("comctl32.dll");
        if (!controls) throw RuntimeError(Error::InvalidProcedureCall);
        Load(controls, "ImageList_GetIconSize", &made.getIconSize_);
        Load(controls, "ImageList_GetImageCount", &made.getImageCount_);
        Load(controls, "ImageList_Draw", &made.draw_);
        made.list_ = AddressFrom<HIMAGELIST>(handle);
        if (!made.IsAlive()) throw RuntimeError(Error::InvalidProcedureCall);
    }
    *this = made;
}

// The handle is an address, and the platform reads there before it looks whether an image list is behind it.
bool ImageList::IsAlive() const noexcept {
    constexpr std::size_t kHeader = 256;  // bytes; more than it reads
    int width = 0, height = 0;
    return list_ && IsReadable(list_, kHeader) && getIconSize_(list_, &width, &height);
}

Size ImageList::IconSize() const noexcept {
    Size size;
    if (IsAlive()) getIconSize_(list_, &size.width, &size.height);
    return size;
}

int ImageList::Count() const noexcept { return IsAlive() ? getImageCount_(list_) : 0; }

void ImageList::Draw(int image, HDC context, int x, int y) const noexcept {
    if (image < Count()) draw_(list_, image, context, x, y, ILD_TRANSPARENT);
}

}  // namespace velk
