// Draws every shape, pen style, mix mode, brush, hatch and 3D form into one picture and saves it as PNG:
//
//     gallery.exe gallery.png
//
// The library has to be registered. A client in the early-bound way: the interfaces come from the type library.
#include <windows.h>

#include <ole2.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <type_traits>

#include "velksprt.h"

namespace Gdiplus {  // its headers expect these in sight
using std::max;
using std::min;
}  // namespace Gdiplus
#include <gdiplus.h>

namespace {

constexpr int kCellWidth = 132, kCellHeight = 84, kMargin = 12, kColumns = 8, kTitleHeight = 34;
constexpr int kWidth = 2 * kMargin + kColumns * kCellWidth, kHeight = 1136;
constexpr LONG kBlue = 0xA04020, kOrange = 0x2080F0, kGrey = 0x808080;

template <class Interface>
class Object {
  public:
    explicit Object(REFCLSID clsid) {
        const HRESULT created = CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, __uuidof(Interface),
                                                 reinterpret_cast<void**>(&object_));
        if (SUCCEEDED(created)) return;
        std::printf("The library is not registered (0x%08lX).\n", static_cast<unsigned long>(created));
        std::exit(1);
    }
    ~Object() { object_->Release(); }
    Interface* operator->() const { return object_; }

    // Property lets take their value by reference.
    template <class T>
    void Set(HRESULT (STDMETHODCALLTYPE Interface::*put)(T*), std::type_identity_t<T> value) const {
        (object_->*put)(&value);
    }

  private:
    Interface* object_ = nullptr;
};

struct Shapes {
    Object<_CGDIArc> arc{__uuidof(CGDIArc)};
    Object<_CGDIEllipse> ellipse{__uuidof(CGDIEllipse)};
    Object<_CGDILine> line{__uuidof(CGDILine)};
    Object<_CGDIRectangle> rectangle{__uuidof(CGDIRectangle)};
};

template <class Interface>
void Place(const Object<Interface>& shape, const RECT& box) {
    shape.Set(&Interface::put_Left, box.left);
    shape.Set(&Interface::put_Top, box.top);
    shape.Set(&Interface::put_Right, box.right);
    shape.Set(&Interface::put_Bottom, box.bottom);
}

void PlaceLine(const Object<_CGDILine>& line, LONG x1, LONG y1, LONG x2, LONG y2) {
    line.Set(&_CGDILine::put_X1, x1);
    line.Set(&_CGDILine::put_Y1, y1);
    line.Set(&_CGDILine::put_X2, x2);
    line.Set(&_CGDILine::put_Y2, y2);
}

// A white page on which cells are laid out from left to right and from top to bottom.
class Page {
  public:
    Page() {
        BITMAPINFO info{};
        info.bmiHeader.biSize = sizeof info.bmiHeader;
        info.bmiHeader.biWidth = kWidth;
        info.bmiHeader.biHeight = -kHeight;
        info.bmiHeader.biPlanes = 1;
        info.bmiHeader.biBitCount = 32;
        void* bits = nullptr;
        bitmap = CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
        SelectObject(context, bitmap);
        PatBlt(context, 0, 0, kWidth, kHeight, WHITENESS);
        SetBkMode(context, TRANSPARENT);
    }
    ~Page() {
        DeleteDC(context);
        DeleteObject(bitmap);
    }

    void Title(const char* text) {
        if (column_ != 0) NextRow();
        Text(kMargin, top_ + 10, text, -17, FW_BOLD);
        top_ += kTitleHeight;
    }
    // The box for a shape above the cell's label.
    RECT Cell(const char* label) {
        if (column_ == kColumns) NextRow();
        const int left = kMargin + column_++ * kCellWidth;
        Text(left, top_ + kCellHeight - 20, label, -11, FW_NORMAL);
        return {left + 4, top_ + 4, left + kCellWidth - 16, top_ + kCellHeight - 26};
    }
    LONG handle() const { return HandleToLong(context); }

