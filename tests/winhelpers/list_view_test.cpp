#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "platform/text.h"
#include "support/fake.h"
#include "winhelpers/hooked_fixture.h"

namespace velk::test {
namespace {

using Widths = std::vector<int>;

// A real list view in report view with three columns, and below all hooks one that notes what the header has to say.
class ListView : public testing::Test {
  protected:
    ListView() {
        below->handle = [this](const TestHook::Message& m, LONG_PTR*) {
            notified.push_back(static_cast<int>(reinterpret_cast<const NMHDR*>(m.lParam)->code));
            return S_OK;
        };
        ISubclass* hook = below.get();
        EXPECT_EQ(S_OK, library.Manager()->AddHook(&hook, HandleToLong(control), WM_NOTIFY));
        EXPECT_EQ(S_OK, Call(list.get(), L"Init", {Arg(HandleToLong(control))}).result);
    }

    void Set(const wchar_t* property, bool value) { EXPECT_EQ(S_OK, Let(list.get(), property, {Arg(value)}).result); }
    HWND Header() const { return reinterpret_cast<HWND>(SendMessageW(control, LVM_GETHEADER, 0, 0)); }
    void SetWidths(const Widths& widths) {
        for (WPARAM i = 0; i < widths.size(); ++i) SendMessageW(control, LVM_SETCOLUMNWIDTH, i, widths[i]);
    }
    Widths GetWidths() const {
        Widths widths(3);
        for (WPARAM i = 0; i < 3; ++i) widths[i] = static_cast<int>(SendMessageW(control, LVM_GETCOLUMNWIDTH, i, 0));
        return widths;
    }
    Widths Resize(int width, int height = 200) {
        SetWindowPos(control, nullptr, 0, 0, width, height, SWP_NOZORDER | SWP_NOMOVE);
        return GetWidths();
    }
    LRESULT Notify(int code) {
        NMHEADERW header{};
        header.hdr = {Header(), 0, static_cast<UINT>(code)};
        notified.clear();
        return SendMessageW(control, WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&header));
    }

    HookLibrary library;
    TestWindow parent;
    HWND control = NewListView(WS_CHILD | WS_VISIBLE, parent.get());
    ComPtr<TestHook> below = TestHook::Make(eMsgResponse_PreviousFirst, true);
    std::vector<int> notified;  // what reached the control
    ComPtr<IDispatch> list = CreateObject<IDispatch>(__uuidof(CListViewExtended));
};

TEST_F(ListView, StretchesItsColumnsWithItsWidth) {
    Set(L"ResizeColumnsToFitWidth", true);
    SetWidths({100, 100, 50});
    EXPECT_EQ((Widths{100, 100, 201}), Resize(401)) << "at first only the last column changes";
    Resize(400);
    SetWidths({100, 100, 200});
    EXPECT_EQ((Widths{150, 150, 300}), Resize(600));
    const Widths kept{10, 20, 30};
    SetWidths(kept);
    EXPECT_EQ(kept, Resize(600, 150)) << "the height alone";
    Set(L"ResizeColumnsToFitWidth", false);
    EXPECT_EQ(kept, Resize(300));
    Set(L"ResizeColumnsToFitWidth", true);
    LONG result = 1;
    EXPECT_EQ(S_OK, list.As<ISubclass>()->WindowProc(HandleToLong(control), WM_SIZE, 0, 0, &result));
    EXPECT_EQ(0, result);
    EXPECT_EQ(kept, GetWidths()) << "another message";
    const LONG report = GetWindowLongW(control, GWL_STYLE);
    SetWindowLongW(control, GWL_STYLE, (report & ~LVS_TYPEMASK) | LVS_LIST);
    Resize(500);
    SetWindowLongW(control, GWL_STYLE, report);
    EXPECT_EQ(kept, GetWidths()) << "report view only";
    EXPECT_EQ((Widths{5, 10, 285}), Resize(300)) << "the last stretch was at 600";
}

// A header that answers -1 is no header without columns.
TEST_F(ListView, DrawsNothingWhileItStretches) {
    Set(L"ResizeColumnsToFitWidth", true);
    LRESULT columns = 3;
    std::string calls;
    const auto note = [&](char what, HWND window) { (calls += what) += window == control ? 'l' : 'h'; };
    const Fake send("SendMessageA", &SendMessageA, [&](HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == WM_SETREDRAW) note(wParam ? '+' : '-', window);
        return message == HDM_GETITEMCOUNT ? columns : SendMessageA(window, message, wParam, lParam);
    });
    const Fake invalidate("InvalidateRect", &InvalidateRect, [&](HWND window, const RECT* part, BOOL erase) {
        return note(part || erase ? '?' : '!', window), TRUE;
    });
    for (const auto& [count, expected] : {std::pair{3, "-h-l+h+l!h!l"}, {-1, "-h-l+h+l!h!l"}, {0, "+h+l!h!l"}}) {
        calls.clear();
        columns = count;
        Resize(500 + count);
        EXPECT_EQ(expected, calls) << count;
    }
}

