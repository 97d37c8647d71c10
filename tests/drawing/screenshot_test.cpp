// Captures of real windows on the screen, read back from the real clipboard. What is asked of the platform for each
// capture is in screenshot.facts.
#include <gtest/gtest.h>

#include "platform/drawing_handles.h"
#include "support/client.h"
#include "support/departures.h"
#include "support/late_bound.h"
#include "support/test_window.h"

#include <dwmapi.h>

namespace velk::test {
namespace {

constexpr COLORREF kWhite = 0xFFFFFF;
constexpr int kWidth = 200, kHeight = 100;
constexpr RECT kDark{50, 20, 150, 60};  // in the white window

HWND Shown(DWORD style, int left, int top, int width, int height) {
    const HWND window = CreateWindowExW(WS_EX_TOPMOST, L"STATIC", nullptr, WS_POPUP | WS_VISIBLE | style, left, top,
                                        width, height, nullptr, nullptr, nullptr, nullptr);
    UpdateWindow(window);
    PumpMessages();
    DwmFlush();  // a compositor has shown it
    return window;
}

// The bitmap on the clipboard, open for reading.
class Pasted {
  public:
    Pasted() { GetObjectW(bitmap_, sizeof size_, &size_); }
    Pasted(const Pasted&) = delete;
    Pasted& operator=(const Pasted&) = delete;
    ~Pasted() { CloseClipboard(); }
    std::pair<LONG, LONG> size() const { return {size_.bmWidth, size_.bmHeight}; }
    COLORREF At(int x, int y) const { return GetPixel(context_.get(), x, y); }

  private:
    const BOOL opened_ = OpenClipboard(nullptr);
    const HANDLE bitmap_ = GetClipboardData(CF_BITMAP);
    const CreatedContext context_{CreateCompatibleDC(nullptr)};
    const SelectedObject selected_{context_.get(), bitmap_};
    BITMAP size_{};
};

TEST(OtherProgram, DISABLED_ReadsTheClipboard) {
    const Pasted pasted;
    EXPECT_EQ(std::pair(LONG{kWidth}, LONG{kHeight}), pasted.size());
    for (POINT at{}; at.x < kWidth; ++at.x) {
        for (at.y = 0; at.y < kHeight; ++at.y)
            ASSERT_EQ(!PtInRect(&kDark, at), pasted.At(at.x, at.y) == kWhite) << at.x << ' ' << at.y;
    }
    for (UINT format = EnumClipboardFormats(0); format != 0; format = EnumClipboardFormats(format))
        EXPECT_TRUE(format == CF_BITMAP || format == CF_DIB || format == CF_DIBV5) << "made of it: " << format;
}

TEST(Screenshot, ShowsWhatIsOnTheScreenToOtherProgramsToo) {
    const auto camera = CreateObject<IDispatch>(__uuidof(CScreenshot));
    const HWND white = Shown(SS_WHITERECT, 100, 100, kWidth, kHeight);
    const HWND dark =
        Shown(SS_BLACKRECT, 100 + kDark.left, 100 + kDark.top, kDark.right - kDark.left, kDark.bottom - kDark.top);
    EXPECT_EQ(S_OK, Call(camera.get(), L"CaptureWindow", {Arg(HandleToLong(white))}).result);
    EXPECT_EQ(0, RunAlone(L"*ReadsTheClipboard"));
    const LONG width = GetSystemMetrics(SM_CXSCREEN), height = GetSystemMetrics(SM_CYSCREEN);
    EXPECT_EQ(S_OK, Call(camera.get(), L"CaptureRectangle", {Arg(101L), Arg(101L), Arg(width), Arg(height)}).result);
    EXPECT_EQ(std::pair(width, height), Pasted().size()) << "the far edges are not looked at";
    EXPECT_EQ(Departs("BitBlt") ? 0 : kWhite, Pasted().At(0, 0));
    for (const HWND window : {dark, white}) DestroyWindow(window);
}

}  // namespace
}  // namespace velk::test
