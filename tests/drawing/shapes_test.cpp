// The four shapes as scripts see them: pixels read back, and a device context that is as it was afterwards.
#include <gtest/gtest.h>

#include <set>
#include <span>
#include <string>
#include <tuple>
#include <vector>

#include "drawing/canvas.h"
#include "support/client.h"
#include "support/gdi_objects.h"
#include "support/import_patch.h"
#include "support/late_bound.h"
#include "support/report_recorder.h"

namespace velk::test {
namespace {

using Names = std::vector<const wchar_t*>;
using Places = std::vector<LONG>;

struct Kind {
    CLSID clsid;
    Names coordinates;
    std::wstring draw;  // its 3D form is named after it
    void (*byHand)(HDC, int, int, int, int);
    bool filled;
};

const Names kBox{L"Left", L"Top", L"Right", L"Bottom"}, kEnds{L"X1", L"Y1", L"X2", L"Y2"};
const Kind kArc{__uuidof(CGDIArc), kBox, L"DrawArc",
                [](HDC dc, int l, int t, int r, int b) { Arc(dc, l, t, r, b, 0, 0, 0, 0); }, false};
const Kind kEllipse{__uuidof(CGDIEllipse), kBox, L"DrawEllipse",
                    [](HDC dc, int l, int t, int r, int b) { Ellipse(dc, l, t, r, b); }, true};
const Kind kLine{__uuidof(CGDILine), kEnds, L"DrawLine",
                 [](HDC dc, int l, int t, int r, int b) { MoveToEx(dc, l, t, nullptr), LineTo(dc, r, b); }, false};
const Kind kRectangle{__uuidof(CGDIRectangle), kBox, L"DrawRectangle",
                      [](HDC dc, int l, int t, int r, int b) { Rectangle(dc, l, t, r, b); }, true};
const Kind* const kKinds[] = {&kArc, &kEllipse, &kLine, &kRectangle};
const Places kPlaces{10, 11, 62, 53};

class Shape {
  public:
    explicit Shape(const Kind& kind, const Places& places = kPlaces)
        : kind(kind), object(CreateObject<IDispatch>(kind.clsid)) {
        for (std::size_t i = 0; i < 4; ++i) Set(kind.coordinates[i], places[i]);
    }

    void Set(const wchar_t* name, LONG value) { EXPECT_EQ(S_OK, Let(object.get(), name, {Arg(value)}).result) << name; }
    LONG Read(const wchar_t* name) {
        const Variant value = Get(object.get(), name).value;
        return value.vt == VT_I2 ? value.iVal : value.lVal;
    }
    Places Coordinates() {
        Places places;
        for (const wchar_t* name : kind.coordinates) places.push_back(Read(name));
        return places;
    }

    // An arc from a point to the same point, which is a whole ellipse.
    void Draw(const Canvas& canvas) {
        const VARIANT context = Arg(canvas.handle()), zero = Arg(0L);
        if (&kind == &kArc) return Checked(canvas, kind.draw, {context, zero, zero, zero, zero});
        Checked(canvas, kind.draw, {context});
    }
    std::wstring Name3D() const { return L"Draw3D" + kind.draw.substr(4); }
    void Draw3D(const Canvas& canvas) {
        Checked(canvas, Name3D(), {Arg(canvas.handle()), Arg(0x0000FFL), Arg(0x00FF00L)});
    }
    // The context is as it was afterwards, and nothing is left behind.
    void Checked(const Canvas& canvas, const std::wstring& member, std::initializer_list<VARIANT> arguments) {
        const auto state = [&] {
            return std::tuple(GetCurrentObject(canvas.get(), OBJ_PEN), GetCurrentObject(canvas.get(), OBJ_BRUSH),
                              GetROP2(canvas.get()), GdiObjects());
        };
        const auto before = state();
        EXPECT_EQ(S_OK, Call(object.get(), member.c_str(), arguments).result) << member;
        EXPECT_EQ(before, state()) << member;
    }