    const HDC context = CreateCompatibleDC(nullptr);
    HBITMAP bitmap = nullptr;

  private:
    void NextRow() {
        top_ += kCellHeight;
        column_ = 0;
    }
    void Text(int x, int y, const char* text, int size, int weight) const {
        const HFONT font = CreateFontA(size, 0, 0, 0, weight, FALSE, FALSE, FALSE, ANSI_CHARSET, OUT_DEFAULT_PRECIS,
                                       CLIP_DEFAULT_PRECIS, ANTIALIASED_QUALITY, DEFAULT_PITCH, "Tahoma");
        const HGDIOBJ earlier = SelectObject(context, font);
        TextOutA(context, x, y, text, static_cast<int>(std::string(text).size()));
        SelectObject(context, earlier);
        DeleteObject(font);
    }

    int top_ = 0;
    int column_ = 0;
};

void DrawShapes(Page& page) {
    const Shapes shapes;
    LONG context = page.handle();
    page.Title("Shapes");
    shapes.arc.Set(&_CGDIArc::put_BorderColor, kBlue);
    shapes.arc.Set(&_CGDIArc::put_BorderWidth, 2);
    RECT box = page.Cell("DrawArc");
    Place(shapes.arc, box);
    shapes.arc->DrawArc(&context, box.right, box.bottom, box.left, box.top);
    Place(shapes.arc, page.Cell("ByAngle 30, 300"));
    shapes.arc->DrawArcByAngle(&context, 30, 300);
    Place(shapes.arc, page.Cell("BySweep 0, 90"));
    shapes.arc->DrawArcByAngleSweep(&context, 0, 90);
    Place(shapes.arc, page.Cell("BySweep 0, 360"));
    shapes.arc->DrawArcByAngleSweep(&context, 0, 360);
    Place(shapes.ellipse, page.Cell("DrawEllipse"));
    shapes.ellipse->DrawEllipse(&context);
    box = page.Cell("DrawLine");
    PlaceLine(shapes.line, box.left, box.bottom, box.right, box.top);
    shapes.line->DrawLine(&context);
    Place(shapes.rectangle, page.Cell("DrawRectangle"));
    shapes.rectangle->DrawRectangle(&context);
    Place(shapes.rectangle, page.Cell("system colours"));
    shapes.rectangle.Set(&_CGDIRectangle::put_FillColor, OLE_COLOR{0x80000000 | COLOR_BTNFACE});
    shapes.rectangle.Set(&_CGDIRectangle::put_BorderColor, OLE_COLOR{0x80000000 | COLOR_HIGHLIGHT});
    shapes.rectangle->DrawRectangle(&context);
}

void DrawPenStyles(Page& page) {
    static const char* const kNames[] = {"PS_SOLID",      "PS_DASH", "PS_DOT",        "PS_DASHDOT",
                                         "PS_DASHDOTDOT", "PS_NULL", "PS_INSIDEFRAME"};
    const Shapes shapes;
    LONG context = page.handle();
    shapes.ellipse.Set(&_CGDIEllipse::put_BrushStyle, ebsBS_HOLLOW);
    page.Title("Pen styles: lines and ellipses of width 1, a line of width 4");
    for (int style = apsPS_SOLID; style <= apsPS_INSIDEFRAME; ++style) {
        const RECT box = page.Cell(kNames[style]);
        shapes.line.Set(&_CGDILine::put_PenStyle, static_cast<EnumLinePenStyles>(style));
        shapes.ellipse.Set(&_CGDIEllipse::put_PenStyle, static_cast<EnumEllipsePenStyles>(style));
        shapes.line.Set(&_CGDILine::put_BorderWidth, 1);
        PlaceLine(shapes.line, box.left, box.top + 4, box.right, box.top + 4);
        shapes.line->DrawLine(&context);
        shapes.line.Set(&_CGDILine::put_BorderWidth, 4);
        PlaceLine(shapes.line, box.left, box.bottom - 4, box.right, box.bottom - 4);
        shapes.line->DrawLine(&context);
        Place(shapes.ellipse, {box.left, box.top + 10, box.right, box.bottom - 10});
        shapes.ellipse->DrawEllipse(&context);
    }
}

