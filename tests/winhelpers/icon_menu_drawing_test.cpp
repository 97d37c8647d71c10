// What cIconMenu draws, compared with committed pictures, and the icons that it is given.
#include <array>
#include <functional>
#include <map>
#include <optional>
#include <string>

#include "support/fake.h"
#include "support/heap.h"
#include "support/import_patch.h"
#include "support/late_bound.h"
#include "support/process_counts.h"
#include "winhelpers/menu_fixture.h"

#include <commctrl.h>

namespace velk::test {
namespace {

// Image 0 is red, image 1 blue; the lower quarter of both is transparent.
std::shared_ptr<_IMAGELIST> TwoImages(const wchar_t* file, int side) {
    const std::wstring path = PathOf(file);
    return {ImageList_LoadImageW(nullptr, path.c_str(), side, 0, kMagenta, IMAGE_BITMAP, LR_LOADFROMFILE),
            &ImageList_Destroy};
}

struct Settings {
    BOOL flat = TRUE;
    int density = 96;  // of the window's screen; the system says 96 to programs like this one
    LONG fontHeight = -9;
    bool contrast = false;  // a scheme of high contrast, white on black
};

// Colours that all differ, densities, and texts as bars that show their font by its height alone: in the usual one
// three pixels wide and seven high a character, in its bold one four and nine.
class StagedSystem {
  public:
    StagedSystem() { now = {}, asked = 0; }

    static inline Settings now;
    static inline int asked;  // how often for the non-client metrics

  private:
    static DWORD WINAPI Colour(int index) {
        static const std::map<int, std::array<COLORREF, 2>> kColours{
            {COLOR_MENU, {RGB(212, 208, 200), RGB(0, 0, 0)}},
            {COLOR_MENUTEXT, {RGB(0, 0, 0), RGB(255, 255, 255)}},
            {COLOR_GRAYTEXT, {RGB(128, 128, 128), RGB(0, 240, 0)}},
            {COLOR_MENUHILIGHT, {RGB(70, 130, 220), kMagenta}},
            {COLOR_HIGHLIGHT, {RGB(0, 90, 60), RGB(26, 235, 255)}},
            {COLOR_HIGHLIGHTTEXT, {RGB(255, 255, 255), RGB(55, 0, 110)}}};
        return kColours.contains(index) ? kColours.at(index)[now.contrast] : kMagenta;
    }
    static LONG WidthIn(HDC context) {
        LOGFONTW font{};
        GetObjectW(GetCurrentObject(context, OBJ_FONT), sizeof font, &font);
        return -font.lfHeight / 3 + (font.lfWeight >= FW_BOLD ? 1 : 0);
    }
    static BOOL WINAPI Metrics(HDC context, TEXTMETRICW* metrics) {
        metrics->tmAveCharWidth = WidthIn(context);
        metrics->tmHeight = 2 * metrics->tmAveCharWidth + 1;
        return TRUE;
    }
    static int WINAPI DrawBars(HDC context, LPCWSTR text, int length, RECT* place, UINT flags) {
        const LONG step = WidthIn(context), height = 2 * step + 1;
        LONG width = 0, underlined = -step;
        for (int i = 0; i < length; ++i, width += step) {
            if (text[i] == L'&' && !(flags & DT_NOPREFIX) && text[++i] != L'&') underlined = width;
        }
        if (flags & DT_CALCRECT) return place->right = place->left + width, height;
        const LONG left = flags & DT_RIGHT ? place->right - width : place->left;
        const bool centred = flags & DT_VCENTER && flags & DT_SINGLELINE;
        const LONG top = place->top + (centred ? (place->bottom - place->top - height) / 2 : 0), bottom = top + height;
        if (GetBkMode(context) == OPAQUE) Paint(context, kMagenta, {left, top, left + width, bottom});
        for (LONG x = 0; x < width; x += step) {
            const bool line = x == underlined && !(flags & DT_HIDEPREFIX);
            Paint(context, GetTextColor(context), {left + x, top, left + x + step - 1, bottom + (line ? 2 : 0)});
        }
        return height;
    }
    static UINT WINAPI DensityOf(HWND) { return static_cast<UINT>(now.density); }
    static BOOL WINAPI Parameter(UINT action, UINT number, void* value, UINT flags) {
        const BOOL read = SystemParametersInfoA(action, number, value, flags);
        if (action == SPI_GETFLATMENU) *static_cast<BOOL*>(value) = now.flat;
        if (action == SPI_GETHIGHCONTRAST)
            static_cast<HIGHCONTRASTA*>(value)->dwFlags = now.contrast ? HCF_HIGHCONTRASTON : 0;
        if (action != SPI_GETNONCLIENTMETRICS) return read;
        EXPECT_TRUE(read) << "a record of no size that the platform knows";
        ++asked;
        LOGFONTA& font = static_cast<NONCLIENTMETRICSA*>(value)->lfMenuFont;
        return font.lfHeight = now.fontHeight, font.lfWeight = FW_NORMAL, read;
    }