    const Kind& kind;
    ComPtr<IDispatch> object;
};

TEST(Shapes, StoreWhatTheyAreGiven) {
    const std::pair<const wchar_t*, LONG> defaults[] = {
        {L"BorderColor", 0}, {L"BorderWidth", 1}, {L"PenStyle", 0},  {L"ForegroundMixMode", 13},
        {L"FillColor", 0},   {L"BrushStyle", 0},  {L"HatchStyle", 0}};
    for (const Kind* kind : kKinds) {
        Shape shape(*kind, {0, 0, 0, 0});
        Names names = kind->coordinates;
        for (const auto& [name, value] : std::span(defaults, kind->filled ? 7 : 4)) {
            EXPECT_EQ(value, shape.Read(name)) << kind->draw << name;
            names.push_back(name);
        }
        const auto odd = [&](std::size_t i) { return static_cast<LONG>(i == 5 ? -32768 : i - 99999); };
        for (std::size_t i = 0; i < names.size(); ++i) shape.Set(names[i], odd(i));
        for (std::size_t i = 0; i < names.size(); ++i) EXPECT_EQ(odd(i), shape.Read(names[i])) << names[i];
    }
}

struct Look {
    LONG penStyle = PS_SOLID, width = 1, brush = BS_HOLLOW, hatch = HS_CROSS;
};

// The same shape by the platform's own calls.
void DrawByHand(const Canvas& canvas, const Kind& kind, const Look& look, COLORREF border, int moved = 0) {
    const LOGBRUSH brush{static_cast<UINT>(look.brush), GetSysColor(COLOR_ACTIVECAPTION),
                         static_cast<ULONG_PTR>(look.hatch)};
    const GdiObject ownPen(CreatePen(look.penStyle, look.width, border)), ownBrush(CreateBrushIndirect(&brush));
    const SelectedObject withPen(canvas.get(), ownPen.get()), withBrush(canvas.get(), ownBrush.get());
    kind.byHand(canvas.get(), 10 + moved, 11 + moved, 62 + moved, 53 + moved);
}

// A mode's number less one is a table of four bits: what a bit of the pen makes of a bit of the ground.
COLORREF Mixed(LONG mode, COLORREF pen, COLORREF ground) {
    COLORREF mixed = 0;
    for (unsigned bit = 0; bit < 24; ++bit) {
        const unsigned entry = 2 * (pen >> bit & 1) + (ground >> bit & 1);
        mixed |= (static_cast<COLORREF>(mode - 1) >> entry & 1) << bit;
    }
    return mixed;
}

TEST(Shapes, MixTheirColoursWithTheGroundBitByBit) {
    constexpr COLORREF kGround = 0x0F33CC, kBorder = 0x5599F0, kFill = 0x2040C6;
    for (const Kind* kind : kKinds) {
        for (LONG mode = R2_BLACK; mode <= R2_WHITE; ++mode) {
            Canvas canvas;
            canvas.Clear(kGround);
            Shape shape(*kind);
            shape.Set(L"BorderColor", kBorder);
            shape.Set(L"BorderWidth", 5);
            shape.Set(L"ForegroundMixMode", mode);
            if (kind->filled) shape.Set(L"FillColor", kFill);
            shape.Draw(canvas);
            EXPECT_EQ(Mixed(mode, kBorder, kGround), canvas.At(36, kind == &kLine ? 32 : 11)) << kind->draw << mode;
            EXPECT_EQ(kGround, canvas.At(70, 70)) << kind->draw << mode;
            if (!kind->filled) continue;
            EXPECT_EQ(Mixed(mode, kFill, kGround), canvas.At(36, 32)) << kind->draw << mode;
        }
    }
}

TEST(Shapes, LookAsThePlatformDrawsThem) {
    for (const Kind* kind : kKinds) {
        std::vector<Look> looks{{PS_SOLID, 3, BS_SOLID}};
        for (const LONG width : {1, 9}) {
            for (LONG style = PS_SOLID; style <= PS_INSIDEFRAME; ++style) looks.push_back({style, width});
        }
        for (LONG hatch = HS_HORIZONTAL; hatch <= 25; ++hatch) {
            looks.push_back({PS_SOLID, 1, BS_HATCHED, hatch});
        }
        std::set<std::vector<COLORREF>> pictures;
        for (const Look& look : looks) {
            Canvas canvas, expected;
            for (Canvas* each : {&canvas, &expected}) each->Clear(0x0F33CC);
            Shape shape(*kind);
            shape.Set(L"BorderColor", static_cast<LONG>(0x80000000 | COLOR_HIGHLIGHT));
            shape.Set(L"BorderWidth", look.width);
            shape.Set(L"PenStyle", look.penStyle);
            if (kind->filled) {
                shape.Set(L"FillColor", static_cast<LONG>(0x80000000 | COLOR_ACTIVECAPTION));
                shape.Set(L"BrushStyle", look.brush);
                shape.Set(L"HatchStyle", look.hatch);
            }
            shape.Draw(canvas);
            DrawByHand(expected, *kind, look, GetSysColor(COLOR_HIGHLIGHT));
            EXPECT_TRUE(canvas.Pixels() == expected.Pixels()) << kind->draw << &look - looks.data();
            EXPECT_EQ(expected.Position(), canvas.Position()) << "a line moves it to its end";
            pictures.insert(canvas.Pixels());
        }
        EXPECT_LE(kind->filled ? 13u : 7u, pictures.size()) << kind->draw << ": they do differ";
    }
}

// What the library does to a context: + selects, - deletes.
std::string calls;
const char* KindOf(HGDIOBJ object) { return GetObjectType(object) == OBJ_PEN ? "pen " : "brush "; }
HGDIOBJ WINAPI NoteSelect(HDC context, HGDIOBJ object) {
    return calls += std::string("+") + KindOf(object), SelectObject(context, object);
}
BOOL WINAPI NoteDelete(HGDIOBJ object) { return calls += std::string("-") + KindOf(object), DeleteObject(object); }
int WINAPI NoteSetMode(HDC context, int mode) { return calls += "mode ", SetROP2(context, mode); }

TEST(Shapes, PutThingsBackInOrderAndSetTheMixModeOnlyWhereItDiffers) {
    const ImportPatch select(Library(), "SelectObject", reinterpret_cast<void*>(&NoteSelect));
    const ImportPatch remove(Library(), "DeleteObject", reinterpret_cast<void*>(&NoteDelete));
    const ImportPatch setMode(Library(), "SetROP2", reinterpret_cast<void*>(&NoteSetMode));
    for (const Kind* kind : kKinds) {
        for (const int mode : {R2_COPYPEN, R2_XORPEN}) {
            const Canvas canvas;
            SetROP2(canvas.get(), mode);
            calls.clear();
            Shape(*kind).Draw(canvas);
            const std::string modes = mode == R2_COPYPEN ? "" : "mode mode ";
            EXPECT_EQ(
                kind->filled ? "+brush +pen " + modes + "+brush +pen -brush -pen " : "+pen " + modes + "+pen -pen ",
                calls);
        }
    }
}

// Where the platform makes no brush, what the context has fills the shape.
TEST(Shapes, LeaveOddBrushesToThePlatform) {
    for (LONG style = BS_PATTERN; style <= BS_DIBPATTERN8X8; ++style) {
        for (const LONG hatch : {0L, 4L, 25L, -1L, 0x7FFFFFFFL}) {
            const Canvas canvas;
            const GdiObject green(CreateSolidBrush(0x00FF00));
            const SelectedObject selected(canvas.get(), green.get());
            Shape shape(kRectangle);
            shape.Set(L"BrushStyle", style);
            shape.Set(L"HatchStyle", hatch);
            shape.Draw(canvas);
            EXPECT_EQ(0x00FF00u, canvas.At(25, 20)) << style << ' ' << hatch;
        }
    }
}

TEST(Shapes, Draw3DWithTheShadowFirstAndTheHighlightDownAndRight) {
    for (const Kind* kind : {&kEllipse, &kLine, &kRectangle}) {
        const Canvas canvas, expected;
        Shape shape(*kind);
        shape.Set(L"BorderColor", 99);
        shape.Set(L"BorderWidth", 5);
        shape.Draw3D(canvas);
        EXPECT_EQ(kPlaces, shape.Coordinates());
        EXPECT_EQ(99, shape.Read(L"BorderColor"));
        EXPECT_TRUE(!kind->filled || shape.Read(L"BrushStyle") == BS_SOLID);
        DrawByHand(expected, *kind, {PS_SOLID, 5}, 0x0000FF);
        DrawByHand(expected, *kind, {PS_SOLID, 5}, 0x00FF00, kind == &kLine ? 1 : 5);
        EXPECT_TRUE(canvas.Pixels() == expected.Pixels()) << kind->draw;
    }
}

TEST(Shapes, AnOverflowIn3DIsReportedAndLeavesThePropertiesWhereTheyWere) {
    constexpr LONG kMost = 0x7FFFFFFF;
    const struct {
        const Kind& kind;
        Places before, after;
        LONG width;
    } cases[] = {
        {kEllipse, {kMost - 4, 0, 0, 0}, {kMost - 4, 0, 0, 0}, 5},
        {kEllipse, {1, 2, 3, kMost}, {6, 7, 8, kMost}, 5},
        {kRectangle, {1, -kMost, 3, 4}, {-2, -kMost, 3, 4}, -3},
        {kLine, {1, 2, kMost, 4}, {2, 3, kMost, 4}, 5},
    };
    for (const auto& c : cases) {
        const Canvas canvas;
        const ReportRecorder recorder(Library());
        Shape shape(c.kind, c.before);
        shape.Set(L"BorderWidth", c.width);
        shape.Draw3D(canvas);
        ASSERT_EQ(1u, recorder.reports().size());
        EXPECT_EQ(shape.Name3D(), recorder.reports()[0].title);
        EXPECT_EQ(L"Error: 6. Overflow", recorder.reports()[0].text);
        EXPECT_EQ(c.after, shape.Coordinates());
        EXPECT_EQ(0x00FF00, shape.Read(L"BorderColor"));
        EXPECT_TRUE(!c.kind.filled || shape.Read(L"BrushStyle") == BS_HOLLOW);
    }
}

TEST(Shapes, ArcsByAngleAreArcsByTheirEnds) {
    const ReportRecorder recorder(Library());
    const auto by = [](const wchar_t* member, double first, double second) {
        const Canvas canvas;
        Shape(kArc, {0, 0, 60, 70}).Checked(canvas, member, {Arg(canvas.handle()), Arg(first), Arg(second)});
        return canvas.Pixels();
    };
    const Canvas quarter, whole, nothing;
    Arc(quarter.get(), 0, 0, 60, 70, 60, 35, 30, 0);
    Arc(whole.get(), 0, 0, 60, 70, 60, 35, 60, 35);
    EXPECT_TRUE(quarter.Pixels() == by(L"DrawArcByAngleSweep", 0, 90));
    EXPECT_TRUE(whole.Pixels() == by(L"DrawArcByAngleSweep", 0, 360));
    EXPECT_TRUE(by(L"DrawArcByAngle", 30, 120) == by(L"DrawArcByAngleSweep", 30, 90));
    EXPECT_TRUE(nothing.Pixels() == by(L"DrawArcByAngle", -1e308, 1.7e308));
    EXPECT_TRUE(nothing.Pixels() == by(L"DrawArcByAngle", 1e308, 1.5e308));
    const wchar_t* const titles[] = {L"DrawArcByAngle", L"DrawArcByAngleSweep"};
    ASSERT_EQ(2u, recorder.reports().size());
    for (std::size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(titles[i], recorder.reports()[i].title);
        EXPECT_EQ(L"Error: 6. Overflow", recorder.reports()[i].text);
    }
}

TEST(Shapes, DoNotNoticeABadContextOrPen) {
    const ReportRecorder recorder(Library());
    const Canvas canvas;
    for (const Kind* kind : kKinds) {
        Shape shape(*kind);
        for (const LONG context : {0L, -1L, HandleToLong(GetStockObject(WHITE_BRUSH))}) {
            const std::wstring member = kind == &kArc ? L"DrawArcByAngle" : shape.Name3D();
            shape.Checked(canvas, member, {Arg(context), Arg(0L), Arg(90L)});
        }
        shape.Set(L"PenStyle", 1000);
        shape.Draw(canvas);
    }
    EXPECT_TRUE(recorder.reports().empty());
}

}  // namespace
}  // namespace velk::test
