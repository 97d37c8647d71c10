#include "winhelpers/menu/image_list.h"

#include <cstddef>
#include <cstdint>

#include "platform/run_time_error.h"

namespace velk {
namespace {

// A handle is an address, and the platform reads there before it looks whether an image list is behind it.
bool IsReadable(const void* address) noexcept {
    constexpr DWORD kReadable = PAGE_READONLY | PAGE_READWRITE | PAGE_WRITECOPY | PAGE_EXECUTE_READ |
                                PAGE_EXECUTE_READWRITE | PAGE_EXECUTE_WRITECOPY;
    constexpr std::size_t kHeader = 256;  // more than is read
    MEMORY_BASIC_INFORMATION region{};
    if (!VirtualQuery(address, &region, sizeof region) || region.State != MEM_COMMIT) return false;
    const auto end = reinterpret_cast<std::uintptr_t>(region.BaseAddress) + region.RegionSize;
    return (region.Protect & kReadable) && !(region.Protect & PAGE_GUARD) &&
           end - reinterpret_cast<std::uintptr_t>(address) >= kHeader;
}

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
        made.list_ = static_cast<HIMAGELIST>(LongToHandle(handle));
        if (!made.IsAlive()) throw RuntimeError(Error::InvalidProcedureCall);
    }
    *this = made;
}

bool ImageList::IsAlive() const noexcept {
    int width = 0, height = 0;
    return list_ && IsReadable(list_) && getIconSize_(list_, &width, &height);
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
