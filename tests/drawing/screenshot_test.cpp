// Captures of real windows on the virtual screen, read back from the clipboard.
#include <gtest/gtest.h>

#include <array>
#include <string>

#include "platform/drawing_handles.h"
#include "support/client.h"
#include "support/fake.h"
#include "support/gdi_objects.h"
#include "support/import_patch.h"
#include "support/late_bound.h"
#include "support/own_process.h"
#include "support/test_window.h"

#include <dwmapi.h>

namespace velk::test {
namespace {

constexpr COLORREF kRed = 0x0000FF, kBlue = 0xFF0000;
using Size = std::pair<LONG, LONG>;

// The bitmap on the clipboard, open for reading.
class Pasted {
  public:
    Pasted() {
        EXPECT_TRUE(OpenClipboard(nullptr));
        const HANDLE bitmap = GetClipboardData(CF_BITMAP);
        GetObjectW(bitmap, sizeof size_, &size_);
        if (bitmap) previous_ = SelectObject(context_.get(), bitmap);
    }
    ~Pasted() {
        if (previous_) SelectObject(context_.get(), previous_);
        CloseClipboard();
    }
    Size size() const { return {size_.bmWidth, size_.bmHeight}; }
    // On either side of a line between red and blue.
    void ExpectEdge(int x, int y) const {
        EXPECT_EQ(kRed, GetPixel(context_.get(), x - 1, y)) << x << ' ' << y;
        EXPECT_EQ(kBlue, GetPixel(context_.get(), x, y)) << x << ' ' << y;
    }
    COLORREF At(int x, int y) const { return GetPixel(context_.get(), x, y); }

