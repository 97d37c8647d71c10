// What cIconMenu draws, read back from a canvas, and the icons that it is given.
#include <algorithm>
#include <array>
#include <optional>
#include <set>

#include "support/gdi_objects.h"
#include "support/import_patch.h"
#include "winhelpers/menu_canvas.h"

namespace velk::test {
namespace {

void ExpectSize(const RECT& bounds, int width, int height) {
    EXPECT_EQ(width, bounds.right - bounds.left);
    EXPECT_EQ(height, bounds.bottom - bounds.top);
}

TEST_F(IconMenuDrawing, StaysInItsPlaceAndKeepsTheSystemOut) {
    for (const UINT position : {kOpen, kSave, kLine, kChecked, kMore, kLong}) {
        for (const UINT state : {0, ODS_SELECTED, ODS_CHECKED, ODS_GRAYED | ODS_DISABLED}) {
            const Drawing drawn = Draw(position, state);
            EXPECT_TRUE(drawn.MarginIsUntouched()) << position;
            EXPECT_TRUE(drawn.clipped()) << position;
        }
    }
}

TEST_F(IconMenuDrawing, ShowsIconAndTextsInTheSystemsColours) {
    const Drawing drawn = Draw(kOpen);
    const RECT icon = drawn.Bounds(kRed);
    ExpectSize(icon, kSide, kSide);
    EXPECT_EQ(GetSysColor(COLOR_MENU), drawn.At(0, 0));
    EXPECT_LE(std::abs(icon.top - (drawn.height() - icon.bottom)), 1) << "in the middle";
    const RECT text = drawn.Bounds(GetSysColor(COLOR_MENUTEXT));
    EXPECT_GT(text.left, icon.right);
    EXPECT_GE(text.right, drawn.width() - 24) << "the accelerator is at the right";
    int gap = 0, widest = 0;  // between label and accelerator
    for (int x = text.left; x < text.right; ++x) {
        bool empty = true;
        for (int y = 0; y < drawn.height(); ++y) empty &= drawn.At(x, y) == GetSysColor(COLOR_MENU);
        gap = empty ? gap + 1 : 0;
        widest = std::max(widest, gap);
    }
    EXPECT_GE(widest, 15);
}

TEST_F(IconMenuDrawing, HighlightsAndDisables) {
    BOOL flat = FALSE;
    SystemParametersInfoA(SPI_GETFLATMENU, 0, &flat, 0);
    const COLORREF lit = GetSysColor(flat ? COLOR_MENUHILIGHT : COLOR_HIGHLIGHT);
    const Drawing highlighted = Draw(kOpen, ODS_SELECTED);
    EXPECT_GT(highlighted.Count(lit), highlighted.width() * highlighted.height() / 2);
    EXPECT_GT(highlighted.Count(GetSysColor(COLOR_HIGHLIGHTTEXT)), 10);
    ExpectSize(highlighted.Bounds(kRed), kSide, kSide);

    const Drawing disabled = Draw(kDisabled, ODS_GRAYED | ODS_DISABLED);
    EXPECT_EQ(0, disabled.Count(kRed));
    EXPECT_GT(disabled.Count(GetSysColor(COLOR_GRAYTEXT)), 10);
    const COLORREF pale = disabled.At(highlighted.Bounds(kRed).left + 2, disabled.height() / 2);
    EXPECT_NE(GetSysColor(COLOR_MENU), pale);
    EXPECT_LT(std::abs(GetRValue(pale) - GetBValue(pale)), 32) << "grey";
    const Drawing both = Draw(kDisabled, ODS_GRAYED | ODS_SELECTED);
    EXPECT_GT(both.Count(GetSysColor(COLOR_GRAYTEXT)), 10) << "still legible";
    EXPECT_FALSE(both == disabled);
}

TEST_F(IconMenuDrawing, MarksCheckedItemsWithAndWithoutIcons) {
    const Drawing plain = Draw(kChecked), framed = Draw(kChecked, ODS_CHECKED);
    ExpectSize(framed.Bounds(kRed), kSide, kSide);
    const RECT icon = framed.Bounds(kRed);
    EXPECT_NE(plain.At(icon.left - 1, icon.top - 1), framed.At(icon.left - 1, icon.top - 1));
    EXPECT_TRUE(Draw(kRadio, ODS_CHECKED) == Draw(kRadio, ODS_CHECKED));
    for (const UINT position : {kChecked, kRadio}) {
        icons_->put_CommandImage(static_cast<LONG>(CommandAt(position)), -1);
    }
    const COLORREF text = GetSysColor(COLOR_MENUTEXT);
    const auto markOf = [&](const Drawing& drawn) {
        std::set<std::pair<int, int>> mark;
        for (int y = 0; y < drawn.height(); ++y) {
            for (int x = 0; x < icon.right + 3; ++x) {
                if (drawn.At(x, y) == text) mark.insert({x, y});
            }
        }
        return mark;
    };
    EXPECT_TRUE(markOf(Draw(kChecked)).empty());
    const auto tick = markOf(Draw(kChecked, ODS_CHECKED)), bullet = markOf(Draw(kRadio, ODS_CHECKED));
    EXPECT_GT(tick.size(), 15u);
    EXPECT_GT(bullet.size(), 15u);
    EXPECT_NE(tick, bullet);
}

TEST_F(IconMenuDrawing, DrawsSeparatorsDottedAndArrowsForSubmenus) {
    const Drawing line = Draw(kLine, ODS_SELECTED);
    EXPECT_LT(line.height(), Draw(kOpen).height());
    EXPECT_EQ(0, line.Count(kRed));
    const RECT dots = line.Bounds(GetSysColor(COLOR_GRAYTEXT));
    EXPECT_EQ(1, dots.bottom - dots.top);
    for (LONG x = dots.left; x < dots.right; ++x) {
        const int colour = (x - dots.left) % 2 ? COLOR_MENU : COLOR_GRAYTEXT;
        ASSERT_EQ(GetSysColor(colour), line.At(x, dots.top)) << x;
    }
    const LONG submenu = HandleOf(ItemsOf(menu_.get())[kMore].submenu);
    EXPECT_EQ(S_OK, icons_->put_SubmenuImage(submenu, 1));
    const Drawing more = Draw(kMore);
    ExpectSize(more.Bounds(kBlue), kSide, kSide);
    int column = more.width() - 1;
    while (column > 0 && more.At(column, more.height() / 2) == GetSysColor(COLOR_MENU)) --column;
    EXPECT_GT(column, more.width() - 16);
    EXPECT_NE(GetSysColor(COLOR_MENU), more.At(column - 1, more.height() / 2 + 1)) << "wider to the left";
}

// Wine 8.0 underlines mnemonics even when it is told not to.
bool PlatformHidesUnderlines() {
    std::array<int, 2> inked{};
    for (const UINT hide : {0u, 1u}) {
        const ScreenContext screen(GetDC(nullptr));
        const CreatedContext context(CreateCompatibleDC(screen.get()));
        const GdiObject bitmap = Bitmap(RGB(255, 255, 255), 30, 30);
        const SelectedObject selected(context.get(), bitmap.get());
        RECT place{0, 0, 30, 30};
        DrawTextW(context.get(), L"&I", 2, &place, DT_SINGLELINE | (hide ? DT_HIDEPREFIX : 0));
        for (int i = 0; i < 900; ++i) inked[hide] += GetPixel(context.get(), i % 30, i / 30) == 0;
    }
    return inked[0] != inked[1];
}

TEST_F(IconMenuDrawing, HidesUnderlinesAndShowsDefaultsBold) {
    EXPECT_EQ(PlatformHidesUnderlines(), !(Draw(kOpen) == Draw(kOpen, ODS_NOACCEL)));
    const COLORREF text = GetSysColor(COLOR_MENUTEXT);
    const Drawing bold = Draw(kDefault);
    SetMenuDefaultItem(menu_.get(), static_cast<UINT>(-1), TRUE);
    EXPECT_GT(bold.Count(text), Draw(kDefault).Count(text));
    EXPECT_TRUE(bold == Draw(kDefault, ODS_DEFAULT));
}

TEST_F(IconMenuDrawing, FollowsChangesOfTextsIconsAndOrder) {
    const Drawing before = Draw(kOpen);
    MENUITEMINFOW info{};
    info.cbSize = sizeof info;
    info.fMask = MIIM_STRING;
    info.dwTypeData = const_cast<LPWSTR>(L"Other");
    SetMenuItemInfoW(menu_.get(), kOpen, TRUE, &info);
    EXPECT_FALSE(before == Draw(kOpen));
    const Drawing renamed = Draw(kOpen);
    InsertMenuW(menu_.get(), 0, MF_BYPOSITION, 700, L"First");
    EXPECT_TRUE(renamed == Draw(kOpen + 1));
    EXPECT_EQ(S_OK, icons_->put_CommandImage(static_cast<LONG>(CommandAt(kOpen)), 1));
    EXPECT_EQ(256, Draw(kOpen + 1).Count(kBlue));
    icons_->ClearIcons();
    EXPECT_EQ(0, Draw(kOpen + 1).Count(kBlue));
}

TEST_F(IconMenuDrawing, TakesTheListsSizeAndSurvivesItsEnd) {
    const int before = Draw(kOpen).height();
    Images large = TwoImages(32);
    icons_->put_ImageList(HandleToLong(large.get()));
    Close();
    Open(menu_.get());
    const Drawing drawn = Draw(kOpen);
    ExpectSize(drawn.Bounds(kRed), 32, 32);
    EXPECT_GT(drawn.height(), before);
    ImageList_Remove(large.get(), -1);  // now the image lies beyond the list
    EXPECT_EQ(0, Draw(kOpen).Count(kRed));
    large = Images();
    EXPECT_EQ(0, Draw(kOpen).Count(kRed));
    Close();
    Open(menu_.get());
    EXPECT_EQ(0, Draw(kOpen).Count(kRed));
}

TEST_F(IconMenuDrawing, DrawsPicturesOfEveryKind) {
    const LONG command = static_cast<LONG>(CommandAt(kOpen));
    struct Case {
        const char* name;
        ComPtr<IPictureDisp> picture;
        LONG mask;
        int width, height;  // of the red part
    };
    const Case cases[] = {
        {"bitmap", BitmapPicture(16), static_cast<LONG>(kMagenta), 16, 8},
        {"whole bitmap", BitmapPicture(16), -1, 16, 8},
        {"large bitmap", BitmapPicture(64), static_cast<LONG>(kMagenta), 16, 8},
        {"small bitmap", BitmapPicture(8), static_cast<LONG>(kMagenta), 8, 4},
        {"icon", IconPicture(kRed, 16), -1, 16, 16},
        {"large icon", IconPicture(kRed, 32), -1, 16, 16},
        {"metafile", MetafilePicture(kRed), -1, 16, 16},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(S_OK, icons_->put_MaskColor(c.mask));
        EXPECT_EQ(S_OK, icons_->putref_CommandPicture(command, c.picture.get()));
        const Drawing drawn = Draw(kOpen);
        const RECT red = drawn.Bounds(kRed);
        EXPECT_NEAR(c.width, red.right - red.left, 1) << c.name;
        EXPECT_NEAR(c.height, red.bottom - red.top, 1) << c.name;
        EXPECT_EQ(std::string(c.name) == "whole bitmap", drawn.Count(kMagenta) > 0) << c.name;
        ComPtr<IPictureDisp> given;
        EXPECT_EQ(S_OK, icons_->get_CommandPicture(command, given.Receive()));
        EXPECT_EQ(c.picture.As<IUnknown>().get(), given.As<IUnknown>().get());
        EXPECT_EQ(-1, Get(Late(), L"CommandImage", {Arg(command)}).value.lVal) << "a picture takes an image's place";
    }
    EXPECT_EQ(S_OK, icons_->put_CommandPicture(command, nullptr));
    EXPECT_EQ(0, Draw(kOpen).Count(kRed));
}

TEST_F(IconMenuDrawing, RefusesBadIconsAndKeepsTheOldOnes) {
    const LONG list = HandleToLong(images_.get()), command = static_cast<LONG>(CommandAt(kOpen));
    const LONG notAList = HandleToLong(menu_.get());
    std::array<char, 300> memory{};
    Menu gone = FullMenu();
    const LONG destroyed = HandleOf(gone.get());
    gone = Menu();
    struct Case {
        const wchar_t* member;
        std::initializer_list<VARIANT> arguments;
        int error;
    };
    const Case cases[] = {
        {L"ImageList", {Arg(1L)}, 5},
        {L"ImageList", {Arg(-1L)}, 5},
        {L"ImageList", {Arg(notAList)}, 5},
        {L"ImageList", {Arg(HandleToLong(memory.data()))}, 5},
        {L"MaskColor", {Arg(static_cast<LONG>(0xFF123456))}, 5},
        {L"CommandImage", {Arg(command), Arg(-2L)}, 9},
        {L"CommandImage", {Arg(command), Arg(2L)}, 9},
        {L"CommandImage", {Arg(0L), Arg(1L)}, 5},
        {L"CommandPicture", {Arg(0L), Arg(static_cast<IDispatch*>(nullptr))}, 5},
        {L"SubmenuImage", {Arg(0L), Arg(1L)}, 5},
        {L"SubmenuImage", {Arg(destroyed), Arg(1L)}, 5},
        {L"SubmenuPicture", {Arg(destroyed), Arg(static_cast<IDispatch*>(nullptr))}, 5},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(RunTime(c.error), Let(Late(), c.member, c.arguments).code) << c.member << " " << &c - cases;
    }
    EXPECT_TRUE(FAILED(Let(Late(), L"CommandPicture", {Arg(command), Arg(Late())}).result));
    EXPECT_EQ(list, Get(Late(), L"ImageList").value.lVal);
    EXPECT_EQ(0, Get(Late(), L"CommandImage", {Arg(command)}).value.lVal);
    EXPECT_EQ(256, Draw(kOpen).Count(kRed));
    EXPECT_EQ(-1, Get(Late(), L"CommandImage", {Arg(99999L)}).value.lVal) << "in no menu yet";
    EXPECT_EQ(S_OK, Let(Late(), L"ImageList", {Arg(0L)}).result);
    EXPECT_EQ(S_OK, Let(Late(), L"CommandImage", {Arg(command), Arg(5000L)}).result) << "no list to count in";
    EXPECT_EQ(0, Draw(kOpen).Count(kRed));
}

// ---- What is kept from one item to the next ----

long calls;
void*(__cdecl* allocate)(std::size_t);
BOOL(WINAPI* readParameter)(UINT, UINT, void*, UINT);

void* __cdecl CountAllocation(std::size_t size) { return ++calls, allocate(size); }
BOOL WINAPI CountMetrics(UINT action, UINT parameter, void* value, UINT flags) {
    calls += action == SPI_GETNONCLIENTMETRICS;
    return readParameter(action, parameter, value, flags);
}

class Counter {
  public:
    template <class Function>
    Counter(const char* name, Function replacement, Function& original)
        : patch_(Library(), name, reinterpret_cast<void*>(replacement)) {
        original = patch_.template Original<Function>();
        calls = 0;
    }

