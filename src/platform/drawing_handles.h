// Drawing objects and device contexts: who owns them, and scopes that put a context back as it was.
#pragma once

#include "platform/geometry.h"
#include "platform/handles.h"

namespace velk {

// A pen, brush, bitmap or font that we made.
struct GdiObjectTraits : NullIsNone<HGDIOBJ> {
    static void Close(Handle handle) noexcept { DeleteObject(handle); }
};
// A context that was created, not lent by a window.
struct CreatedContextTraits : NullIsNone<HDC> {
    static void Close(Handle handle) noexcept { DeleteDC(handle); }
};
// The whole screen's context, lent by the system.
struct ScreenContextTraits : NullIsNone<HDC> {
    static void Close(Handle handle) noexcept { ReleaseDC(nullptr, handle); }
};

using GdiObject = UniqueHandle<GdiObjectTraits>;
using CreatedContext = UniqueHandle<CreatedContextTraits>;
using ScreenContext = UniqueHandle<ScreenContextTraits>;

inline RECT ToRect(const Box& box) noexcept { return {box.left, box.top, box.right, box.bottom}; }

// Selects an object for as long as it lives. What was selected before comes back.
class SelectedObject {
  public:
    SelectedObject(HDC context, HGDIOBJ object) noexcept
        : context_(context), previous_(SelectObject(context, object)) {}
    SelectedObject(const SelectedObject&) = delete;
    SelectedObject& operator=(const SelectedObject&) = delete;
    ~SelectedObject() {
        if (previous_) SelectObject(context_, previous_);
    }

  private:
    HDC context_;
    HGDIOBJ previous_;
};

}  // namespace velk
