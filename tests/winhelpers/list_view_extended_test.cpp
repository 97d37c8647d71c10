#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>
#include <utility>
#include <vector>

#include "support/fake.h"
#include "winhelpers/hooked_fixture.h"

#include <commctrl.h>

namespace velk::test {
namespace {

using List = ComPtr<_CListViewExtended>;
using Widths = std::vector<int>;

constexpr std::pair<HRESULT, const wchar_t*> kNotInitialized{
    eErrListViewExtended_NotInitialized, L"Object not properly initialized. Set the Hwnd property first"};

List NewList() { return CreateObject<_CListViewExtended>(__uuidof(CListViewExtended)); }

// What the library sends from this thread: window, number, wParam and lParam.
class Sent {
  public:
    using Message = std::tuple<HWND, UINT, WPARAM, LPARAM>;
    using Messages = std::vector<Message>;

    explicit Sent(UINT number) : patch_(Library(), "SendMessageA", reinterpret_cast<void*>(&Send)) {
        number_ = number;
        messages_.clear();
    }
    const Messages& messages() const { return messages_; }

  private:
    static LRESULT WINAPI Send(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == number_) messages_.emplace_back(window, message, wParam, lParam);
        return SendMessageA(window, message, wParam, lParam);
    }

    static inline UINT number_;
    static inline Messages messages_;
    ImportPatch patch_;
};

// A real list view in report view with three columns, and below all hooks one that notes what the header has to say.
class ListView : public testing::Test {
  protected:
    ListView() : control(Make()) {
        below->handle = [this](const TestHook::Message& m, LONG*) {
            notified.push_back(static_cast<int>(static_cast<const NMHDR*>(LongToPtr(m.lParam))->code));
            return S_OK;
        };
        ISubclass* hook = below.get();
        EXPECT_EQ(S_OK, library.Manager()->AddHook(&hook, handle(), WM_NOTIFY));
        SetWidths({100, 100, 200});
    }

    HWND Make() {
        const HWND made = CreateWindowExW(0, WC_LISTVIEWW, L"", WS_CHILD | WS_VISIBLE | LVS_REPORT, 0, 0, 400, 200,
                                          parent.get(), nullptr, nullptr, nullptr);
        EXPECT_NE(nullptr, made);
        LVCOLUMNW column{};
        column.mask = LVCF_TEXT | LVCF_WIDTH;
        column.pszText = const_cast<LPWSTR>(L"Column");
        for (WPARAM i = 0; i < 3; ++i) SendMessageW(made, LVM_INSERTCOLUMNW, i, reinterpret_cast<LPARAM>(&column));
        return made;
    }
    LONG handle() const { return HandleToLong(control); }
    HWND Header() const { return reinterpret_cast<HWND>(SendMessageW(control, LVM_GETHEADER, 0, 0)); }
    void SetWidths(const Widths& widths) {
        for (WPARAM i = 0; i < widths.size(); ++i) SendMessageW(control, LVM_SETCOLUMNWIDTH, i, widths[i]);
    }
    Widths GetWidths() const {
        Widths widths;
        for (WPARAM i = 0; i < 3; ++i) {
            widths.push_back(static_cast<int>(SendMessageW(control, LVM_GETCOLUMNWIDTH, i, 0)));
        }
        return widths;
    }
    void Resize(int width) { SetWindowPos(control, nullptr, 0, 0, width, 200, SWP_NOZORDER | SWP_NOMOVE); }
    void Attach(bool stretches, bool prevents) {
        EXPECT_EQ(S_OK, Call(list.get(), L"Init", {Arg(handle())}).result);
        EXPECT_EQ(S_OK, Let(list.get(), L"ResizeColumnsToFitWidth", {Arg(stretches)}).result);
        EXPECT_EQ(S_OK, Let(list.get(), L"PreventColumnResize", {Arg(prevents)}).result);
    }
    LRESULT Notify(int code) {
        NMHEADERW header{};
        header.hdr = {Header(), 0, static_cast<UINT>(code)};
        notified.clear();
        return SendMessageW(control, WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&header));
    }

