#include "drawing/screenshot.h"

#include "drawing/screenshot_errors.idl.h"
#include "platform/drawing_handles.h"
#include "platform/long_handles.h"
#include "platform/whole_numbers.h"

namespace velk {
namespace {

constexpr ClassError kInvalidWindowHandle{eErrScreenshot_InvalidWindowHandle, L"Invalid window handle"};
constexpr ClassError kInvalidCoordinates{eErrScreenshot_InvalidCoordinates, L"Invalid screen coordinates"};
constexpr ClassError kCantGetWindowRect{eErrScreenshot_CantGetWindowRect, L"Could not get window rect"};
constexpr ClassError kNoActiveWindow{eErrScreenshot_NoActiveWindow, L"No active window for the calling thread"};

struct ScreenArea {
    LONG left;
    LONG top;
    LONG width;
    LONG height;
};

// Whether the clipboard took the bitmap. Every step is tried whatever became of the one before.
bool PutOnClipboard(HBITMAP bitmap) noexcept {
    OpenClipboard(nullptr);
    EmptyClipboard();
    const bool taken = SetClipboardData(CF_BITMAP, bitmap) != nullptr;
    CloseClipboard();
    return taken;
}

// There is no bitmap of a negative size; not all versions of the platform survive being asked for one.
HBITMAP MakeBitmap(HDC display, const ScreenArea& area) noexcept {
    return area.width < 0 || area.height < 0 ? nullptr : CreateCompatibleBitmap(display, area.width, area.height);
}

// Nothing is checked: what cannot be had does not arrive. The display's context is given to ReleaseDC, deliberately,
// although it was created: the platform keeps it until the process ends.
void CaptureToClipboard(const ScreenArea& area) noexcept {
    const HDC display = CreateDCA("DISPLAY", "", "", nullptr);
    CreatedContext memory(CreateCompatibleDC(display));
    const HBITMAP bitmap = MakeBitmap(display, area);
    SelectObject(memory.get(), bitmap);  // stays selected until the context is deleted
    BitBlt(memory.get(), 0, 0, area.width, area.height, display, area.left, area.top, SRCCOPY);
    const GdiObject refused(PutOnClipboard(bitmap) ? nullptr : bitmap);
    memory = CreatedContext();
    ReleaseDC(reinterpret_cast<HWND>(bitmap), display);  // on purpose, as above
}

void Capture(HWND window) {
    if (!IsWindow(window)) throw kInvalidWindowHandle;
    RECT frame;
    if (!GetWindowRect(window, &frame)) throw kCantGetWindowRect;
    const LONG width = SubtractLong(frame.right, frame.left);
    const LONG height = SubtractLong(frame.bottom, frame.top);
    CaptureToClipboard({frame.left, frame.top, width, height});
}

// Neither the far edges nor negative sizes are looked at, deliberately.
void CheckOnScreen(const ScreenArea& area) {
    const LONG width = GetSystemMetrics(SM_CXSCREEN), height = GetSystemMetrics(SM_CYSCREEN);
    const bool valid = area.left >= 0 && area.top >= 0 && area.width <= width && area.height <= height;
    if (!valid) throw kInvalidCoordinates;
}

}  // namespace

constinit const ClassInfo CScreenshot::kInfo{
    .name = L"CScreenshot",
    .clsid = __uuidof(::CScreenshot),
    .iid = __uuidof(_CScreenshot),
    .policy = FailurePolicy::ComponentFailure,
    .componentFailure = eErrScreenshot_ComponentFailure,
};

STDMETHODIMP CScreenshot::CaptureActiveWindow() noexcept {
    return Guard([&] {
        const HWND active = GetActiveWindow();
        if (!active) throw kNoActiveWindow;
        Capture(active);
    });
}

STDMETHODIMP CScreenshot::CaptureDesktop() noexcept {
    return Guard([&] { Capture(GetDesktopWindow()); });
}

STDMETHODIMP CScreenshot::CaptureRectangle(LONG* Left, LONG* Top, LONG* Width, LONG* Height) noexcept {
    return Guard([&] {
        const ScreenArea area{Given(Left), Given(Top), Given(Width), Given(Height)};
        CheckOnScreen(area);
        CaptureToClipboard(area);
    });
}

STDMETHODIMP CScreenshot::CaptureWindow(LONG* hWnd) noexcept {
    return Guard([&] { Capture(WindowFrom(Given(hWnd))); });
}

}  // namespace velk