TEST_F(ListView, KeepsTheUserFromResizingColumns) {
    for (const bool prevents : {true, false}) {
        Set(L"PreventColumnResize", prevents);
        for (const int code : {-306, -305}) {
            EXPECT_EQ(prevents, Notify(code) == 1) << code;
            EXPECT_EQ(prevents, notified.empty()) << code << ": never reaches the control";
        }
    }
    Set(L"PreventColumnResize", true);
    for (const int code : {-326, -325, -307, -12}) {  // the wide forms too
        EXPECT_EQ(0, Notify(code)) << code;
        EXPECT_EQ(code, notified.back()) << "after those that the control's own handling brought about";
    }
    LONG result = 1;
    EXPECT_EQ(E_POINTER, list.As<ISubclass>()->WindowProc(HandleToLong(control), WM_NOTIFY, 0, 0, &result));
    // A failure of the hook manager reaches the caller as it is.
    const NMHDR header{};
    LONG_PTR whole = 1;
    EXPECT_EQ(eErrHookManager_NotHooked, list.As<ISubclass2>()->WindowProcPtr(
                                             parent.handle(), WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&header), &whole));
    ComPtr<IErrorInfo> info;
    Bstr source;
    EXPECT_EQ(S_OK, GetErrorInfo(0, info.Receive()));
    EXPECT_EQ(S_OK, info->GetSource(source.Receive()));
    EXPECT_STREQ(L"VelkSub.HookManager", source.get());
    // The mouse on the divider behind the first column, as the header sees it, which speaks in either form.
    const RelocatedRecords relocated(control);
    for (const auto& [prevents, unicode, width] :
         {std::tuple{true, FALSE, 100}, {false, FALSE, 140}, {true, TRUE, 140}}) {
        Set(L"PreventColumnResize", prevents);
        SendMessageW(Header(), HDM_SETUNICODEFORMAT, static_cast<WPARAM>(unicode), 0);
        SetWidths({100, 100, 200});
        SendMessageW(Header(), WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(99, 8));
        SendMessageW(Header(), WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(139, 8));
        SendMessageW(Header(), WM_LBUTTONUP, 0, MAKELPARAM(139, 8));
        EXPECT_EQ(width, GetWidths()[0]);
    }
}

TEST_F(ListView, ShowsIconsInSubItems) {
    LVITEMW item{};
    for (int i = 0; i < 3; ++i) SendMessageW(control, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
    SendMessageW(control, LVM_SETEXTENDEDLISTVIEWSTYLE, 0, LVS_EX_GRIDLINES);
    EXPECT_EQ(S_OK, Call(list.get(), L"SetSubItemIcon", {Arg(1L), Arg(2L), Arg(5L)}).result);
    EXPECT_EQ(LVS_EX_SUBITEMIMAGES | LVS_EX_GRIDLINES, SendMessageW(control, LVM_GETEXTENDEDLISTVIEWSTYLE, 0, 0));
    item.mask = LVIF_IMAGE;
    item.iItem = 1;
    item.iSubItem = 2;
    SendMessageW(control, LVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item));
    EXPECT_EQ(5, item.iImage);
}

}  // namespace
}  // namespace velk::test
