// A window with a real menu bar whose menus have icons.
//
// Finds both libraries through its manifest. `icon_menu.exe file` (or edit, view) opens that menu at once;
// `icon_menu.exe file 2` also presses the arrow key down twice, `icon_menu.exe file 5 right` then the one to the right.
#include <windows.h>

#include <commctrl.h>
#include <ole2.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "velksprt.h"

namespace {

enum Command : UINT {
    kNew = 1,
    kOpen,
    kSave,
    kPrint,
    kExit,
    kReport,
    kLetter,
    kUndo,
    kCut,
    kCopy,
    kPaste,
    kDelete,
    kToolbar,
    kStatus,
    kSmall,
    kMedium,
    kLarge,
    kZoom,
    kWarning
};

// ---- Icons: shapes on a 16 x 16 grid, drawn smoothly at any size ----

struct Point {
    double x, y;
};
struct Shape {
    std::uint32_t colour;  // 0xRRGGBB
    std::vector<Point> outline;
};
using Icon = std::vector<Shape>;

constexpr std::uint32_t kInk = 0x3A4A5E, kPaper = 0xFFFFFF, kBlue = 0x2F74C0, kYellow = 0xF2B632, kGreen = 0x3C9A5F,
                        kRed = 0xC8453B, kGrey = 0x9AA7B5;

Shape Rectangle(std::uint32_t colour, double left, double top, double right, double bottom) {
    return {colour, {{left, top}, {right, top}, {right, bottom}, {left, bottom}}};
}

Shape Disc(std::uint32_t colour, double x, double y, double radius) {
    Shape disc{colour, {}};
    for (int i = 0; i < 32; ++i) {
        const double angle = i * 3.14159265 / 16;
        disc.outline.push_back({x + radius * std::cos(angle), y + radius * std::sin(angle)});
    }
    return disc;
}

std::vector<Icon> Icons() {
    const Shape page{kInk, {{3, 1}, {10, 1}, {13, 4}, {13, 15}, {3, 15}}};
    const Shape inside{kPaper, {{4, 2}, {9.5, 2}, {12, 4.5}, {12, 14}, {4, 14}}};
    const auto lines = [](Icon icon, std::uint32_t colour) {
        for (const double y : {6.0, 8.5, 11.0}) icon.push_back(Rectangle(colour, 5.5, y, 10.5, y + 1));
        return icon;
    };
    return {
        {page, inside, {kGrey, {{9, 1.5}, {9, 5}, {12.5, 5}}}},
        {{kYellow, {{1, 3}, {6, 3}, {7.5, 5}, {14, 5}, {14, 13}, {1, 13}}},
         {0xFFD977, {{3.5, 7}, {15.5, 7}, {13.5, 13.5}, {1, 13.5}}}},
        {Rectangle(kBlue, 1.5, 1.5, 14.5, 14.5), Rectangle(kPaper, 4, 1.5, 12, 7), Rectangle(kInk, 9, 2.5, 10.5, 6),
         Rectangle(0xD5E3F2, 3.5, 9, 12.5, 14.5)},
        {Rectangle(kPaper, 4, 1, 12, 7), Rectangle(kGrey, 4, 1, 12, 2), Rectangle(kInk, 1, 6, 15, 12),
         Rectangle(kPaper, 4, 10, 12, 15), Rectangle(kBlue, 5, 11.5, 11, 12.5), Disc(kGreen, 13, 8, 0.9)},
        lines({page, inside}, kBlue),
        {Rectangle(kInk, 1, 3, 15, 13),
         Rectangle(kPaper, 2, 4, 14, 12),
         {kRed, {{2, 4}, {8, 9}, {14, 4}, {14, 5.5}, {8, 10.5}, {2, 5.5}}}},
        {{kBlue,
          {{1, 6},
           {6, 1.5},
           {6, 4.5},
           {11, 4.5},
           {14.5, 8},
           {14.5, 11},
           {11, 14.5},
           {6, 14.5},
           {6, 12.5},
           {10, 12.5},
           {12.5, 10},
           {12.5, 9},
           {10, 7},
           {6, 7},
           {6, 10.5}}}},
        {{kGrey, {{4, 1}, {5.5, 1}, {11, 10}, {9.5, 11}}},
         {kGrey, {{12, 1}, {10.5, 1}, {5, 10}, {6.5, 11}}},
         Disc(kRed, 4.5, 12.5, 2.5),
         Disc(kPaper, 4.5, 12.5, 1.1),
         Disc(kRed, 11.5, 12.5, 2.5),
         Disc(kPaper, 11.5, 12.5, 1.1)},
        {Rectangle(kInk, 2, 1, 10, 12), Rectangle(kPaper, 3, 2, 9, 11), Rectangle(kInk, 6, 5, 14, 15.5),
         Rectangle(kPaper, 7, 6, 13, 14.5), Rectangle(kBlue, 8, 8, 12, 9), Rectangle(kBlue, 8, 10.5, 12, 11.5)},
        {Rectangle(0xB98345, 2, 2, 13, 15), Rectangle(kInk, 5, 1, 10, 4), Rectangle(kInk, 6, 6, 15, 15.5),
         Rectangle(kPaper, 7, 7, 14, 14.5), Rectangle(kBlue, 8, 9, 13, 10), Rectangle(kBlue, 8, 11.5, 13, 12.5)},
        {{kRed,
          {{2, 4}, {4, 2}, {8, 6}, {12, 2}, {14, 4}, {10, 8}, {14, 12}, {12, 14}, {8, 10}, {4, 14}, {2, 12}, {6, 8}}}},
        {Disc(kInk, 6.5, 6.5, 5.5),
         Disc(0xD5E3F2, 6.5, 6.5, 4),
         {kInk, {{9.5, 11}, {11, 9.5}, {15, 13.5}, {13.5, 15}}}},
        {Rectangle(kInk, 1, 2, 15, 14), Rectangle(kPaper, 2, 6, 14, 13), Rectangle(kBlue, 2, 3, 14, 5.5)},
        {Rectangle(kInk, 1, 2, 15, 14), Rectangle(kPaper, 2, 3, 14, 10.5), Rectangle(kGreen, 2, 11.5, 14, 13)},
    };
}
enum Image : LONG {
    kImageNew,
    kImageOpen,
    kImageSave,
    kImagePrint,
    kImageText,
    kImageMail,
    kImageUndo,
    kImageCut,
    kImageCopy,
    kImagePaste,
    kImageDelete,
    kImageZoom,
    kImageToolbar,
    kImageStatus
};

bool Inside(const std::vector<Point>& outline, double x, double y) {
    bool inside = false;
    for (std::size_t i = 0, j = outline.size() - 1; i < outline.size(); j = i++) {
        const Point &a = outline[i], &b = outline[j];
        if ((a.y > y) != (b.y > y) && x < (b.x - a.x) * (y - a.y) / (b.y - a.y) + a.x) inside = !inside;
    }
    return inside;
}

// One pixel with its coverage as alpha, from 4 x 4 samples.
std::uint32_t PixelOf(const Icon& icon, int column, int row, double scale) {
    double red = 0, green = 0, blue = 0, covered = 0;
    for (int sample = 0; sample < 16; ++sample) {
        const double x = (column + (sample % 4 + 0.5) / 4) * scale, y = (row + (sample / 4 + 0.5) / 4) * scale;
        const auto top =
            std::find_if(icon.rbegin(), icon.rend(), [&](const Shape& s) { return Inside(s.outline, x, y); });
        if (top == icon.rend()) continue;
        red += top->colour >> 16 & 0xFF;
        green += top->colour >> 8 & 0xFF;
        blue += top->colour & 0xFF;
        ++covered;
    }
    if (covered == 0) return 0;
    const auto part = [&](double sum) { return static_cast<std::uint32_t>(sum / covered); };
    return static_cast<std::uint32_t>(covered * 255 / 16) << 24 | part(red) << 16 | part(green) << 8 | part(blue);
}

HICON MakeIcon(const Icon& icon, int side) {
    BITMAPINFO description{};
    description.bmiHeader = {sizeof(BITMAPINFOHEADER), side, -side, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void* bits = nullptr;
    const HBITMAP colours = CreateDIBSection(nullptr, &description, DIB_RGB_COLORS, &bits, nullptr, 0);
    const HBITMAP mask = CreateBitmap(side, side, 1, 1, std::vector<char>(side * ((side + 15) / 16 * 2)).data());
    for (int row = 0; row < side; ++row) {
        for (int column = 0; column < side; ++column) {
            static_cast<std::uint32_t*>(bits)[row * side + column] = PixelOf(icon, column, row, 16.0 / side);
        }
    }
    ICONINFO info{TRUE, 0, 0, mask, colours};
    const HICON made = CreateIconIndirect(&info);
    DeleteObject(colours);
    DeleteObject(mask);
    return made;
}

HIMAGELIST MakeImages(int side) {
    const HIMAGELIST images = ImageList_Create(side, side, ILC_COLOR32 | ILC_MASK, 16, 4);
    for (const Icon& icon : Icons()) {
        const HICON made = MakeIcon(icon, side);
        ImageList_AddIcon(images, made);
        DestroyIcon(made);
    }
    return images;
}

// ---- The menus, made as any program makes them ----

HMENU MakeMenu(std::initializer_list<std::pair<UINT, const wchar_t*>> items) {
    const HMENU menu = CreatePopupMenu();
    for (const auto& [command, text] : items) AppendMenuW(menu, text ? MF_STRING : MF_SEPARATOR, command, text);
    return menu;
}

HMENU sendTo;

HMENU MakeBar() {
    sendTo = MakeMenu({{kReport, L"&Report"}, {kLetter, L"&Letter"}});
    const HMENU file = MakeMenu({{kNew, L"&New\tCtrl+N"},
                                 {kOpen, L"&Open...\tCtrl+O"},
                                 {kSave, L"&Save\tCtrl+S"},
                                 {0, nullptr},
                                 {kPrint, L"&Print...\tCtrl+P"},
                                 {0, nullptr},
                                 {kExit, L"E&xit\tAlt+F4"}});
    InsertMenuW(file, 5, MF_BYPOSITION | MF_POPUP, reinterpret_cast<UINT_PTR>(sendTo), L"Sen&d to");
    const HMENU edit = MakeMenu({{kUndo, L"&Undo\tCtrl+Z"},
                                 {0, nullptr},
                                 {kCut, L"Cu&t\tCtrl+X"},
                                 {kCopy, L"&Copy\tCtrl+C"},
                                 {kPaste, L"&Paste\tCtrl+V"},
                                 {kDelete, L"&Delete\tDel"}});
    const HMENU view = MakeMenu({{kToolbar, L"&Toolbar"},
                                 {kStatus, L"&Status bar"},
                                 {kWarning, L"&Warnings"},
                                 {0, nullptr},
                                 {kSmall, L"S&mall"},
                                 {kMedium, L"M&edium"},
                                 {kLarge, L"&Large"},
                                 {0, nullptr},
                                 {kZoom, L"&Zoom...\tF7"}});
    SetMenuDefaultItem(file, kOpen, FALSE);
    EnableMenuItem(edit, kUndo, MF_GRAYED);
    EnableMenuItem(edit, kPaste, MF_GRAYED);
    CheckMenuItem(view, kToolbar, MF_CHECKED);
    CheckMenuItem(view, kWarning, MF_CHECKED);
    CheckMenuRadioItem(view, kSmall, kLarge, kMedium, MF_BYCOMMAND);
    const HMENU bar = CreateMenu();
    AppendMenuW(bar, MF_POPUP, reinterpret_cast<UINT_PTR>(file), L"&File");
    AppendMenuW(bar, MF_POPUP, reinterpret_cast<UINT_PTR>(edit), L"&Edit");
    AppendMenuW(bar, MF_POPUP, reinterpret_cast<UINT_PTR>(view), L"&View");
    return bar;
}

// ---- Keys that are pressed for the user, once the menu is open ----

int presses;
bool pressRight;

void PressKeys(HWND window) {
    for (int i = 0; i < presses; ++i) PostMessageW(window, WM_KEYDOWN, VK_DOWN, 1);
    if (pressRight) PostMessageW(window, WM_KEYDOWN, VK_RIGHT, 1);
}

// ---- Each screen's density: the menus follow it by themselves, the image list has to be one of the right size ----

_cIconMenu* icons;
HIMAGELIST images;

// Windows 10 knows these two; before it all screens have the system's density.
template <class Function>
Function* UserFunction(const char* name) {
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"user32.dll"), name)));
}

