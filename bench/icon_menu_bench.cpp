// What a user waits for when a menu of 200 items opens: drawn with icons against drawn by the platform. Also the two
// messages that each item costs, for the share that is this library's own.
#include <cstdio>

#include "ratio.h"
#include "support/test_hook.h"
#include "support/test_window.h"

#include <commctrl.h>

namespace {

using namespace velk;

constexpr UINT kItems = 200;

HMENU MakeMenu() {
    const HMENU menu = CreatePopupMenu();
    for (UINT i = 1; i <= kItems; ++i) {
        const std::wstring text = L"Item number &" + std::to_wstring(i) + L"\tCtrl+" + std::to_wstring(i);
        AppendMenuW(menu, MF_STRING | (i % 9 ? MF_ENABLED : MF_GRAYED) | (i % 7 ? 0 : MF_CHECKED), i, text.c_str());
    }
    return menu;
}

// Shows the menu and closes it as soon as it waits for input.
void OpenOnce(HMENU menu, HWND window) { TrackPopupMenu(menu, TPM_RETURNCMD, 5, 5, 0, window, nullptr); }

std::optional<LRESULT> CloseWhenShown(HWND, UINT message, WPARAM, LPARAM) {
    if (message != WM_ENTERIDLE) return std::nullopt;
    EndMenu();
    return 0;
}

HIMAGELIST MakeImages() {
    const HIMAGELIST images = ImageList_Create(16, 16, ILC_COLOR32 | ILC_MASK, 1, 1);
    ImageList_AddIcon(images, LoadIconW(nullptr, IDI_INFORMATION));
    return images;
}

// The messages of one opening without a window on the screen: nothing but measuring and drawing.
double MessagesOf(HMENU menu, HWND window, HDC canvas) {
    return bench::TimeOf([&] {
        SendMessageW(window, WM_INITMENUPOPUP, reinterpret_cast<WPARAM>(menu), 0);
        for (UINT i = 0; i < kItems; ++i) {
            MENUITEMINFOW info{};
            info.cbSize = sizeof info;
            info.fMask = MIIM_DATA | MIIM_ID;
            GetMenuItemInfoW(menu, i, TRUE, &info);
            MEASUREITEMSTRUCT measured{ODT_MENU, 0, info.wID, 0, 0, info.dwItemData};
            SendMessageW(window, WM_MEASUREITEM, 0, reinterpret_cast<LPARAM>(&measured));
            DRAWITEMSTRUCT drawn{};
            drawn.CtlType = ODT_MENU;
            drawn.itemID = info.wID;
            drawn.hwndItem = reinterpret_cast<HWND>(menu);
            drawn.hDC = canvas;
            drawn.rcItem = {0, 0, static_cast<LONG>(measured.itemWidth), static_cast<LONG>(measured.itemHeight)};
            drawn.itemData = info.dwItemData;
            SendMessageW(window, WM_DRAWITEM, 0, reinterpret_cast<LPARAM>(&drawn));
        }
        SendMessageW(window, WM_EXITMENULOOP, 0, 0);
    });
}

}  // namespace

int main() {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    const test::HookLibrary library;
    test::TestWindow ours(WS_OVERLAPPEDWINDOW | WS_VISIBLE, &CloseWhenShown);
    test::TestWindow peer(WS_OVERLAPPEDWINDOW | WS_VISIBLE, &CloseWhenShown);
    const auto icons = test::CreateObject<_cIconMenu>(__uuidof(::cIconMenu));
    const HIMAGELIST images = MakeImages();
    icons->put_ImageList(HandleToLong(images));
    for (LONG i = 1; i <= static_cast<LONG>(kItems); ++i) icons->put_CommandImage(i, 0);
    if (FAILED(icons->Attach(ours.handle()))) return 1;
    const HMENU menu = MakeMenu();
    const auto times = bench::MedianTimes<31>([&] { OpenOnce(menu, ours.get()); }, [&] { OpenOnce(menu, peer.get()); });
    const bool met = bench::Report("open 200 items", times[0], times[1], 1 / 1.5);

    const HDC screen = GetDC(nullptr), canvas = CreateCompatibleDC(screen);
    const HGDIOBJ before = SelectObject(canvas, CreateCompatibleBitmap(screen, 400, 40));
    const auto messages = bench::MedianTimes<31>([&] { return MessagesOf(menu, ours.get(), canvas); });
    std::printf("%-28s ours %10.1f ns an item\n", "measure and draw", messages[0] / kItems);
    DeleteObject(SelectObject(canvas, before));
    DeleteDC(canvas);
    ReleaseDC(nullptr, screen);
    icons->Detach();
    DestroyMenu(menu);
    ImageList_Destroy(images);
    return met ? 0 : 1;
}