    HookLibrary library;
    std::vector<int> notified;  // what reached the control
    ComPtr<TestHook> below = TestHook::Make(eMsgResponse_PreviousFirst);
    TestWindow parent;
    HWND control;
    List list = NewList();
};

TEST_F(ListView, StretchesItsColumnsWithItsWidth) {
    Attach(true, false);
    SetWidths({100, 100, 50});
    Resize(401);
    EXPECT_EQ((Widths{100, 100, 201}), GetWidths()) << "at first only the last column changes";
    Resize(400);
    SetWidths({100, 100, 200});
    Resize(600);
    EXPECT_EQ((Widths{150, 150, 300}), GetWidths());
    SetWidths({10, 20, 30});
    SetWindowPos(control, nullptr, 0, 0, 600, 150, SWP_NOZORDER | SWP_NOMOVE);
    EXPECT_EQ((Widths{10, 20, 30}), GetWidths()) << "the height alone";
    Let(list.get(), L"ResizeColumnsToFitWidth", {Arg(false)});
    Resize(300);
    EXPECT_EQ((Widths{10, 20, 30}), GetWidths());
    Let(list.get(), L"ResizeColumnsToFitWidth", {Arg(true)});
    LONG result = 1;
    EXPECT_EQ(S_OK, list.As<ISubclass>()->WindowProc(handle(), WM_SIZE, 0, 0, &result));
    EXPECT_EQ(0, result);
    EXPECT_EQ((Widths{10, 20, 30}), GetWidths()) << "another message";
    const LONG report = GetWindowLongW(control, GWL_STYLE);
    SetWindowLongW(control, GWL_STYLE, (report & ~LVS_TYPEMASK) | LVS_LIST);
    Resize(500);
    SetWindowLongW(control, GWL_STYLE, report);
    EXPECT_EQ((Widths{10, 20, 30}), GetWidths()) << "report view only";
    Resize(300);
    EXPECT_EQ((Widths{5, 10, 285}), GetWidths()) << "the last stretch was at 600";
}

TEST_F(ListView, DrawsNothingWhileItStretches) {
    Attach(true, false);
    ShowWindow(parent.get(), SW_SHOW);
    UpdateWindow(control);
    Let(list.get(), L"Redraw", {Arg(true)});
    EXPECT_EQ(VARIANT_TRUE, Get(list.get(), L"Redraw").value.boolVal);
    const Sent sent(WM_SETREDRAW);
    Let(list.get(), L"Redraw", {Arg(false)});
    const HWND header = Header();
    std::vector<std::pair<HWND, BOOL>> invalid;
    const Fake invalidate("InvalidateRect", &InvalidateRect, [&](HWND window, const RECT* part, BOOL erase) {
        EXPECT_EQ(nullptr, part);
        return invalid.emplace_back(window, erase), InvalidateRect(window, part, erase);
    });
    Resize(500);
    EXPECT_EQ((std::vector<std::pair<HWND, BOOL>>{{header, FALSE}, {control, FALSE}}), invalid);
    Sent::Messages expected;
    for (const auto& [window, on] : {std::pair{control, 0}, {header, 0}, {control, 0}, {header, 1}, {control, 1}}) {
        expected.emplace_back(window, WM_SETREDRAW, on, 0);
    }
    EXPECT_EQ(expected, sent.messages()) << "the client's own first";
    for (int i = 0; i < 3; ++i) SendMessageW(control, LVM_DELETECOLUMN, 0, 0);
    Resize(450);
    for (const HWND window : {header, control}) expected.emplace_back(window, WM_SETREDRAW, 1, 0);
    EXPECT_EQ(expected, sent.messages()) << "without columns it is switched on all the same";
    EXPECT_EQ(VARIANT_FALSE, Get(list.get(), L"Redraw").value.boolVal) << "the client's value, whatever the hook does";
}

TEST_F(ListView, KeepsTheUserFromResizingColumns) {
    Attach(false, true);
    for (const bool prevents : {true, false}) {
        Let(list.get(), L"PreventColumnResize", {Arg(prevents)});
        for (const int code : {-306, -305}) {
            const LRESULT answer = Notify(code);
            EXPECT_EQ(prevents, answer == 1) << code;
            EXPECT_EQ(prevents, notified.empty()) << code << ": never reaches the control";
        }
    }
    Let(list.get(), L"PreventColumnResize", {Arg(true)});
    for (const int code : {-326, -325, -307, -12}) {  // the wide forms too
        EXPECT_EQ(0, Notify(code)) << code;
        EXPECT_EQ(code, notified.back()) << "after those that the control's own handling brought about";
    }
}

