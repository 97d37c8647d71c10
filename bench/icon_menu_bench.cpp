// What a user waits for when a menu of 200 items opens: drawn with icons, against drawn by the platform.
#include <optional>
#include <string>

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

}  // namespace

int main() {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    const auto library = test::HookLibrary();
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
    icons->Detach();
    DestroyMenu(menu);
    ImageList_Destroy(images);
    return met ? 0 : 1;
}
