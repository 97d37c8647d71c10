// The four shapes as scripts see them: pixels read back, and a device context that is as it was afterwards.
#include <gtest/gtest.h>

#include <set>
#include <span>
#include <string>
#include <tuple>

#include "drawing/canvas.h"
#include "support/client.h"
#include "support/gdi_objects.h"
#include "support/import_patch.h"
#include "support/late_bound.h"
#include "support/report_recorder.h"

namespace velk::test {
namespace {

using Names = std::vector<const wchar_t*>;
using PlatformDraw = void (*)(HDC, int, int, int, int);

struct Kind {
    CLSID clsid;
    Names coordinates;
    std::wstring draw;  // its 3D form is named after it
    PlatformDraw byHand;
    bool filled;
};

const Names kBox{L"Left", L"Top", L"Right", L"Bottom"};
const Kind kArc{__uuidof(CGDIArc), kBox, L"DrawArc",
                [](HDC dc, int l, int t, int r, int b) { Arc(dc, l, t, r, b, 0, 0, 0, 0); }, false};
const Kind kEllipse{__uuidof(CGDIEllipse), kBox, L"DrawEllipse",
                    [](HDC dc, int l, int t, int r, int b) { Ellipse(dc, l, t, r, b); }, true};
const Kind kLine{__uuidof(CGDILine),
                 {L"X1", L"Y1", L"X2", L"Y2"},
                 L"DrawLine",
                 [](HDC dc, int l, int t, int r, int b) {
                     MoveToEx(dc, l, t, nullptr);
                     LineTo(dc, r, b);
                 },
                 false};
const Kind kRectangle{__uuidof(CGDIRectangle), kBox, L"DrawRectangle",
                      [](HDC dc, int l, int t, int r, int b) { Rectangle(dc, l, t, r, b); }, true};
const Kind* const kKinds[] = {&kArc, &kEllipse, &kLine, &kRectangle};

class Shape {
  public:
    explicit Shape(const Kind& kind, LONG left = 10, LONG top = 10, LONG right = 41, LONG bottom = 31)
        : kind(kind), object(CreateObject<IDispatch>(kind.clsid)) {
        const LONG places[] = {left, top, right, &kind == &kLine && bottom == 31 ? top : bottom};
        for (std::size_t i = 0; i < 4; ++i) Set(kind.coordinates[i], places[i]);
    }

    void Set(const wchar_t* name, LONG value) { EXPECT_EQ(S_OK, Let(object.get(), name, {Arg(value)}).result) << name; }
    LONG Read(const wchar_t* name) {
        const Variant value = Get(object.get(), name).value;
        return value.vt == VT_I2 ? value.iVal : value.lVal;
    }
    std::vector<LONG> Places() {
        std::vector<LONG> places;
        for (const wchar_t* name : kind.coordinates) places.push_back(Read(name));
        return places;
    }

