// What cIconMenu draws, compared with committed pictures, and the icons that it is given.
#include <array>
#include <string>

#include "support/fake.h"
#include "support/gdi_objects.h"
#include "support/scarce_memory.h"
#include "winhelpers/menu_canvas.h"

namespace velk::test {
namespace {

constexpr UINT kStates[] = {0,
                            ODS_SELECTED,
                            ODS_CHECKED,
                            ODS_CHECKED | ODS_SELECTED,
                            ODS_GRAYED | ODS_DISABLED,
                            ODS_GRAYED | ODS_SELECTED,
                            ODS_NOACCEL};

// An item a row, a state a column. Without a message the window comes to a screen of another density.
TEST_F(IconMenuDrawing, ShowsEachKindOfItemInEachState) {
    const struct {
        const wchar_t* picture;
        BOOL flat;
        int density;
        LONG fontHeight;
        bool contrast;
        int wide, high;
    } systems[] = {{L"menu_flat", TRUE, 96, -9, false, 115, 28},
                   {L"menu_classic", FALSE, 96, -9, false, 115, 28},
                   {L"menu_dense", TRUE, 192, -9, false, 230, 56},
                   {L"menu_contrast", TRUE, 96, -24, true, 190, 36}};
    for (const auto& [picture, flat, density, fontHeight, contrast, wide, high] : systems) {
        system_.flat = flat, system_.density = density, system_.fontHeight = fontHeight, system_.contrast = contrast;
        if (density == 96) SendMessageW(window_.get(), WM_SETTINGCHANGE, 0, 0);
        Reopen();
        const Sheet sheet(4 + 7 * wide, 4 + 8 * high);
        for (const UINT position : {kOpen, kSave, kLine, kChecked, kRadio, kDisabled, kDefault, kMore}) {
            for (int i = 0; i < 7; ++i) {
                Draw(sheet, 4 + i * wide, 4 + static_cast<int>(position) * high, position, kStates[i]);
            }
        }
        sheet.ExpectIs(picture);
    }
}

// The same item after each change, from the top down.
TEST_F(IconMenuDrawing, FollowsChanges) {
    const Sheet sheet(120, 360);
    int top = 4;
    const auto draw = [&](UINT position) {
        Draw(sheet, 4, std::exchange(top, top + Measure(position).cy + 4), position);
    };
    Rename(menu, kOpen, L"Ot&her");
    draw(kOpen);
    InsertMenuW(menu, 0, MF_BYPOSITION, 700, L"First");
    icons_->put_CommandImage(kCommand, 1);
    draw(kOpen + 1);
    icons_->ClearIcons();
    draw(kOpen + 1);
    icons_->put_CommandImage(kCommand, 0);
    Reopen();
    draw(kOpen + 1);  // no item has an accelerator any more
    Images large = TwoImages(32);
    icons_->put_ImageList(HandleToLong(large.get()));
    Reopen();
    draw(kOpen + 1);
    ImageList_Remove(large.get(), -1);
    draw(kOpen + 1);
    large = Images();
    draw(kOpen + 1);
    Reopen();
    draw(kOpen + 1);
    SetMenuDefaultItem(menu, kOpen + 1, TRUE);
    draw(kOpen + 1);
    Reopen();
    draw(kOpen + 1);  // measured bold
    {
        const ProcedurePatch none(Library(), "GetDpiForWindow", nullptr);
        Reopen();
        draw(kOpen + 1);  // of the system's density
    }
    sheet.ExpectIs(L"menu_changes");
    Rename(menu, 0, std::wstring(100, L'x'));
    Reopen();
    EXPECT_EQ(300, Measure(kLong + 1).cx - Measure(0).cx) << "no text is too long";
}

// The lower half is transparent.
ComPtr<IPictureDisp> IconPicture(int side) {
    const GdiObject bitmap(NewBitmap(kRed, side, side, 0, side / 2)), mask(NewBitmap(0, side, side, kWhite, side / 2));
    ICONINFO info{TRUE, 0, 0, static_cast<HBITMAP>(mask.get()), static_cast<HBITMAP>(bitmap.get())};
    return PictureOf(PICTYPE_ICON, CreateIconIndirect(&info));
}

ComPtr<IPictureDisp> MetafilePicture() {
    const HDC recording = CreateEnhMetaFileW(nullptr, nullptr, nullptr, nullptr);
    Paint(recording, kRed, {0, 0, 200, 200});
    return PictureOf(PICTYPE_ENHMETAFILE, CloseEnhMetaFile(recording));
}

// Twice as wide as high, red above blue.
ComPtr<IPictureDisp> OldMetafilePicture() {
    const HDC recording = CreateMetaFileW(nullptr);
    SetMapMode(recording, MM_ANISOTROPIC);
    SetWindowExtEx(recording, 100, 100, nullptr);
    Paint(recording, kRed, {0, 0, 100, 50});
    Paint(recording, kBlue, {0, 50, 100, 100});
    return PictureOf(PICTYPE_METAFILE, CloseMetaFile(recording), 2000, 1000);
}

// Lines that are a pixel high, red and blue in turn.
ComPtr<IPictureDisp> FineBitmap(int side) {
    const HBITMAP bitmap = NewBitmap(kBlue, side, side);
    const CreatedContext context(CreateCompatibleDC(nullptr));
    const SelectedObject selected(context.get(), bitmap);
    for (int y = 0; y < side; y += 2) Paint(context.get(), kRed, {0, y, side, y + 1});
    return PictureOf(bitmap);
}

TEST_F(IconMenuDrawing, DrawsPicturesOfEveryKind) {
    const Sheet sheet(230, 4 + 10 * 28);
    int top = 4;
    const auto draw = [&](const ComPtr<IPictureDisp>& picture, COLORREF mask = kMagenta, bool isEmpty = false) {
        EXPECT_EQ(S_OK, icons_->put_CommandImage(kCommand, 0));
        EXPECT_EQ(S_OK, icons_->put_MaskColor(static_cast<LONG>(mask)));
        EXPECT_EQ(S_OK, icons_->putref_CommandPicture(kCommand, picture.get()));
        Draw(sheet, 4, top, kOpen);
        Draw(sheet, 117, std::exchange(top, top + 28), kOpen, ODS_GRAYED);
        EXPECT_EQ(L"-1", Fact(icons_.get(), L"CommandImage", {Arg(kCommand)})) << "takes an image's place";
        ComPtr<IPictureDisp> given;
        EXPECT_EQ(S_OK, icons_->get_CommandPicture(kCommand, given.Receive()));
        EXPECT_EQ(isEmpty ? nullptr : picture.get(), given.get());
    };
    const auto bitmap = [](int side) { return PictureOf(NewBitmap(kMagenta, side, side, kRed, side / 2)); };
    for (const int side : {16, 8, 64}) draw(bitmap(side));
    draw(bitmap(16), CLR_INVALID);
    for (const int side : {16, 32}) draw(IconPicture(side));
    draw(MetafilePicture());
    draw(OldMetafilePicture());
    for (const auto& none : {PictureOf(PICTYPE_NONE, nullptr), ComPtr<IPictureDisp>()}) draw(none, kMagenta, true);
    sheet.ExpectIs(L"menu_pictures");
    icons_->put_MaskColor(-1);
    icons_->putref_CommandPicture(kCommand, FineBitmap(64).get());
    Draw(sheet, 4, 4, kOpen);
    for (int y = 9; y < 23; ++y) EXPECT_TRUE(sheet.At(16, y) == kRed || sheet.At(16, y) == kBlue) << y;
}

TEST_F(IconMenuDrawing, RefusesBadIconsAndKeepsTheOldOnes) {
    std::array<char, 300> memory{};
    Menu gone = FullMenu();
    const VARIANT destroyed = Arg(HandleOf(gone.get())), nothing = Arg(static_cast<IDispatch*>(nullptr));
    gone = Menu();
    const struct {
        const wchar_t* member;
        std::initializer_list<VARIANT> arguments;
        int error;
    } cases[] = {
        {L"ImageList", {Arg(1L)}, 5},
        {L"ImageList", {Arg(-1L)}, 5},
        {L"ImageList", {Arg(HandleOf(menu))}, 5},
        {L"ImageList", {Arg(HandleToLong(memory.data()))}, 5},
        {L"MaskColor", {Arg(static_cast<LONG>(0xFF123456))}, 5},
        {L"CommandImage", {Arg(kCommand), Arg(-2L)}, 9},
        {L"CommandImage", {Arg(kCommand), Arg(2L)}, 9},
        {L"CommandImage", {Arg(0L), Arg(1L)}, 5},
        {L"CommandPicture", {Arg(0L), nothing}, 5},
        {L"CommandPicture", {Arg(kCommand), Arg(icons_.get())}, 13},
        {L"SubmenuImage", {destroyed, Arg(1L)}, 5},
        {L"SubmenuImage", {Arg(HandleOf(menu)), Arg(2L)}, 9},
        {L"SubmenuPicture", {destroyed, nothing}, 5},
    };
    for (const auto& c : cases) {
        const Outcome refused = Let(icons_.get(), c.member, c.arguments);
        EXPECT_EQ(c.error == 13 ? DISP_E_TYPEMISMATCH : RunTime(c.error), c.error == 13 ? refused.result : refused.code)
            << &c - cases;
    }
    const std::wstring list = std::to_wstring(HandleToLong(images_.get()));
    EXPECT_EQ(list + L"|16711935|", Facts(icons_.get(), {L"ImageList", L"MaskColor"}));
    EXPECT_EQ(L"0", Fact(icons_.get(), L"CommandImage", {Arg(kCommand)}));
    EXPECT_EQ(L"-1", Fact(icons_.get(), L"CommandImage", {Arg(99999L)})) << "in no menu yet";
    {
        const Fake none("GetModuleHandleA", &GetModuleHandleA, [](LPCSTR) { return HMODULE{}; });
        EXPECT_EQ(RunTime(5), Let(icons_.get(), L"ImageList", {Arg(HandleToLong(images_.get()))}).code);
    }
    EXPECT_EQ(S_OK, Let(icons_.get(), L"ImageList", {Arg(0L)}).result);
    EXPECT_EQ(S_OK, Let(icons_.get(), L"CommandImage", {Arg(kCommand), Arg(5000L)}).result) << "no list to count in";
}

TEST_F(IconMenuDrawing, ReadsTheSettingsOnceAndAllocatesNothingOnceAMenuWasShown) {
    const Sheet sheet(800, 60);
    const auto showAll = [&] {
        for (UINT position = 0; position < kPositions; ++position) {
            if (position != kOwn && position != kBitmap) Draw(sheet, 4, 4, position, ODS_CHECKED | ODS_GRAYED);
        }
    };
    showAll(), Reopen(), showAll();
    const int objects = GdiObjects();
    {
        const ScarceMemory none(0, SIZE_MAX);
        Reopen(), showAll(), Close();
    }
    Open(menu);
    for (int change = 1; change <= 3; ++change) {
        SendMessageW(window_.get(), WM_SETTINGCHANGE, 0, 0);
        showAll();  // still open: drawn in the fonts that it was measured in
        Open(ItemsOf(menu)[kMore].submenu);
        EXPECT_EQ(change, system_.asked) << "so are its submenus";
        Reopen(), showAll();
        EXPECT_EQ(change + 1, system_.asked);
        EXPECT_EQ(objects, GdiObjects()) << "the old fonts are gone";
    }
}

}  // namespace
}  // namespace velk::test
