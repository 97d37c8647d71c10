// Shapes and captures through the DLL, as an early-bound client calls them, against the same platform calls by hand.
#include "platform/drawing_handles.h"
#include "ratio.h"
#include "support/client.h"

namespace {

using namespace velk;

constexpr double kAtMost = 1 / 1.1;
constexpr int kLeft = 5, kTop = 6, kRight = 70, kBottom = 60;

template <class Interface>
ComPtr<Interface> New(REFCLSID clsid) {
    return test::CreateObject<Interface>(clsid);
}

template <class Shape>
void PlaceBox(Shape* shape) {
    LONG left = kLeft, top = kTop, right = kRight, bottom = kBottom;
    shape->put_Left(&left);
    shape->put_Top(&top);
    shape->put_Right(&right);
    shape->put_Bottom(&bottom);
}

// What somebody writes who wants a shape and an unchanged context.
template <class Draw>
void OutlinedByHand(HDC context, Draw&& draw) {
    const HPEN pen = CreatePen(PS_SOLID, 1, 0);
    const HGDIOBJ earlier = SelectObject(context, pen);
    const int mode = GetROP2(context) == R2_COPYPEN ? 0 : SetROP2(context, R2_COPYPEN);
    draw();
    if (mode) SetROP2(context, mode);
    SelectObject(context, earlier);
    DeleteObject(pen);
}

template <class Draw>
void FilledByHand(HDC context, Draw&& draw) {
    const LOGBRUSH description{BS_SOLID, 0, HS_HORIZONTAL};
    const HBRUSH brush = CreateBrushIndirect(&description);
    const HGDIOBJ earlier = SelectObject(context, brush);
    OutlinedByHand(context, draw);
    SelectObject(context, earlier);
    DeleteObject(brush);
}

bool MeasureShapes() {
    const GdiObject bitmap(CreateCompatibleBitmap(ScreenContext(GetDC(nullptr)).get(), 80, 80));
    const CreatedContext memory(CreateCompatibleDC(nullptr));
    const HDC context = memory.get();
    const SelectedObject selected(context, bitmap.get());
    LONG handle = HandleToLong(context);
    const auto arc = New<_CGDIArc>(__uuidof(CGDIArc));
    const auto ellipse = New<_CGDIEllipse>(__uuidof(CGDIEllipse));
    const auto line = New<_CGDILine>(__uuidof(CGDILine));
    const auto rectangle = New<_CGDIRectangle>(__uuidof(CGDIRectangle));
    PlaceBox(arc.get());
    PlaceBox(ellipse.get());
    PlaceBox(rectangle.get());
    LONG right = kRight, bottom = kBottom;
    line->put_X2(&right);
    line->put_Y2(&bottom);
    bool met = bench::Compare(
        "arc", kAtMost, [&] { arc->DrawArc(&handle, 70, 33, 37, 6); },
        [&] { OutlinedByHand(context, [&] { Arc(context, kLeft, kTop, kRight, kBottom, 70, 33, 37, 6); }); });
    met &= bench::Compare(
        "ellipse", kAtMost, [&] { ellipse->DrawEllipse(&handle); },
        [&] { FilledByHand(context, [&] { Ellipse(context, kLeft, kTop, kRight, kBottom); }); });
    met &= bench::Compare(
        "line", kAtMost, [&] { line->DrawLine(&handle); },
        [&] {
            OutlinedByHand(context, [&] {
                MoveToEx(context, 0, 0, nullptr);
                LineTo(context, kRight, kBottom);
            });
        });
    met &= bench::Compare(
        "rectangle", kAtMost, [&] { rectangle->DrawRectangle(&handle); },
        [&] { FilledByHand(context, [&] { Rectangle(context, kLeft, kTop, kRight, kBottom); }); });
    return met;
}

void CaptureByHand() {
    RECT area;
    GetWindowRect(GetDesktopWindow(), &area);
    const HDC display = CreateDCA("DISPLAY", "", "", nullptr);
    const HDC memory = CreateCompatibleDC(display);
    const HBITMAP bitmap = CreateCompatibleBitmap(display, area.right, area.bottom);
    SelectObject(memory, bitmap);
    BitBlt(memory, 0, 0, area.right, area.bottom, display, 0, 0, SRCCOPY);
    OpenClipboard(nullptr);
    EmptyClipboard();
    SetClipboardData(CF_BITMAP, bitmap);
    CloseClipboard();
    DeleteDC(memory);
    ReleaseDC(reinterpret_cast<HWND>(bitmap), display);
}

bool MeasureCapture() {
    const auto screenshot = New<_CScreenshot>(__uuidof(CScreenshot));
    return bench::Compare(
        "capture of the screen", kAtMost, [&] { screenshot->CaptureDesktop(); }, CaptureByHand);
}

}  // namespace

int main() {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    const bool shapes = MeasureShapes();
    return MeasureCapture() && shapes ? 0 : 1;
}