void MindDensities() {
    const auto set = UserFunction<BOOL WINAPI(HANDLE)>("SetProcessDpiAwarenessContext");
    const HANDLE perMonitor = LongToHandle(-4);          // DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE_V2
    if (!set || !set(perMonitor)) SetProcessDPIAware();  // or the system would show 96 dots per inch everywhere
}

void UseImages(HWND window) {
    const auto density = UserFunction<UINT WINAPI(HWND)>("GetDpiForWindow");
    const int side = density ? MulDiv(16, static_cast<int>(density(window)), 96) : GetSystemMetrics(SM_CXSMICON);
    const HIMAGELIST before = images;
    images = MakeImages(side);
    icons->put_ImageList(HandleToLong(images));
    ImageList_Destroy(before);
}

LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    constexpr UINT kDensityChanged = 0x02E0;  // WM_DPICHANGED
    if (message == kDensityChanged) UseImages(window);
    if (message == WM_COMMAND && LOWORD(wParam) == kExit) return DestroyWindow(window);
    if (message == WM_COMMAND && (LOWORD(wParam) == kToolbar || LOWORD(wParam) == kStatus)) {
        const UINT state = GetMenuState(GetMenu(window), LOWORD(wParam), MF_BYCOMMAND);
        CheckMenuItem(GetMenu(window), LOWORD(wParam), state & MF_CHECKED ? MF_UNCHECKED : MF_CHECKED);
    }
    if (message == WM_TIMER && KillTimer(window, wParam)) PressKeys(window);
    if (message == WM_DESTROY) PostQuitMessage(0);
    return DefWindowProcW(window, message, wParam, lParam);
}

