// The sample of menus with icons in a system that Wine cannot be set to: menu_scene SCENE ARGUMENT... The scene is 0, a
// scheme of high contrast, or how many times as large the menu font is. The rest are the sample's arguments.
#include <cstdlib>
#include <iterator>

#include "support/client.h"
#include "support/import_patch.h"

int SampleMain(int count, char** arguments);

namespace {

constexpr INT kIndexes[] = {COLOR_MENU,          COLOR_MENUTEXT,    COLOR_MENUBAR, COLOR_GRAYTEXT, COLOR_HIGHLIGHT,
                            COLOR_HIGHLIGHTTEXT, COLOR_MENUHILIGHT, COLOR_WINDOW,  COLOR_3DFACE};
constexpr COLORREF kContrast[] = {RGB(0, 0, 0), RGB(255, 255, 255), RGB(0, 0, 0), RGB(63, 242, 63), RGB(26, 235, 255),
                                  RGB(0, 0, 0), RGB(26, 235, 255),  RGB(0, 0, 0), RGB(0, 0, 0)};

int scene;

BOOL WINAPI Parameter(UINT action, UINT number, void* value, UINT flags) {
    const BOOL read = SystemParametersInfoA(action, number, value, flags);
    if (action == SPI_GETHIGHCONTRAST && scene == 0) static_cast<HIGHCONTRASTA*>(value)->dwFlags = HCF_HIGHCONTRASTON;
    if (action == SPI_GETNONCLIENTMETRICS && scene > 0)
        static_cast<NONCLIENTMETRICSA*>(value)->lfMenuFont.lfHeight *= scene;
    return read;
}

}  // namespace

int main(int count, char** arguments) {
    if (count < 2) return 1;
    scene = std::atoi(arguments[1]);
    constexpr int kColours = std::size(kIndexes);
    COLORREF before[kColours];
    for (int i = 0; i < kColours; ++i) before[i] = GetSysColor(kIndexes[i]);
    if (scene == 0) SetSysColors(kColours, kIndexes, kContrast);
    const velk::test::ImportPatch patch(velk::test::Library(), "SystemParametersInfoA",
                                        reinterpret_cast<void*>(&Parameter));
    const int result = SampleMain(count - 1, arguments + 1);
    SetSysColors(kColours, kIndexes, before);
    return result;
}