    const ImportPatch patches_[5]{{Library(), "GetDpiForWindow", Address(&DensityOf)},
                                  {Library(), "GetSysColor", Address(&Colour)},
                                  {Library(), "GetTextMetricsW", Address(&Metrics)},
                                  {Library(), "DrawTextW", Address(&DrawBars)},
                                  {Library(), "SystemParametersInfoA", Address(&Parameter)}};
};

class IconMenuDrawing : public IconMenuTest {
  protected:
    IconMenuDrawing() {
        icons_->put_ImageList(HandleToLong(images_.get()));
        for (const UINT position : {kOpen, kChecked, kDisabled}) icons_->put_CommandImage(CommandAt(position), 0);
        icons_->put_SubmenuImage(HandleToLong(more), 1);
        Open(menu);
    }
    // Such a list is refused, and CommandPicture is what 64-bit programs use.
    void SetUp() override {
        if (LongToHandle(HandleToLong(images_.get())) != images_.get())
            GTEST_SKIP() << "an image list no Long leads to";
    }
    void Reopen() { Close(), Open(menu); }

    // What could still be painted over afterwards becomes magenta. Gives the height.
    LONG Draw(const Sheet& sheet, LONG left, LONG top, UINT position, UINT state = 0) {
        const MenuItem item(menu, position);
        MEASUREITEMSTRUCT measured{ODT_MENU, 0, item.wID, 0, 0, item.dwItemData};
        EXPECT_EQ(TRUE, window_.Send(WM_MEASUREITEM, nullptr, &measured));
        const LONG added = -2 * MulDiv(system_.now.fontHeight, system_.now.density, 96) / 3;  // by the system
        const LONG height = static_cast<LONG>(measured.itemHeight),
                   asked = static_cast<LONG>(measured.itemWidth) + added;
        const LONG width = item.fType & MFT_SEPARATOR ? 90 : asked;  // separators take what the others need
        const RECT place{left, top, left + width, top + height};
        const int saved = SaveDC(sheet.get());
        const DRAWITEMSTRUCT drawn{ODT_MENU,    0,     item.wID,       0, state, reinterpret_cast<HWND>(menu),
                                   sheet.get(), place, item.dwItemData};
        EXPECT_EQ(TRUE, window_.Send(WM_DRAWITEM, nullptr, &drawn));
        Paint(sheet.get(), kMagenta, place);
        RestoreDC(sheet.get(), saved);
        return height;
    }