// The mouse on the divider behind the first column, as the header sees it.
TEST_F(ListView, HoldsTheDividerAgainstTheMouse) {
    Attach(false, true);
    SendMessageW(Header(), HDM_SETUNICODEFORMAT, FALSE, 0);
    const auto drag = [&] {
        SendMessageW(Header(), WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(99, 8));
        SendMessageW(Header(), WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(139, 8));
        SendMessageW(Header(), WM_LBUTTONUP, 0, MAKELPARAM(139, 8));
        return GetWidths()[0];
    };
    EXPECT_EQ(100, drag());
    Let(list.get(), L"PreventColumnResize", {Arg(false)});
    EXPECT_EQ(140, drag());
    SetWidths({100, 100, 200});
    Let(list.get(), L"PreventColumnResize", {Arg(true)});
    SendMessageW(Header(), HDM_SETUNICODEFORMAT, TRUE, 0);
    EXPECT_EQ(140, drag()) << "a header that speaks in the wide forms is not held";
}

TEST_F(ListView, ChangesTheHeadersStyle) {
    static HWND given;
    static UINT flags;
    struct Recorder {
        static BOOL WINAPI SetPosition(HWND window, HWND, int, int, int, int, UINT with) {
            return given = window, flags = with, FALSE;
        }
    };
    const ImportPatch patch(Library(), "SetWindowPos", reinterpret_cast<void*>(&Recorder::SetPosition));
    Attach(false, false);
    const auto style = [&] { return GetWindowLongW(Header(), GWL_STYLE); };
    SetWindowLongW(Header(), GWL_STYLE, style() & ~(HDS_FULLDRAG | HDS_HOTTRACK));
    const LONG before = style();
    EXPECT_EQ(S_OK, Call(list.get(), L"SetHeaderStyle", {Arg(LONG{HDS_FULLDRAG | HDS_HOTTRACK})}).result);
    EXPECT_EQ(before | HDS_FULLDRAG | HDS_HOTTRACK, style());
    EXPECT_EQ(LongToHandle(before), given) << "deliberately no window";
    EXPECT_EQ(39u, flags);
    EXPECT_EQ(S_OK, Call(list.get(), L"RemoveHeaderStyle", {Arg(LONG{HDS_FULLDRAG})}).result);
    EXPECT_EQ(before | HDS_HOTTRACK, style());
    given = nullptr;
    EXPECT_EQ(S_OK, Call(list.get(), L"RemoveHeaderStyle", {Arg(-1L)}).result);
    EXPECT_EQ(before | HDS_HOTTRACK, style()) << "the last bits stay";
    EXPECT_EQ(nullptr, given);
}

TEST_F(ListView, SizesItsColumns) {
    Attach(false, false);
    for (const auto& [style, width] :
         {std::pair{1L, LVSCW_AUTOSIZE}, {2L, LVSCW_AUTOSIZE_USEHEADER}, {7L, LVSCW_AUTOSIZE_USEHEADER}}) {
        const Sent sent(LVM_SETCOLUMNWIDTH);
        EXPECT_EQ(S_OK, Call(list.get(), L"ResizeColumns", {Arg(style)}).result);
        Sent::Messages expected;
        for (WPARAM i = 0; i < 3; ++i) expected.emplace_back(control, LVM_SETCOLUMNWIDTH, i, width);
        EXPECT_EQ(expected, sent.messages()) << style;
    }
}