void DrawMixModes(Page& page) {
    static const char* const kNames[] = {"R2_BLACK",      "R2_NOTMERGEPEN", "R2_MASKNOTPEN", "R2_NOTCOPYPEN",
                                         "R2_MASKPENNOT", "R2_NOT",         "R2_XORPEN",     "R2_NOTMASKPEN",
                                         "R2_MASKPEN",    "R2_NOTXORPEN",   "R2_NOP",        "R2_MERGENOTPEN",
                                         "R2_COPYPEN",    "R2_MERGEPENNOT", "R2_MERGEPEN",   "R2_WHITE"};
    const Shapes shapes;
    LONG context = page.handle();
    page.Title("Mix modes: an orange ellipse with a blue line on black, blue, orange and white");
    shapes.ellipse.Set(&_CGDIEllipse::put_FillColor, kOrange);
    shapes.ellipse.Set(&_CGDIEllipse::put_BorderColor, kBlue);
    shapes.ellipse.Set(&_CGDIEllipse::put_BorderWidth, 4);
    shapes.rectangle.Set(&_CGDIRectangle::put_PenStyle, rpsPS_NULL);
    for (int mode = eroR2_BLACK; mode <= eroR2_LAST; ++mode) {
        const RECT box = page.Cell(kNames[mode - 1]);
        const LONG stripe = (box.right - box.left) / 4;
        for (const LONG colour : {0L, kBlue, kOrange, 0xFFFFFFL}) {
            const LONG left = box.left + stripe * (colour == 0 ? 0 : colour == kBlue ? 1 : colour == kOrange ? 2 : 3);
            shapes.rectangle.Set(&_CGDIRectangle::put_FillColor, colour);
            Place(shapes.rectangle, {left, box.top, left + stripe + 1, box.bottom});
            shapes.rectangle->DrawRectangle(&context);
        }
        shapes.ellipse.Set(&_CGDIEllipse::put_ForegroundMixMode, static_cast<EnumEllipseRasterOps>(mode));
        Place(shapes.ellipse, {box.left + 6, box.top + 6, box.right - 6, box.bottom - 6});
        shapes.ellipse->DrawEllipse(&context);
    }
}

void DrawBrushes(Page& page) {
    static const char* const kStyles[] = {"BS_SOLID",        "BS_HOLLOW",     "BS_HATCHED",
                                          "BS_PATTERN",      "BS_INDEXED",    "BS_DIBPATTERN",
                                          "BS_DIBPATTERNPT", "BS_PATTERN8X8", "BS_DIBPATTERN8X8"};
    static const char* const kHatches[] = {
        "HS_HORIZONTAL",    "HS_VERTICAL",   "HS_FDIAGONAL",   "HS_BDIAGONAL",    "HS_CROSS",           "HS_DIAGCROSS",
        "HS_FDIAGONAL1",    "HS_BDIAGONAL1", "HS_SOLID",       "HS_DENSE1",       "HS_DENSE2",          "HS_DENSE3",
        "HS_DENSE4",        "HS_DENSE5",     "HS_DENSE6",      "HS_DENSE7",       "HS_DENSE8",          "HS_NOSHADE",
        "HS_HALFTONE",      "HS_SOLIDCLR",   "HS_DITHEREDCLR", "HS_SOLIDTEXTCLR", "HS_DITHEREDTEXTCLR", "HS_SOLIDBKCLR",
        "HS_DITHEREDBKCLR", "HS_API_MAX"};
    const Shapes shapes;
    LONG context = page.handle();
    const auto draw = [&](const char* name, int style, int hatch) {
        const RECT box = page.Cell(name);
        const LONG middle = (box.left + box.right) / 2;
        shapes.ellipse.Set(&_CGDIEllipse::put_BrushStyle, static_cast<EnumEllipseBrushStyles>(style));
        shapes.ellipse.Set(&_CGDIEllipse::put_HatchStyle, static_cast<EnumEllipseHatchStyles>(hatch));
        shapes.rectangle.Set(&_CGDIRectangle::put_BrushStyle, static_cast<EnumRectangleBrushStyles>(style));
        shapes.rectangle.Set(&_CGDIRectangle::put_HatchStyle, static_cast<EnumRectangleHatchStyles>(hatch));
        Place(shapes.ellipse, {box.left, box.top, middle - 3, box.bottom});
        Place(shapes.rectangle, {middle + 3, box.top, box.right, box.bottom});
        shapes.ellipse->DrawEllipse(&context);
        shapes.rectangle->DrawRectangle(&context);
    };
    shapes.ellipse.Set(&_CGDIEllipse::put_FillColor, kBlue);
    shapes.rectangle.Set(&_CGDIRectangle::put_FillColor, kBlue);
    const HGDIOBJ earlier = SelectObject(page.context, GetStockObject(LTGRAY_BRUSH));
    page.Title("Brush styles: where the platform makes no brush, the context's own (here light grey) fills the shape");
    for (int style = ebsBS_SOLID; style <= ebsBS_DIBPATTERN8X8; ++style) draw(kStyles[style], style, 0);
    page.Title("Hatch styles (of brush style 2): the platform documents the first six");
    for (int hatch = ehsHS_HORIZONTAL; hatch <= ehsHS_API_MAX; ++hatch) draw(kHatches[hatch], ebsBS_HATCHED, hatch);
    SelectObject(page.context, earlier);
}

