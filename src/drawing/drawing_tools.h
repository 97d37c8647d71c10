// What the shapes share: one draw with a pen, a brush and a mix mode of their own, after which the device context is as
// it was. What the platform refuses is not noticed, deliberately; whatever was selected then draws instead.
#pragma once

#include <optional>

#include "platform/drawing_handles.h"

namespace velk {

// As clients set them, unchecked.
struct Outline {
    OLE_COLOR colour = 0;
    SHORT width = 1;
    LONG style = PS_SOLID;
    LONG mixMode = R2_COPYPEN;
};

struct Fill {
    OLE_COLOR colour = 0;
    LONG style = BS_SOLID;
    LONG hatch = HS_HORIZONTAL;
};

GdiObject MakePen(const Outline& outline) noexcept;
GdiObject MakeBrush(const Fill& fill) noexcept;

// Sets the foreground mix mode for as long as it lives, and only where it is another one.
class MixMode {
  public:
    MixMode(HDC context, LONG mode) noexcept
        : context_(context), previous_(GetROP2(context) == mode ? 0 : SetROP2(context, mode)) {}
    MixMode(const MixMode&) = delete;
    MixMode& operator=(const MixMode&) = delete;
    ~MixMode() {
        if (previous_) SetROP2(context_, previous_);
    }

  private:
    HDC context_;
    int previous_;
};

template <class Draw>
void DrawOutlined(HDC context, const Outline& outline, Draw&& draw) noexcept {
    const GdiObject pen = MakePen(outline);
    const SelectedObject selected(context, pen.get());
    const MixMode mix(context, outline.mixMode);
    draw();
}

// The brush is created and selected before the pen, and also released before it, so the pen's owners are declared
// first.
template <class Draw>
void DrawFilled(HDC context, const Outline& outline, const Fill& fill, Draw&& draw) noexcept {
    GdiObject pen;
    const GdiObject brush = MakeBrush(fill);
    std::optional<SelectedObject> selectedPen;
    const SelectedObject selectedBrush(context, brush.get());
    pen = MakePen(outline);
    selectedPen.emplace(context, pen.get());
    const MixMode mix(context, outline.mixMode);
    draw();
}

}  // namespace velk