TEST_F(ListView, ShowsIconsInSubItems) {
    Attach(false, false);
    LVITEMW item{};
    item.mask = LVIF_TEXT;
    item.pszText = const_cast<LPWSTR>(L"item");
    for (int i = 0; i < 3; ++i) SendMessageW(control, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
    SendMessageW(control, LVM_SETEXTENDEDLISTVIEWSTYLE, 0, LVS_EX_GRIDLINES);
    EXPECT_EQ(S_OK, Call(list.get(), L"SetSubItemIcon", {Arg(1L), Arg(2L), Arg(5L)}).result);
    EXPECT_EQ(LVS_EX_SUBITEMIMAGES | LVS_EX_GRIDLINES, SendMessageW(control, LVM_GETEXTENDEDLISTVIEWSTYLE, 0, 0));
    item.mask = LVIF_IMAGE;
    item.iItem = 1;
    item.iSubItem = 2;
    SendMessageW(control, LVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item));
    EXPECT_EQ(5, item.iImage);
    control = parent.get();  // a window without a header
    Attach(false, false);
    const Sent sent(LVM_SETITEMA);
    EXPECT_EQ(S_OK, Call(list.get(), L"SetSubItemIcon", {Arg(1L), Arg(2L), Arg(5L)}).result);
    EXPECT_TRUE(sent.messages().empty());
}

TEST_F(ListView, RaisesWithoutAWindow) {
    const auto expectAll = [&] {
        const VARIANT number = Arg(2L);
        for (const wchar_t* name : {L"SetHeaderStyle", L"RemoveHeaderStyle", L"ResizeColumns", L"SetSubItemIcon"}) {
            const bool icon = name[3] == L'S';
            const Outcome outcome =
                icon ? Call(list.get(), name, {number, number, number}) : Call(list.get(), name, {number});
            ExpectRaised(outcome, kNotInitialized, L"VelkSprt.CListViewExtended");
        }
    };
    expectAll();
    EXPECT_EQ(VARIANT_FALSE, Get(list.get(), L"Redraw").value.boolVal);
    EXPECT_EQ(S_OK, Let(list.get(), L"Redraw", {Arg(true)}).result) << "for later";
    for (const Outcome& outcome : {Call(list.get(), L"Init", {Arg(3L)}), Let(list.get(), L"hWnd", {Arg(3L)})}) {
        ExpectRaised(outcome, {eErrListViewExtended_InvalidWindowHandle, L"Invalid window handle"},
                     L"VelkSprt.CListViewExtended");
    }
    EXPECT_EQ(0, Get(list.get(), L"hWnd").value.lVal);
    Attach(false, false);
    DestroyWindow(control);
    expectAll();
}

TEST_F(ListView, MovesToAnotherAndGoesWithTheLast) {
    const HWND first = control;
    Attach(true, true);
    EXPECT_EQ(S_OK, Call(list.get(), L"Init", {Arg(HandleToLong(GetDesktopWindow()))}).result) << "without hooks";
    control = Make();
    Attach(true, true);
    EXPECT_EQ(handle(), Get(list.get(), L"hWnd").value.lVal);
    EXPECT_NE(0, SendMessageW(first, LVM_GETHEADER, 0, 0));
    SetWidths({100, 100, 200});
    Resize(500);
    EXPECT_EQ((Widths{100, 100, 300}), GetWidths());
    std::swap(control, const_cast<HWND&>(first));
    EXPECT_EQ(0, Notify(-306)) << "the first list view has no hook any more";
    list = nullptr;
    EXPECT_FALSE(CanUnload()) << "held as long as it is attached";
    DestroyWindow(first);
    EXPECT_TRUE(CanUnload());
}

TEST(ListViewAlone, WorksWithoutHooksAndSaysWhatIsMissing) {
    const NoHookLibrary none;
    const TestWindow parent;
    const HWND control = CreateWindowExW(0, WC_LISTVIEWW, L"", WS_CHILD | LVS_REPORT, 0, 0, 400, 200, parent.get(),
                                         nullptr, nullptr, nullptr);
    const List list = NewList();
    EXPECT_EQ(S_OK, Call(list.get(), L"Init", {Arg(HandleToLong(control))}).result);
    EXPECT_EQ(1, std::ranges::count(none.said(), L'\n'));
    EXPECT_EQ(HandleToLong(control), Get(list.get(), L"hWnd").value.lVal);
    EXPECT_EQ(S_OK, Call(list.get(), L"ResizeColumns", {Arg(1L)}).result);
}

}  // namespace
}  // namespace velk::test
