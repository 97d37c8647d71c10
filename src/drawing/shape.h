// The properties that the shapes share, each stored as it is given. The bases derive from one another: an outline,
// a bounding box, a filling. `Types` names a class's interface and its own enumerations.
#pragma once

#include "drawing/arc_geometry.h"
#include "drawing/drawing_tools.h"
#include "frame/object/automation_object.h"
#include "platform/long_handles.h"
#include "platform/whole_numbers.h"

namespace velk {

template <class Types>
class OutlinedShape : public AutomationObject<typename Types::Interface> {
  public:
    using PenStyle = typename Types::PenStyle;
    using MixModeType = typename Types::MixMode;

    STDMETHODIMP get_BorderColor(OLE_COLOR* result) noexcept override { return this->Get(result, outline_.colour); }
    STDMETHODIMP put_BorderColor(OLE_COLOR* Value) noexcept override { return this->Let(Value, outline_.colour); }
    STDMETHODIMP get_BorderWidth(SHORT* result) noexcept override { return this->Get(result, outline_.width); }
    STDMETHODIMP put_BorderWidth(SHORT* Value) noexcept override { return this->Let(Value, outline_.width); }
    STDMETHODIMP get_PenStyle(PenStyle* result) noexcept override { return this->Get(result, outline_.style); }
    STDMETHODIMP put_PenStyle(PenStyle* Value) noexcept override { return this->Let(Value, outline_.style); }
    STDMETHODIMP get_ForegroundMixMode(MixModeType* result) noexcept override {
        return this->Get(result, outline_.mixMode);
    }
    STDMETHODIMP put_ForegroundMixMode(MixModeType* Value) noexcept override {
        return this->Let(Value, outline_.mixMode);
    }

  protected:
    using AutomationObject<typename Types::Interface>::AutomationObject;

    // A device context as members take it.
    static HDC ContextOf(LONG* handle) { return HandleFrom<HDC>(Given(handle)); }

    Outline outline_;
};

template <class Types>
class BoxedShape : public OutlinedShape<Types> {
  public:
    STDMETHODIMP get_Left(LONG* result) noexcept override { return this->Get(result, box_.left); }
    STDMETHODIMP put_Left(LONG* Value) noexcept override { return this->Let(Value, box_.left); }
    STDMETHODIMP get_Top(LONG* result) noexcept override { return this->Get(result, box_.top); }
    STDMETHODIMP put_Top(LONG* Value) noexcept override { return this->Let(Value, box_.top); }
    STDMETHODIMP get_Right(LONG* result) noexcept override { return this->Get(result, box_.right); }
    STDMETHODIMP put_Right(LONG* Value) noexcept override { return this->Let(Value, box_.right); }
    STDMETHODIMP get_Bottom(LONG* result) noexcept override { return this->Get(result, box_.bottom); }
    STDMETHODIMP put_Bottom(LONG* Value) noexcept override { return this->Let(Value, box_.bottom); }

  protected:
    using OutlinedShape<Types>::OutlinedShape;

    Box box_;
};

template <class Types>
class FilledShape : public BoxedShape<Types> {
  public:
    using BrushStyle = typename Types::BrushStyle;
    using HatchStyle = typename Types::HatchStyle;

    STDMETHODIMP get_FillColor(OLE_COLOR* result) noexcept override { return this->Get(result, fill_.colour); }
    STDMETHODIMP put_FillColor(OLE_COLOR* Value) noexcept override { return this->Let(Value, fill_.colour); }
    STDMETHODIMP get_BrushStyle(BrushStyle* result) noexcept override { return this->Get(result, fill_.style); }
    STDMETHODIMP put_BrushStyle(BrushStyle* Value) noexcept override { return this->Let(Value, fill_.style); }
    STDMETHODIMP get_HatchStyle(HatchStyle* result) noexcept override { return this->Get(result, fill_.hatch); }
    STDMETHODIMP put_HatchStyle(HatchStyle* Value) noexcept override { return this->Let(Value, fill_.hatch); }

  protected:
    using BoxedShape<Types>::BoxedShape;

    // How the platform draws the shape with what is selected.
    using PlatformDraw = WINBOOL(WINAPI*)(HDC, int, int, int, int);

    void DrawFlat(HDC context, PlatformDraw draw) const noexcept {
        const Box& box = this->box_;
        DrawFilled(context, this->outline_, fill_, [&] { draw(context, box.left, box.top, box.right, box.bottom); });
    }

    // Shadow first and in place, highlight second and to the right and down: the reverse of the usual raised look, and
    // deliberate. An overflow leaves the properties as they are at that point, some edges moved and others not.
    void DrawTwice(HDC context, PlatformDraw draw, OLE_COLOR shadow, OLE_COLOR highlight) {
        const OLE_COLOR borderColour = this->outline_.colour;
        const LONG brushStyle = fill_.style;
        fill_.style = BS_HOLLOW;
        this->outline_.colour = shadow;
        DrawFlat(context, draw);
        this->outline_.colour = highlight;
        MoveBox(this->outline_.width);
        DrawFlat(context, draw);
        this->outline_.colour = borderColour;
        fill_.style = brushStyle;
        MoveBox(-this->outline_.width);
    }

    Fill fill_;

  private:
    void MoveBox(LONG distance) {
        for (int* edge : {&this->box_.left, &this->box_.top, &this->box_.right, &this->box_.bottom}) {
            *edge = AddLong(*edge, distance);
        }
    }
};

}  // namespace velk