    // An arc from a point to the same point, which is a whole ellipse.
    void Draw(const Canvas& canvas) {
        const VARIANT context = Arg(canvas.handle()), zero = Arg(0L);
        if (&kind == &kArc) return Checked(canvas, kind.draw.c_str(), {context, zero, zero, zero, zero});
        Checked(canvas, kind.draw.c_str(), {context});
    }
    std::wstring Name3D() const { return L"Draw3D" + kind.draw.substr(4); }
    void Draw3D(const Canvas& canvas, LONG shadow, LONG highlight) {
        Checked(canvas, Name3D().c_str(), {Arg(canvas.handle()), Arg(shadow), Arg(highlight)});
    }
    // The context is as it was afterwards, and nothing is left behind; only a line moves the current position.
    void Checked(const Canvas& canvas, const wchar_t* member, std::initializer_list<VARIANT> arguments) {
        const auto state = [&] {
            POINT position{};
            if (&kind != &kLine) GetCurrentPositionEx(canvas.get(), &position);
            return std::tuple(GetCurrentObject(canvas.get(), OBJ_PEN), GetCurrentObject(canvas.get(), OBJ_BRUSH),
                              GetROP2(canvas.get()), position.x, position.y, GdiObjects());
        };
        const auto before = state();
        EXPECT_EQ(S_OK, Call(object.get(), member, arguments).result) << member;
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
        Shape shape(*kind, 0, 0, 0, 0);
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

// A mode's number less one is its truth table: bit 2 * pen + destination is the result.
COLORREF Mixed(LONG mode, COLORREF pen, COLORREF destination) {
    COLORREF result = 0;
    for (int bit = 0; bit < 24; ++bit) {
        const unsigned row = (pen >> bit & 1) * 2 + (destination >> bit & 1);
        result |= static_cast<COLORREF>((mode - 1) >> row & 1) << bit;
    }
    return result;
}

TEST(Shapes, MixLinesAndFillingsInEveryMode) {
    constexpr COLORREF kFilling = 0xC30F5A, kGround = 0x0F33CC;
    const COLORREF border = GetSysColor(COLOR_HIGHLIGHT);
    Canvas canvas;
    for (const Kind* kind : kKinds) {
        Shape shape(*kind);
        shape.Set(L"BorderColor", static_cast<LONG>(0x80000000 | COLOR_HIGHLIGHT));
        if (kind->filled) shape.Set(L"FillColor", kFilling);
        for (LONG mode = R2_BLACK; mode <= R2_WHITE; ++mode) {
            shape.Set(L"ForegroundMixMode", mode);
            for (const LONG brush : {BS_SOLID, BS_HOLLOW}) {
                const bool filled = kind->filled && brush == BS_SOLID;
                if (kind->filled) shape.Set(L"BrushStyle", brush);
                canvas.Clear(kGround);
                shape.Draw(canvas);
                EXPECT_EQ(filled ? Mixed(mode, kFilling, kGround) : kGround, canvas.At(25, 20)) << kind->draw << mode;
            }
            EXPECT_EQ(Mixed(mode, border, kGround), canvas.At(25, 10)) << kind->draw << mode;
        }
    }
}

// What the library does to a context: + selects, - deletes.
std::string calls;
const char* KindOf(HGDIOBJ object) { return GetObjectType(object) == OBJ_PEN ? "pen " : "brush "; }
HGDIOBJ WINAPI NoteSelect(HDC context, HGDIOBJ object) {
    calls += std::string("+") + KindOf(object);
    return SelectObject(context, object);
}
BOOL WINAPI NoteDelete(HGDIOBJ object) {
    calls += std::string("-") + KindOf(object);
    return DeleteObject(object);
}
int WINAPI NoteSetMode(HDC context, int mode) {
    calls += "mode ";
    return SetROP2(context, mode);
}

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

// The same shape by the platform's own calls, drawn with a pen and a brush that this takes over.
void DrawByHand(const Canvas& canvas, const Kind& kind, HPEN pen, HGDIOBJ brush, int moved = 0) {
    const GdiObject ownPen(pen), ownBrush(brush);
    const SelectedObject withPen(canvas.get(), pen), withBrush(canvas.get(), brush);
    kind.byHand(canvas.get(), 10 + moved, 11 + moved, 62 + moved, 53 + moved);
}

TEST(Shapes, DrawEveryPenStyle) {
    for (const Kind* kind : kKinds) {
        std::set<std::vector<COLORREF>> pictures;
        for (const int width : {1, 9}) {
            for (int style = PS_SOLID; style <= PS_INSIDEFRAME; ++style) {
                const Canvas canvas, expected;
                Shape shape(*kind, 10, 11, 62, 53);
                shape.Set(L"BorderColor", 0x2040C0);
                shape.Set(L"BorderWidth", width);
                shape.Set(L"PenStyle", style);
                if (kind->filled) shape.Set(L"BrushStyle", BS_HOLLOW);
                shape.Draw(canvas);
                DrawByHand(expected, *kind, CreatePen(style, width, 0x2040C0), GetStockObject(NULL_BRUSH));
                EXPECT_TRUE(canvas.Pixels() == expected.Pixels()) << kind->draw << style;
                pictures.insert(canvas.Pixels());
            }
        }
        EXPECT_LE(7u, pictures.size()) << kind->draw << ": six styles of thin lines, and wide ones";
    }
}

TEST(Shapes, FillWithEveryBrushAndHatch) {
    for (const Kind* kind : {&kEllipse, &kRectangle}) {
        std::set<std::vector<COLORREF>> pictures;
        const auto check = [&](LONG style, LONG hatch, HGDIOBJ brush) {
            const Canvas canvas, expected;
            Shape shape(*kind, 10, 11, 62, 53);
            shape.Set(L"FillColor", 0x2040C0);
            shape.Set(L"BrushStyle", style);
            shape.Set(L"HatchStyle", hatch);
            shape.Draw(canvas);
            DrawByHand(expected, *kind, CreatePen(PS_SOLID, 1, 0), brush);
            EXPECT_TRUE(canvas.Pixels() == expected.Pixels()) << kind->draw << style << ' ' << hatch;
            pictures.insert(canvas.Pixels());
        };
        check(BS_SOLID, HS_CROSS, CreateSolidBrush(0x2040C0));
        check(BS_HOLLOW, HS_CROSS, GetStockObject(NULL_BRUSH));
        for (int hatch = HS_HORIZONTAL; hatch <= 25; ++hatch)
            check(BS_HATCHED, hatch, CreateHatchBrush(hatch, 0x2040C0));
        EXPECT_LE(8u, pictures.size()) << kind->draw << ": solid, hollow, and six hatches";
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
        Shape shape(*kind, 10, 11, 62, 53);
        shape.Set(L"BorderColor", 99);
        shape.Set(L"BorderWidth", 5);
        shape.Draw3D(canvas, 0x0000FF, 0x00FF00);
        EXPECT_EQ((std::vector<LONG>{10, 11, 62, 53}), shape.Places());
        EXPECT_EQ(99, shape.Read(L"BorderColor"));
        EXPECT_TRUE(!kind->filled || shape.Read(L"BrushStyle") == BS_SOLID);
        DrawByHand(expected, *kind, CreatePen(PS_SOLID, 5, 0x0000FF), GetStockObject(NULL_BRUSH));
        DrawByHand(expected, *kind, CreatePen(PS_SOLID, 5, 0x00FF00), GetStockObject(NULL_BRUSH),
                   kind == &kLine ? 1 : 5);
        EXPECT_TRUE(canvas.Pixels() == expected.Pixels()) << kind->draw;
    }
}

TEST(Shapes, AnOverflowIn3DIsReportedAndLeavesThePropertiesWhereTheyWere) {
    constexpr LONG kMost = 0x7FFFFFFF;
    const struct {
        const Kind& kind;
        std::vector<LONG> before, after;
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
        Shape shape(c.kind, c.before[0], c.before[1], c.before[2], c.before[3]);
        shape.Set(L"BorderWidth", c.width);
        shape.Draw3D(canvas, 0x0000FF, 0x00FF00);
        ASSERT_EQ(1u, recorder.reports().size());
        EXPECT_EQ(shape.Name3D(), recorder.reports()[0].title);
        EXPECT_EQ(L"Error: 6. Overflow", recorder.reports()[0].text);
        EXPECT_EQ(c.after, shape.Places());
        EXPECT_EQ(0x00FF00, shape.Read(L"BorderColor"));
        EXPECT_TRUE(!c.kind.filled || shape.Read(L"BrushStyle") == BS_HOLLOW);
    }
}

std::vector<COLORREF> ArcBy(const wchar_t* member, double first, double second) {
    const Canvas canvas;
    Shape(kArc, 0, 0, 60, 70).Checked(canvas, member, {Arg(canvas.handle()), Arg(first), Arg(second)});
    return canvas.Pixels();
}

TEST(Shapes, ArcsByAngleAreArcsByTheirEnds) {
    const Canvas quarter, whole;
    Arc(quarter.get(), 0, 0, 60, 70, 60, 35, 30, 0);
    Arc(whole.get(), 0, 0, 60, 70, 60, 35, 60, 35);
    EXPECT_TRUE(quarter.Pixels() == ArcBy(L"DrawArcByAngleSweep", 0, 90));
    EXPECT_TRUE(whole.Pixels() == ArcBy(L"DrawArcByAngleSweep", 0, 360));
    EXPECT_TRUE(ArcBy(L"DrawArcByAngle", 30, 120) == ArcBy(L"DrawArcByAngleSweep", 30, 90));
}

TEST(Shapes, ArcsReportWhatDoesNotFit) {
    const ReportRecorder recorder(Library());
    const std::vector<COLORREF> nothing = Canvas().Pixels();
    EXPECT_TRUE(nothing == ArcBy(L"DrawArcByAngle", -1e308, 1.7e308));
    EXPECT_TRUE(nothing == ArcBy(L"DrawArcByAngle", 1e308, 1.5e308));
    EXPECT_TRUE(nothing == ArcBy(L"DrawArcByAngleSweep", 1e308, 1.7e308));
    const wchar_t* const titles[] = {L"DrawArcByAngle", L"DrawArcByAngleSweep", L"DrawArcByAngleSweep"};
    ASSERT_EQ(3u, recorder.reports().size());
    for (std::size_t i = 0; i < 3; ++i) {
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
            shape.Checked(canvas, member.c_str(), {Arg(context), Arg(0L), Arg(90L)});
        }
        shape.Set(L"PenStyle", 1000);
        shape.Draw(canvas);
    }
    EXPECT_TRUE(recorder.reports().empty());
}

TEST(Shapes, LinesLeaveTheCurrentPositionAtTheirEnd) {
    const Canvas canvas;
    Shape(kLine, 3, 4, 30, 40).Draw(canvas);
    POINT position{};
    GetCurrentPositionEx(canvas.get(), &position);
    EXPECT_EQ(std::pair(30L, 40L), std::pair(position.x, position.y));
}

TEST(Shapes, RefuseAPointerToNothing) {
    const auto line = CreateObject<_CGDILine>(__uuidof(::CGDILine));
    const auto arc = CreateObject<_CGDIArc>(__uuidof(::CGDIArc));
    EXPECT_EQ(E_POINTER, line->get_X1(nullptr));
    EXPECT_EQ(E_POINTER, line->put_PenStyle(nullptr));
    EXPECT_EQ(E_POINTER, line->Draw3DLine(nullptr, 0, 0));
    EXPECT_EQ(E_POINTER, arc->DrawArcByAngle(nullptr, 0, 90));
}

}  // namespace
}  // namespace velk::test