  private:
    BITMAP size_{};
    const CreatedContext context_{CreateCompatibleDC(nullptr)};
    HGDIOBJ previous_ = nullptr;
};

FileHandle HeldEvent() { return FileHandle(CreateEventW(nullptr, TRUE, FALSE, L"VelkTestClipboardHeld")); }
FileHandle LetGoEvent() { return FileHandle(CreateEventW(nullptr, TRUE, FALSE, L"VelkTestClipboardLetGo")); }

TEST(OtherProgram, DISABLED_ReadsTheClipboard) { Pasted().ExpectEdge(100, 50); }

TEST(OtherProgram, DISABLED_HoldsTheClipboard) {
    ASSERT_TRUE(OpenClipboard(nullptr));
    SetEvent(HeldEvent().get());
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(LetGoEvent().get(), 30'000));
    CloseClipboard();
}

// A window without a frame, its left half red and its right half blue.
struct TwoColours : TestWindow {
    TwoColours(int left, int top, int width, int height) : TestWindow(WS_POPUP, &Paint) {
        SetWindowPos(get(), HWND_TOPMOST, left, top, width, height, SWP_SHOWWINDOW);
        UpdateWindow(get());
        PumpMessages();
        DwmFlush();  // a compositor has shown it
    }
    static std::optional<LRESULT> Paint(HWND window, UINT message, WPARAM, LPARAM) {
        if (message != WM_PAINT) return std::nullopt;
        PAINTSTRUCT paint;
        const HDC context = BeginPaint(window, &paint);
        RECT half;
        GetClientRect(window, &half);
        const LONG middle = half.right / 2;
        for (const COLORREF colour : {kBlue, kRed}) {
            const GdiObject brush(CreateSolidBrush(colour));
            FillRect(context, &half, static_cast<HBRUSH>(brush.get()));
            half.right = middle;
        }
        EndPaint(window, &paint);
        return 0;
    }
};

class Screenshot : public testing::Test {
  protected:
    Screenshot() { EmptyTheClipboard(); }
    ~Screenshot() override { EmptyTheClipboard(); }

    static void EmptyTheClipboard() {
        EXPECT_TRUE(OpenClipboard(nullptr));
        EmptyClipboard();
        CloseClipboard();
    }
    void Capture(const wchar_t* member, std::initializer_list<VARIANT> arguments = {}) {
        EXPECT_EQ(S_OK, Call(object_.get(), member, arguments).result) << member;
    }
    void Fails(LONG code, const wchar_t* text, const wchar_t* member, std::initializer_list<VARIANT> arguments = {}) {
        const Outcome outcome = Call(object_.get(), member, arguments);
        EXPECT_EQ(DISP_E_EXCEPTION, outcome.result) << member;
        EXPECT_EQ(code, outcome.code) << member;
        EXPECT_EQ(text, outcome.description) << member;
        EXPECT_EQ(L"VelkSprt.CScreenshot", outcome.source) << member;
        EXPECT_EQ(0, CountClipboardFormats()) << member;
    }

    const Size screen_{GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)};
    ComPtr<IDispatch> object_ = CreateObject<IDispatch>(__uuidof(CScreenshot));
};

TEST_F(Screenshot, OfAWindowIsOneBitmapThatOtherProgramsRead) {
    const TwoColours window(30, 40, 200, 100);
    {
        std::string calls;
        const Fake open("OpenClipboard", &OpenClipboard,
                        [&](HWND owner) { return calls += owner ? "owned " : "open ", OpenClipboard(owner); });
        const Fake empty("EmptyClipboard", &EmptyClipboard, [&] { return calls += "empty ", EmptyClipboard(); });
        const Fake set("SetClipboardData", &SetClipboardData, [&](UINT format, HANDLE data) {
            return calls += "set" + std::to_string(format) + " ", SetClipboardData(format, data);
        });
        const Fake close("CloseClipboard", &CloseClipboard, [&] { return calls += "close ", CloseClipboard(); });
        const Fake remove("DeleteDC", &DeleteDC, [&](HDC gone) { return calls += "delete ", DeleteDC(gone); });
        const Fake release("ReleaseDC", &ReleaseDC, [&](HWND with, HDC context) {
            EXPECT_EQ(static_cast<DWORD>(OBJ_BITMAP), GetObjectType(with)) << "deliberately no window";
            return calls += "release ", ReleaseDC(with, context);
        });
        Capture(L"CaptureWindow", {Arg(window.handle())});
        EXPECT_EQ("open empty set2 close delete release ", calls);
    }
    {
        const Pasted pasted;
        EXPECT_EQ(Size(200, 100), pasted.size());
        for (int i = 0; i < 200 * 100; ++i) ASSERT_EQ(i % 200 < 100 ? kRed : kBlue, pasted.At(i % 200, i / 200)) << i;
        for (UINT format = EnumClipboardFormats(0); format != 0; format = EnumClipboardFormats(format)) {
            EXPECT_TRUE(format == CF_BITMAP || format == CF_DIB || format == CF_DIBV5) << "made of it: " << format;
        }
    }
    EXPECT_EQ(0u, OwnProcess(L"*ReadsTheClipboard").Ended());
}

TEST_F(Screenshot, ShowsWhatIsOnTheScreen) {
    const TwoColours below(100, 100, 200, 100), above(150, 120, 100, 40);
    const VARIANT width = Arg(screen_.first), height = Arg(screen_.second);
    SetActiveWindow(above.get());
    Capture(L"CaptureWindow", {Arg(below.handle())});
    EXPECT_EQ(Size(200, 100), Pasted().size());
    for (const auto& [x, y] : {std::pair{100, 19}, {100, 21}}) Pasted().ExpectEdge(x, y);
    EXPECT_EQ(kBlue, Pasted().At(149, 21)) << "of the upper one";
    EXPECT_EQ(kRed, Pasted().At(50, 21));
    Capture(L"CaptureDesktop");
    EXPECT_EQ(screen_, Pasted().size());
    Pasted().ExpectEdge(200, 159);
    Capture(L"CaptureActiveWindow");
    EXPECT_EQ(Size(100, 40), Pasted().size());
    Pasted().ExpectEdge(50, 39);
    Capture(L"CaptureRectangle", {Arg(190L), Arg(110L), Arg(20L), Arg(30L)});
    EXPECT_EQ(Size(20, 30), Pasted().size());
    Pasted().ExpectEdge(10, 10);
    const COLORREF onTheScreen = Departs("BitBlt") ? 0 : kRed;
    Capture(L"CaptureRectangle", {Arg(160L), Arg(130L), width, height});
    EXPECT_EQ(screen_, Pasted().size()) << "the far edges are not looked at";
    EXPECT_EQ(onTheScreen, Pasted().At(0, 0));
    const TwoColours beyond(-60, -10, 200, 100);
    Capture(L"CaptureWindow", {Arg(beyond.handle())});
    EXPECT_EQ(Size(200, 100), Pasted().size());
    EXPECT_EQ(onTheScreen, Pasted().At(60, 10));
}

BOOL WINAPI NoRectangle(HWND, RECT*) { return FALSE; }
BOOL WINAPI HugeRectangle(HWND, RECT* rectangle) { return *rectangle = {-2, 0, 0x7FFFFFFF, 10}, TRUE; }

TEST_F(Screenshot, SaysWhatIsWrong) {
    const VARIANT zero = Arg(0L), ten = Arg(10L), below = Arg(-1L);
    const VARIANT tooWide = Arg(screen_.first + 1), tooHigh = Arg(screen_.second + 1);
    const std::array<VARIANT, 4> outside[] = {
        {below, zero, ten, ten}, {zero, below, ten, ten}, {zero, zero, tooWide, ten}, {zero, zero, ten, tooHigh}};
    for (const auto& [left, top, width, height] : outside) {
        Fails(eErrScreenshot_InvalidCoordinates, L"Invalid screen coordinates", L"CaptureRectangle",
              {left, top, width, height});
    }
    for (const auto& [width, height] : {std::pair{below, ten}, {ten, below}, {zero, zero}}) {
        Capture(L"CaptureRectangle", {zero, zero, width, height});  // not looked at, and no bitmap
        EmptyTheClipboard();
    }
    Fails(eErrScreenshot_NoActiveWindow, L"No active window for the calling thread", L"CaptureActiveWindow");
    TwoColours window(0, 0, 20, 20);
    const VARIANT handle = Arg(window.handle());
    {
        const ImportPatch patch(Library(), "GetWindowRect", reinterpret_cast<void*>(&NoRectangle));
        Fails(eErrScreenshot_CantGetWindowRect, L"Could not get window rect", L"CaptureWindow", {handle});
    }
    {
        const ImportPatch patch(Library(), "GetWindowRect", reinterpret_cast<void*>(&HugeRectangle));
        Fails(eErrScreenshot_ComponentFailure, L"CScreenshot component failure", L"CaptureDesktop");
    }
    window.Destroy();
    for (const VARIANT& gone : {handle, zero}) {
        Fails(eErrScreenshot_InvalidWindowHandle, L"Invalid window handle", L"CaptureWindow", {gone});
    }
}

TEST_F(Screenshot, KeepsOneDisplayContextACaptureAndNothingElse) {
    const auto captureFive = [&] {
        for (int i = 0; i < 5; ++i) Capture(L"CaptureDesktop");
        return GdiObjects();
    };
    captureFive();
    int cost = -GdiObjects();
    const CreatedContext display(CreateDCA("DISPLAY", "", "", nullptr));
    cost += GdiObjects();
    const int before = GdiObjects();
    EXPECT_EQ(before + 5 * cost, captureFive()) << "the former bitmap goes with the clipboard's former content";
    const FileHandle held = HeldEvent(), letGo = LetGoEvent();
    const OwnProcess holder(L"*HoldsTheClipboard");
    ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(held.get(), 30'000));
    EXPECT_EQ(before + 10 * cost, captureFive()) << "a bitmap that the clipboard does not take is deleted";
    SetEvent(letGo.get());
    EXPECT_EQ(0u, holder.Ended());
    EXPECT_EQ(screen_, Pasted().size()) << "what was there before stays";
}

}  // namespace
}  // namespace velk::test