// ---- The icons: this is all that a program has to do ----

bool AttachIcons(HWND window) {
    CLSID clsid;
    if (FAILED(CLSIDFromProgID(L"VelkSupport.cIconMenu", &clsid)) ||
        FAILED(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, __uuidof(_cIconMenu),
                                reinterpret_cast<void**>(&icons)))) {
        return false;
    }
    UseImages(window);
    const std::pair<LONG, LONG> commands[] = {
        {kNew, kImageNew},         {kOpen, kImageOpen},     {kSave, kImageSave},     {kPrint, kImagePrint},
        {kReport, kImageText},     {kLetter, kImageMail},   {kUndo, kImageUndo},     {kCut, kImageCut},
        {kCopy, kImageCopy},       {kPaste, kImagePaste},   {kDelete, kImageDelete}, {kZoom, kImageZoom},
        {kToolbar, kImageToolbar}, {kStatus, kImageStatus},
    };
    for (const auto& [command, image] : commands) icons->put_CommandImage(command, image);
    icons->put_SubmenuImage(HandleToLong(sendTo), kImageMail);
    return SUCCEEDED(icons->Attach(HandleToLong(window)));
}

}  // namespace

int main(int count, char** arguments) {
    MindDensities();
    OleInitialize(nullptr);
    InitCommonControls();
    WNDCLASSW description{};
    description.lpfnWndProc = Procedure;
    description.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    description.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_WINDOW + 1);
    description.lpszClassName = L"IconMenuSample";
    RegisterClassW(&description);
    const HWND window = CreateWindowExW(0, L"IconMenuSample", L"Menus with icons", WS_OVERLAPPEDWINDOW, 10, 10, 520,
                                        420, nullptr, MakeBar(), nullptr, nullptr);
    if (!AttachIcons(window)) {
        MessageBoxW(nullptr, L"VelkSprt.dll and VelkSub.dll have to be beside this program.", L"Menus with icons",
                    MB_ICONSTOP);
        return 1;
    }
    ShowWindow(window, SW_SHOW);
    presses = count > 2 ? std::atoi(arguments[2]) : 0;
    pressRight = count > 3;
    if (count > 1) {
        PostMessageW(window, WM_SYSCOMMAND, SC_KEYMENU, arguments[1][0]);
        SetTimer(window, 1, 500, nullptr);
    }
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    icons->Release();
    ImageList_Destroy(images);
    OleUninitialize();
    return 0;
}
