// Captures of real windows on the screen, read back from the real clipboard.
#include <gtest/gtest.h>

#include <string>

#include "platform/drawing_handles.h"
#include "support/client.h"
#include "support/departures.h"
#include "support/late_bound.h"
#include "support/own_process.h"
#include "support/test_window.h"

#include <dwmapi.h>

namespace velk::test {
namespace {

constexpr COLORREF kWhite = 0xFFFFFF;
COLORREF dark;  // as the system draws it
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
    // On either side of a line between white and dark.
    void ExpectEdge(int x, int y) const {
        EXPECT_EQ(kWhite, At(x - 1, y)) << x << ' ' << y;
        EXPECT_EQ(dark, At(x, y)) << x << ' ' << y;
    }
    COLORREF At(int x, int y) const { return GetPixel(context_.get(), x, y); }

  private:
    BITMAP size_{};
    const CreatedContext context_{CreateCompatibleDC(nullptr)};
    HGDIOBJ previous_ = nullptr;
};

TEST(OtherProgram, DISABLED_ReadsTheClipboard) {
    const Pasted pasted;
    EXPECT_EQ(kWhite, pasted.At(99, 50));
    EXPECT_NE(kWhite, pasted.At(100, 50));
}

// A window without a frame, its left half white and its right half dark.
HWND TwoColours(int left, int top, int width, int height) {
    const HWND window = CreateWindowExW(WS_EX_TOPMOST, L"STATIC", nullptr, WS_POPUP | WS_VISIBLE | SS_WHITERECT, left,
                                        top, width, height, nullptr, nullptr, nullptr, nullptr);
    const HWND half = CreateWindowExW(0, L"STATIC", nullptr, WS_CHILD | WS_VISIBLE | SS_BLACKRECT, width / 2, 0,
                                      width / 2, height, window, nullptr, nullptr, nullptr);
    RedrawWindow(window, nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
    PumpMessages();
    DwmFlush();  // a compositor has shown it
    const HDC own = GetDC(half);
    dark = GetPixel(own, 1, 1);
    ReleaseDC(half, own);
    EXPECT_NE(kWhite, dark);
    return window;
}

TEST(Screenshot, ShowsWhatIsOnTheScreenToOtherProgramsToo) {
    const auto camera = CreateObject<IDispatch>(__uuidof(CScreenshot));
    const auto capture = [&](const wchar_t* member, std::initializer_list<VARIANT> arguments = {}) {
        EXPECT_EQ(S_OK, Call(camera.get(), member, arguments).result) << member;
    };
    const Size screen{GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)};
    const VARIANT zero = Arg(0L), ten = Arg(10L), width = Arg(screen.first), height = Arg(screen.second);
    const HWND below = TwoColours(100, 100, 200, 100);
    capture(L"CaptureWindow", {Arg(HandleToLong(below))});
    {
        const Pasted pasted;
        EXPECT_EQ(Size(200, 100), pasted.size());
        for (int i = 0; i < 200 * 100; ++i) ASSERT_EQ(i % 200 < 100 ? kWhite : dark, pasted.At(i % 200, i / 200)) << i;
        for (UINT format = EnumClipboardFormats(0); format != 0; format = EnumClipboardFormats(format)) {
            EXPECT_TRUE(format == CF_BITMAP || format == CF_DIB || format == CF_DIBV5) << "made of it: " << format;
        }
    }
    EXPECT_EQ(0u, OwnProcess(L"*ReadsTheClipboard").Ended());

    const HWND above = TwoColours(150, 120, 100, 40);
    SetActiveWindow(above);
    capture(L"CaptureWindow", {Arg(HandleToLong(below))});
    for (const auto& [x, y] : {std::pair{100, 19}, {100, 21}}) Pasted().ExpectEdge(x, y);
    EXPECT_EQ(dark, Pasted().At(149, 21)) << "of the upper one";
    EXPECT_EQ(kWhite, Pasted().At(50, 21));
    capture(L"CaptureDesktop");
    EXPECT_EQ(screen, Pasted().size());
    Pasted().ExpectEdge(200, 159);
    capture(L"CaptureActiveWindow");
    EXPECT_EQ(Size(100, 40), Pasted().size());
    capture(L"CaptureRectangle", {Arg(190L), Arg(110L), Arg(20L), Arg(30L)});
    EXPECT_EQ(Size(20, 30), Pasted().size());
    Pasted().ExpectEdge(10, 10);
    capture(L"CaptureRectangle", {Arg(160L), Arg(130L), width, height});
    EXPECT_EQ(screen, Pasted().size()) << "the far edges are not looked at";
    EXPECT_EQ(Departs("BitBlt") ? 0 : kWhite, Pasted().At(0, 0));
    for (const auto& [across, down] : {std::pair{Arg(-1L), ten}, {ten, Arg(-1L)}}) {
        capture(L"CaptureRectangle", {zero, zero, across, down});
        EXPECT_EQ(Size(0, 0), Pasted().size()) << "there is no such bitmap";
    }
    for (const HWND window : {above, below}) DestroyWindow(window);
}

}  // namespace
}  // namespace velk::test
