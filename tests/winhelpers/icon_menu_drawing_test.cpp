// What cIconMenu draws, read back from a canvas, and the icons that it is given.
#include <algorithm>
#include <array>
#include <set>

#include "support/departures.h"
#include "support/gdi_objects.h"
#include "winhelpers/menu_canvas.h"

namespace velk::test {
namespace {

void ExpectSize(const RECT& bounds, int width, int height) {
    EXPECT_EQ(width, bounds.right - bounds.left);
    EXPECT_EQ(height, bounds.bottom - bounds.top);
}

COLORREF System(int colour) { return GetSysColor(colour); }

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
    const RECT icon = drawn.Bounds(kRed), text = drawn.Bounds(System(COLOR_MENUTEXT));
    ExpectSize(icon, kSide, kSide);
    EXPECT_EQ(System(COLOR_MENU), drawn.At(0, 0));
    EXPECT_LE(std::abs(icon.top - (drawn.height() - icon.bottom)), 1) << "in the middle";
    EXPECT_LE(std::abs(text.top - (drawn.height() - text.bottom)), 4) << "likewise";
    EXPECT_GT(text.left, icon.right);
    EXPECT_GE(text.right, drawn.width() - 24) << "the accelerator is at the right";
    int gap = 0, widest = 0;  // between label and accelerator
    for (int x = text.left; x < text.right; ++x) {
        bool empty = true;
        for (int y = 0; y < drawn.height(); ++y) empty &= drawn.At(x, y) == System(COLOR_MENU);
        gap = empty ? gap + 1 : 0;
        widest = std::max(widest, gap);
    }
    EXPECT_GE(widest, 15);
}

TEST_F(IconMenuDrawing, HighlightsAndDisables) {
    BOOL flat = FALSE;
    SystemParametersInfoA(SPI_GETFLATMENU, 0, &flat, 0);
    const Drawing highlighted = Draw(kOpen, ODS_SELECTED), disabled = Draw(kDisabled, ODS_GRAYED | ODS_DISABLED);
    EXPECT_GT(highlighted.Count(System(flat ? COLOR_MENUHILIGHT : COLOR_HIGHLIGHT)),
              highlighted.width() * highlighted.height() / 2);
    EXPECT_GT(highlighted.Count(System(COLOR_HIGHLIGHTTEXT)), 10);
    ExpectSize(highlighted.Bounds(kRed), kSide, kSide);
    EXPECT_EQ(0, disabled.Count(kRed));
    const COLORREF pale = disabled.At(highlighted.Bounds(kRed).left + 2, disabled.height() / 2);
    EXPECT_NE(System(COLOR_MENU), pale);
    EXPECT_LT(std::abs(GetRValue(pale) - GetBValue(pale)), 32) << "grey";
    const Drawing both = Draw(kDisabled, ODS_GRAYED | ODS_SELECTED);
    for (const Drawing* drawn : {&disabled, &both}) EXPECT_GT(drawn->Count(System(COLOR_GRAYTEXT)), 10) << "legible";
    EXPECT_FALSE(both == disabled);
    EXPECT_GT(both.Count(System(COLOR_MENU)), both.width() * both.height() / 2);
    EXPECT_EQ(0, both.Count(kRed));
}

TEST_F(IconMenuDrawing, MarksCheckedItemsWithAndWithoutIcons) {
    const Drawing plain = Draw(kChecked), framed = Draw(kChecked, ODS_CHECKED);
    const RECT icon = framed.Bounds(kRed);
    ExpectSize(icon, kSide, kSide);
    EXPECT_NE(plain.At(icon.left - 1, icon.top - 1), framed.At(icon.left - 1, icon.top - 1));
    EXPECT_EQ(S_OK, icons_->put_CommandImage(CommandAt(kChecked), -1));
    EXPECT_EQ(S_OK, icons_->putref_CommandPicture(CommandAt(kRadio), nullptr));
    const auto markOf = [&](const Drawing& drawn) {
        std::set<std::pair<int, int>> mark;
        for (int i = 0; i < drawn.height() * (icon.right + 3); ++i) {
            const int x = i / drawn.height(), y = i % drawn.height();
            if (drawn.At(x, y) == System(COLOR_MENUTEXT)) mark.insert({x, y});
        }
        return mark;
    };
    EXPECT_TRUE(markOf(Draw(kChecked)).empty());
    const auto tick = markOf(Draw(kChecked, ODS_CHECKED)), bullet = markOf(Draw(kRadio, ODS_CHECKED));
    for (const auto* mark : {&tick, &bullet}) EXPECT_GT(mark->size(), 15u);
    const auto mirrored = [](const auto& mark) {
        const int sum = mark.begin()->first + mark.rbegin()->first;
        std::set<std::pair<int, int>> mirror;
        for (const auto& [x, y] : mark) mirror.insert({sum - x, y});
        return mirror;
    };
    EXPECT_EQ(mirrored(bullet), bullet);
    EXPECT_NE(mirrored(tick), tick);
}

TEST_F(IconMenuDrawing, DrawsSeparatorsDottedAndArrowsForSubmenus) {
    const Drawing line = Draw(kLine, ODS_SELECTED);
    EXPECT_LT(line.height(), Draw(kOpen).height());
    EXPECT_EQ(0, line.Count(kRed));
    const RECT dots = line.Bounds(System(COLOR_GRAYTEXT));
    EXPECT_EQ(1, dots.bottom - dots.top);
    for (LONG x = dots.left; x < dots.right; ++x) {
        ASSERT_EQ(System((x - dots.left) % 2 ? COLOR_MENU : COLOR_GRAYTEXT), line.At(x, dots.top)) << x;
    }
    EXPECT_EQ(S_OK, icons_->put_SubmenuImage(HandleOf(ItemsOf(menu_.get())[kMore].submenu), 1));
    const Drawing more = Draw(kMore);
    ExpectSize(more.Bounds(kBlue), kSide, kSide);
    int column = more.width() - 1;
    while (column > 0 && more.At(column, more.height() / 2) == System(COLOR_MENU)) --column;
    EXPECT_GT(column, more.width() - 16);
    EXPECT_NE(System(COLOR_MENU), more.At(column - 1, more.height() / 2 + 1)) << "wider to the left";
    icons_->ClearIcons();
    EXPECT_EQ(0, Draw(kMore).Count(kBlue));
}

// What the library asks of the platform, counted or noted.
long calls;
UINT textFlags;
void*(__cdecl* allocate)(std::size_t);
BOOL(WINAPI* readParameter)(UINT, UINT, void*, UINT);

void* __cdecl CountAllocation(std::size_t size) { return ++calls, allocate(size); }
BOOL WINAPI CountMetrics(UINT action, UINT parameter, void* value, UINT flags) {
    calls += action == SPI_GETNONCLIENTMETRICS;
    return readParameter(action, parameter, value, flags);
}
int WINAPI NoteLabel(HDC, LPCWSTR, int, RECT*, UINT flags) { return textFlags |= flags & DT_NOPREFIX ? 0 : flags, 0; }

TEST_F(IconMenuDrawing, HidesUnderlinesAndShowsDefaultsBold) {
    for (const UINT state : {0, ODS_NOACCEL}) {
        const ImportPatch patch(Library(), "DrawTextW", reinterpret_cast<void*>(&NoteLabel));
        textFlags = 0;
        Draw(kOpen, state);
        EXPECT_EQ(state == ODS_NOACCEL, (textFlags & DT_HIDEPREFIX) != 0);
        EXPECT_NE(0u, textFlags);
        EXPECT_FALSE(textFlags & DT_RIGHT) << "an accelerator has no mnemonic";
    }
    EXPECT_EQ(Departs("DrawText"), Draw(kOpen) == Draw(kOpen, ODS_NOACCEL));
    const Drawing bold = Draw(kDefault);
    SetMenuDefaultItem(menu_.get(), static_cast<UINT>(-1), TRUE);
    EXPECT_GT(bold.Count(System(COLOR_MENUTEXT)), Draw(kDefault).Count(System(COLOR_MENUTEXT)));
    EXPECT_TRUE(bold == Draw(kDefault, ODS_DEFAULT));
    Close();
    Open(menu_.get());
    EXPECT_LT(Draw(kDefault).width(), bold.width()) << "measured as it is drawn";
}

TEST_F(IconMenuDrawing, FollowsChangesOfTextsIconsAndOrder) {
    const Drawing before = Draw(kOpen);
    const MENUITEMINFOW info = InfoOf(MIIM_STRING, const_cast<LPWSTR>(L"Other"));
    SetMenuItemInfoW(menu_.get(), kOpen, TRUE, &info);
    const Drawing renamed = Draw(kOpen);
    EXPECT_FALSE(before == renamed);
    InsertMenuW(menu_.get(), 0, MF_BYPOSITION, 700, L"First");
    EXPECT_TRUE(renamed == Draw(kOpen + 1));
    EXPECT_EQ(S_OK, icons_->put_CommandImage(kCommand, 1));
    EXPECT_EQ(256, Draw(kOpen + 1).Count(kBlue));
    icons_->ClearIcons();
    EXPECT_EQ(0, Draw(kOpen + 1).Count(kBlue));
    // The next time all is measured anew: there is no accelerator any more, and no text is too long.
    const int wide = Draw(kSave + 1).width();
    Close();
    Open(menu_.get());
    EXPECT_LT(Draw(kSave + 1).width(), wide - 15);
    std::wstring half(100, L'x');
    const MENUITEMINFOW longer = InfoOf(MIIM_STRING, half.data());
    SetMenuItemInfoW(menu_.get(), 0, TRUE, &longer);
    Close();
    Open(menu_.get());
    EXPECT_GT(Draw(kLong + 1).width(), Draw(0).width() + 300);
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
    const auto bitmap = [](int side) { return PictureOf(NewBitmap(kMagenta, side, side, kRed, side / 2)); };
    struct Case {
        const char* name;
        ComPtr<IPictureDisp> picture;
        COLORREF mask;
        int width, height;  // of the red part
    };
    const Case cases[] = {
        {"bitmap", bitmap(16), kMagenta, 16, 8},
        {"whole bitmap", bitmap(16), CLR_INVALID, 16, 8},
        {"large bitmap", bitmap(64), kMagenta, 16, 8},
        {"small bitmap", bitmap(8), kMagenta, 8, 4},
        {"icon", IconPicture(16), CLR_INVALID, 16, 16},
        {"large icon", IconPicture(32), CLR_INVALID, 16, 16},
        {"metafile", MetafilePicture(), CLR_INVALID, 16, 16},
        {"old metafile", OldMetafilePicture(), CLR_INVALID, 16, 8},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(S_OK, icons_->put_MaskColor(static_cast<LONG>(c.mask)));
        EXPECT_EQ(S_OK, icons_->putref_CommandPicture(kCommand, c.picture.get()));
        const Drawing drawn = Draw(kOpen);
        const RECT red = drawn.Bounds(kRed);
        EXPECT_NEAR(c.width, red.right - red.left, 1) << c.name;
        EXPECT_NEAR(c.height, red.bottom - red.top, 1) << c.name;
        EXPECT_EQ(std::string(c.name) == "whole bitmap", drawn.Count(kMagenta) > 0) << c.name;
        ComPtr<IPictureDisp> given;
        EXPECT_EQ(S_OK, icons_->get_CommandPicture(kCommand, given.Receive()));
        EXPECT_EQ(c.picture.As<IUnknown>().get(), given.As<IUnknown>().get());
        EXPECT_EQ(-1, Get(icons_.get(), L"CommandImage", {Arg(kCommand)}).value.lVal) << "takes an image's place";
    }
    for (const auto& none : {PictureOf(PICTDESC{}), ComPtr<IPictureDisp>()}) {
        ComPtr<IPictureDisp> given;
        EXPECT_EQ(S_OK, icons_->putref_CommandPicture(kCommand, cases[0].picture.get()));
        EXPECT_EQ(S_OK, icons_->put_CommandPicture(kCommand, none.get()));
        EXPECT_EQ(0, Draw(kOpen).Count(kRed));
        EXPECT_EQ(S_OK, icons_->get_CommandPicture(kCommand, given.Receive()));
        EXPECT_FALSE(given);
    }
}

TEST_F(IconMenuDrawing, DisabledIconsKeepAColouredBackground) {
    const struct Menus {
        explicit Menus(COLORREF colour) { Set(colour); }
        ~Menus() { Set(before); }
        static void Set(COLORREF colour) {
            const INT index = COLOR_MENU;
            SetSysColors(1, &index, &colour);
        }
        const COLORREF before = System(COLOR_MENU);
    } coloured(RGB(250, 220, 120));
    icons_->putref_CommandPicture(CommandAt(kDisabled), PictureOf(NewBitmap(kMagenta, 16, 16, kRed, 8)).get());
    const RECT icon = Draw(kOpen).Bounds(kRed);
    const Drawing drawn = Draw(kDisabled, ODS_GRAYED);
    EXPECT_EQ(System(COLOR_MENU), drawn.At(icon.left + 1, icon.top + 1));
    EXPECT_NE(System(COLOR_MENU), drawn.At(icon.left + 1, icon.bottom - 2));
}

TEST_F(IconMenuDrawing, RefusesBadIconsAndKeepsTheOldOnes) {
    std::array<char, 300> memory{};
    Menu gone = FullMenu();
    const VARIANT destroyed = Arg(HandleOf(gone.get())), nothing = Arg(static_cast<IDispatch*>(nullptr));
    gone = Menu();
    struct Case {
        const wchar_t* member;
        std::initializer_list<VARIANT> arguments;
        int error;
    };
    const Case cases[] = {
        {L"ImageList", {Arg(1L)}, 5},
        {L"ImageList", {Arg(-1L)}, 5},
        {L"ImageList", {Arg(HandleToLong(menu_.get()))}, 5},
        {L"ImageList", {Arg(HandleToLong(memory.data()))}, 5},
        {L"MaskColor", {Arg(static_cast<LONG>(0xFF123456))}, 5},
        {L"CommandImage", {Arg(kCommand), Arg(-2L)}, 9},
        {L"CommandImage", {Arg(kCommand), Arg(2L)}, 9},
        {L"CommandImage", {Arg(0L), Arg(1L)}, 5},
        {L"CommandPicture", {Arg(0L), nothing}, 5},
        {L"CommandPicture", {Arg(kCommand), Arg(icons_.get())}, 13},
        {L"SubmenuImage", {destroyed, Arg(1L)}, 5},
        {L"SubmenuImage", {Arg(HandleOf(menu_.get())), Arg(2L)}, 9},
        {L"SubmenuPicture", {destroyed, nothing}, 5},
    };
    for (const Case& c : cases) {
        const Outcome refused = Let(icons_.get(), c.member, c.arguments);
        EXPECT_EQ(c.error == 13 ? DISP_E_TYPEMISMATCH : RunTime(c.error), c.error == 13 ? refused.result : refused.code)
            << &c - cases;
    }
    EXPECT_EQ(HandleToLong(images_.get()), Get(icons_.get(), L"ImageList").value.lVal);
    EXPECT_EQ(static_cast<LONG>(kMagenta), Get(icons_.get(), L"MaskColor").value.lVal);
    EXPECT_EQ(256, Draw(kOpen).Count(kRed));
    EXPECT_EQ(-1, Get(icons_.get(), L"CommandImage", {Arg(99999L)}).value.lVal) << "in no menu yet";
    EXPECT_EQ(S_OK, Let(icons_.get(), L"ImageList", {Arg(0L)}).result);
    EXPECT_EQ(S_OK, Let(icons_.get(), L"CommandImage", {Arg(kCommand), Arg(5000L)}).result) << "no list to count in";
    EXPECT_EQ(0, Draw(kOpen).Count(kRed));
}

TEST_F(IconMenuDrawing, AllocatesNothingOnceAMenuWasShown) {
    const auto showAll = [&] {
        Open(menu_.get());
        for (const UINT position : {kOpen, kSave, kLine, kChecked, kRadio, kDisabled, kMore, kLong}) {
            Draw(position, ODS_CHECKED | ODS_GRAYED);
        }
        Close();
    };
    Close();
    showAll();
    const int objects = GdiObjects();
    const ImportPatch patch(Library(), "malloc", reinterpret_cast<void*>(&CountAllocation));
    allocate = patch.Original<decltype(allocate)>();
    calls = 0;
    showAll();
    EXPECT_EQ(0, calls);
    EXPECT_EQ(objects, GdiObjects());
}

TEST_F(IconMenuDrawing, ReadsTheSettingsOnceAndAgainWhenTheyChange) {
    const ImportPatch patch(Library(), "SystemParametersInfoA", reinterpret_cast<void*>(&CountMetrics));
    readParameter = patch.Original<decltype(readParameter)>();
    Draw(kOpen);
    const int objects = GdiObjects();
    calls = 0;
    for (int change = 0; change <= 3; ++change) {
        if (change) SendMessageW(window_.get(), WM_SETTINGCHANGE, 0, 0);
        Draw(kOpen);  // still open: drawn in the fonts that it was measured in
        Open(ItemsOf(menu_.get())[kMore].submenu);
        EXPECT_EQ(std::max(change - 1, 0), calls) << "so are its submenus";
        Close();
        Open(menu_.get());
        EXPECT_EQ(change, calls);
        Draw(kOpen);
        EXPECT_EQ(objects, GdiObjects()) << "the old fonts are gone";
    }
}

}  // namespace
}  // namespace velk::test