    static constexpr LONG kCommand = CommandAt(kOpen);
    StagedSystem system_;
    const std::shared_ptr<_IMAGELIST> images_ = TwoImages(L"images16.bmp", 16);
};

// An item a row, a state a column. Without a message the window comes to a screen of another density.
TEST_F(IconMenuDrawing, ShowsEachKindOfItemInEachState) {
    constexpr UINT kChosen = ODS_CHECKED | ODS_SELECTED, kGrey = ODS_GRAYED | ODS_DISABLED;
    const struct {
        const wchar_t* picture;
        Settings settings;
        int wide, high;
    } systems[] = {{L"menu_flat", {}, 115, 28},
                   {L"menu_classic", {.flat = FALSE}, 115, 28},
                   {L"menu_odd", {.density = 120}, 140, 36},
                   {L"menu_dense", {.density = 192}, 230, 56},
                   {L"menu_contrast", {.fontHeight = -24, .contrast = true}, 190, 36}};
    for (const auto& [picture, settings, wide, high] : systems) {
        system_.now = settings;
        if (settings.density == 96) window_.Send(WM_SETTINGCHANGE);
        Reopen();
        const Sheet sheet(4 + 7 * wide, 4 + 8 * high);
        for (UINT position = kOpen; position <= kMore; ++position) {
            int left = 4;
            for (const UINT state : {0u, UINT{ODS_SELECTED}, UINT{ODS_CHECKED}, kChosen, kGrey,
                                     UINT{ODS_GRAYED | ODS_SELECTED}, UINT{ODS_NOACCEL}}) {
                Draw(sheet, std::exchange(left, left + wide), 4 + static_cast<int>(position) * high, position, state);
            }
        }
        sheet.ExpectIs(picture);
    }
}

// The same item after each change, from the top down.
TEST_F(IconMenuDrawing, FollowsChanges) {
    const Sheet sheet(120, 360);
    int top = 4;
    UINT position = kOpen;
    std::optional<ImportPatch> none;
    auto large = TwoImages(L"images32.bmp", 32);
    const std::function<void()> changes[] = {
        [&] { Rename(menu, kOpen, L"Ot&her"); },
        [&] { InsertMenuW(menu, 0, MF_BYPOSITION, 700, L"First"), icons_->put_CommandImage(kCommand, 1), ++position; },
        [&] { icons_->ClearIcons(); },
        [&] { icons_->put_CommandImage(kCommand, 0), Reopen(); },  // no item has an accelerator any more
        [&] { icons_->put_ImageList(HandleToLong(large.get())), Reopen(); },
        [&] { ImageList_Remove(large.get(), -1); },
        [&] { large = nullptr; },
        [&] { Reopen(); },
        [&] { SetMenuDefaultItem(menu, position, TRUE); },
        [&] { Reopen(); },                                                       // measured bold
        [&] { none.emplace(Library(), "GetDpiForWindow", nullptr), Reopen(); },  // of the system's density
    };
    for (const auto& change : changes) change(), top += Draw(sheet, 4, top, position) + 4;
    sheet.ExpectIs(L"menu_changes");
}

TEST_F(IconMenuDrawing, DrawsPicturesOfEveryKind) {
    const Sheet sheet(230, 4 + 12 * 28);
    int top = 4;
    const auto draw = [&](const ComPtr<IPictureDisp>& picture, LONG mask = kMagenta, bool isEmpty = false) {
        const ULONG references = References(picture.get());
        EXPECT_EQ(S_OK, icons_->put_CommandImage(kCommand, 0));
        EXPECT_EQ(S_OK, icons_->put_MaskColor(mask));
        EXPECT_EQ(S_OK, icons_->putref_CommandPicture(kCommand, picture.get()));
        Draw(sheet, 4, top, kOpen);
        top += Draw(sheet, 117, top, kOpen, ODS_GRAYED) + 4;
        EXPECT_EQ(L"-1", Fact(icons_.get(), L"CommandImage", {Arg(kCommand)})) << "takes an image's place";
        ComPtr<IPictureDisp> given;
        EXPECT_EQ(S_OK, icons_->get_CommandPicture(kCommand, given.Receive()));
        EXPECT_EQ(isEmpty ? nullptr : picture.get(), given.get());
        given = nullptr, icons_->ClearIcons();
        EXPECT_EQ(references, References(picture.get()));
    };
    for (const wchar_t* file : {L"halves16.bmp", L"halves8.bmp", L"halves64.bmp"}) draw(PictureOf(file));
    draw(PictureOf(L"halves16.bmp"), -1);
    for (const wchar_t* file : {L"icon16.ico", L"icon32.ico", L"square.emf", L"halves.wmf", L"tall.bmp"})
        draw(PictureOf(file));
    PICTDESC nothing{sizeof nothing, PICTYPE_NONE, {}};
    ComPtr<IPictureDisp> none;
    EXPECT_EQ(S_OK, OleCreatePictureIndirect(&nothing, IID_IPictureDisp, TRUE, none.ReceiveVoid()));
    for (const auto& empty : {none, ComPtr<IPictureDisp>()}) draw(empty, kMagenta, true);
    draw(PictureOf(L"lines.bmp"), -1);
    sheet.ExpectIs(L"menu_pictures");
}

TEST_F(IconMenuDrawing, RefusesBadIconsAndWindowsAndKeepsTheOldOnes) {
    constexpr auto kRunTime = static_cast<HRESULT>(0x800A0000);
    const std::array<char, 300> memory{};
    const LONG list = HandleToLong(images_.get()), window = window_.handle();
    const Fake noHooks("CoCreateInstance", &CoCreateInstance, [](auto&&...) { return REGDB_E_CLASSNOTREG; });
    EXPECT_EQ(kRunTime + 429, CreateObject<_cIconMenu>(__uuidof(::cIconMenu))->Attach(window));
    for (const HRESULT answer :
         {icons_->put_CommandImage(kCommand, 2), icons_->put_SubmenuImage(HandleToLong(menu), 2)})
        EXPECT_EQ(kRunTime + 9, answer);
    for (const LONG other : {window & 0xFFFF, HandleToLong(GetDesktopWindow())})
        EXPECT_EQ(kRunTime + 5, icons_->Attach(other));
    EXPECT_EQ(kRunTime + 5, icons_->put_ImageList(HandleToLong(memory.data())));
    const Fake noLists("GetModuleHandleA", &GetModuleHandleA, [](LPCSTR) { return HMODULE{}; });
    EXPECT_EQ(kRunTime + 5, icons_->put_ImageList(list)) << "without the library that has image lists";
    EXPECT_EQ(window, AttachedTo());
    EXPECT_EQ(std::to_wstring(list), Fact(icons_.get(), L"ImageList"));
    EXPECT_EQ(L"0", Fact(icons_.get(), L"CommandImage", {Arg(kCommand)}));
}

TEST_F(IconMenuDrawing, ReadsTheSettingsOnceAndAllocatesNothingOnceAMenuWasShown) {
    const Sheet sheet(800, 60);
    const auto showAll = [&] {
        for (UINT position = 0; position < kOwn; ++position) Draw(sheet, 4, 4, position, ODS_CHECKED | ODS_GRAYED);
    };
    showAll(), Reopen(), showAll();
    const int objects = GdiObjects();
    {
        const Heap none(Library(), [](std::size_t) { return true; });
        Reopen(), showAll(), Close();
    }
    Open(menu);
    for (int change = 1; change <= 3; ++change) {
        window_.Send(WM_SETTINGCHANGE);
        showAll();  // still open: drawn in the fonts that it was measured in
        window_.Send(WM_INITMENUPOPUP, more);
        EXPECT_EQ(change, system_.asked) << "so are its submenus";
        Reopen(), showAll();
        EXPECT_EQ(change + 1, system_.asked);
        EXPECT_EQ(objects, GdiObjects()) << "the old fonts are gone";
    }
    icons_ = nullptr;
    EXPECT_LT(GdiObjects(), objects);
}

}  // namespace
}  // namespace velk::test