void Draw3DForms(Page& page) {
    LONG context = page.handle();
    page.Title("Draw3D: shadow (grey) in place, highlight (orange) to the right and down");
    for (const SHORT width : {1, 4}) {
        const Shapes shapes;
        const std::string suffix = ", width " + std::to_string(width);
        shapes.ellipse.Set(&_CGDIEllipse::put_BorderWidth, width);
        Place(shapes.ellipse, page.Cell(("Ellipse" + suffix).c_str()));
        shapes.ellipse->Draw3DEllipse(&context, kGrey, kOrange);
        shapes.rectangle.Set(&_CGDIRectangle::put_BorderWidth, width);
        Place(shapes.rectangle, page.Cell(("Rectangle" + suffix).c_str()));
        shapes.rectangle->Draw3DRectangle(&context, kGrey, kOrange);
        const RECT box = page.Cell(("Line" + suffix).c_str());
        shapes.line.Set(&_CGDILine::put_BorderWidth, width);
        PlaceLine(shapes.line, box.left, box.bottom, box.right, box.top);
        shapes.line->Draw3DLine(&context, kGrey, kOrange);
    }
}

bool Save(HBITMAP picture, const wchar_t* path) {
    const CLSID png{0x557CF406, 0x1A04, 0x11D3, {0x9A, 0x73, 0x00, 0x00, 0xF8, 0x1E, 0xF3, 0x2E}};
    ULONG_PTR token = 0;
    const Gdiplus::GdiplusStartupInput input;
    if (Gdiplus::GdiplusStartup(&token, &input, nullptr) != Gdiplus::Ok) return false;
    const bool saved = Gdiplus::Bitmap(picture, nullptr).Save(path, &png, nullptr) == Gdiplus::Ok;
    Gdiplus::GdiplusShutdown(token);
    return saved;
}

}  // namespace

int main(int count, char** arguments) {
    const std::string path = count > 1 ? arguments[1] : "gallery.png";
    if (FAILED(CoInitialize(nullptr))) return 1;
    Page page;
    DrawShapes(page);
    DrawPenStyles(page);
    DrawMixModes(page);
    DrawBrushes(page);
    Draw3DForms(page);
    GdiFlush();
    if (!Save(page.bitmap, std::wstring(path.begin(), path.end()).c_str())) {
        std::printf("%s cannot be written.\n", path.c_str());
        return 1;
    }
    std::printf("%s: %d x %d pixels\n", path.c_str(), kWidth, kHeight);
    return 0;
}