  private:
    ImportPatch patch_;
};

TEST_F(IconMenuDrawing, AllocatesNothingOnceAMenuWasShown) {
    const auto showAll = [&] {
        Open(menu_.get());
        for (const UINT position : {kOpen, kSave, kLine, kChecked, kRadio, kDisabled, kMore, kLong}) {
            Drawing(window_.get(), menu_.get(), position, ODS_CHECKED | ODS_GRAYED);
        }
        Close();
    };
    Close();
    showAll();
    const int objects = GdiObjects();
    const Counter counter("malloc", &CountAllocation, allocate);
    showAll();
    EXPECT_EQ(0, calls);
    EXPECT_EQ(objects, GdiObjects());
}

TEST_F(IconMenuDrawing, ReadsTheSettingsOnceAndAgainWhenTheyChange) {
    const Counter counter("SystemParametersInfoA", &CountMetrics, readParameter);
    Close();
    Open(menu_.get());
    EXPECT_EQ(0, calls);
    Draw(kOpen);
    const int objects = GdiObjects();
    for (int change = 1; change <= 3; ++change) {
        SendMessageW(window_.get(), WM_SETTINGCHANGE, 0, 0);
        Draw(kOpen);  // still open: drawn in the fonts that it was measured in
        Close();
        Open(menu_.get());
        EXPECT_EQ(change, calls);
        Draw(kOpen);
        EXPECT_EQ(objects, GdiObjects()) << "the old fonts are gone";
    }
}

}  // namespace
}  // namespace velk::test
