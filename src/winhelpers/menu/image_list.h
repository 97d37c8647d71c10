#pragma once

#include "platform/geometry.h"
#include "platform/long_handles.h"
#include "platform/platform.h"

#include <commctrl.h>

namespace velk {

// A client's image list, known by its handle. It is the client's: it may be destroyed at any time, and it belongs to
// whichever version of the common controls the client's program uses, which is why that library is not linked to.
class ImageList {
  public:
    // 0 for none. Error 5 for what is no image list.
    void Set(LONG handle);

    LONG handle() const noexcept { return LongFrom(list_); }
    Size IconSize() const noexcept;  // pixels; 0 by 0 when there is no list
    int Count() const noexcept;
    void Draw(int image, HDC context, int x, int y) const noexcept;

  private:
    bool IsAlive() const noexcept;

    HIMAGELIST list_ = nullptr;
    decltype(&ImageList_GetIconSize) getIconSize_ = nullptr;
    decltype(&ImageList_GetImageCount) getImageCount_ = nullptr;
    decltype(&ImageList_Draw) draw_ = nullptr;
};

}  // namespace velk
