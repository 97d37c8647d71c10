#include "winhelpers/hooks/list_view_extended.h"

#include <commctrl.h>

#include "platform/long_handles.h"
#include "winhelpers/hooks/column_fit.h"
#include "winhelpers/hooks/list_view_extended_errors.idl.h"

namespace velk {
namespace {

constexpr LONG kHooked[] = {WM_WINDOWPOSCHANGED, WM_NOTIFY};

LONG Send(HWND window, UINT message, WPARAM wParam = 0, LPARAM lParam = 0) noexcept {
    return static_cast<LONG>(SendMessageA(window, message, wParam, lParam));
}

HWND HeaderOf(HWND list) noexcept { return WindowFrom(Send(list, LVM_GETHEADER)); }

LONG StyleOf(HWND window) noexcept { return GetWindowLongA(window, GWL_STYLE); }

bool InReportView(HWND list) noexcept { return (StyleOf(list) & LVS_TYPEMASK) == LVS_REPORT; }

// Deliberate: the previous style is passed where the window handle belongs, so that as a rule that call does nothing;
// and the last bits of a style cannot be removed.
void ChangeStyle(HWND header, LONG style) noexcept {
    constexpr UINT kFlags = SWP_NOSIZE | SWP_NOMOVE | SWP_NOZORDER | SWP_FRAMECHANGED;
    if (style == 0) return;
    const LONG previous = SetWindowLongA(header, GWL_STYLE, style);
    SetWindowPos(WindowFrom(previous), nullptr, 0, 0, 0, 0, kFlags);
}

// Switches redrawing back on for a list view and its header at its end, also when stretching fails on the way.
class RedrawPause {
  public:
    RedrawPause(HWND list, HWND header) noexcept : list_(list), header_(header) {}
    RedrawPause(const RedrawPause&) = delete;
    RedrawPause& operator=(const RedrawPause&) = delete;
    ~RedrawPause() {
        Switch(true);
        InvalidateRect(header_, nullptr, FALSE);
        InvalidateRect(list_, nullptr, FALSE);
    }
    void Begin() noexcept { Switch(false); }

  private:
    void Switch(bool on) noexcept {
        Send(header_, WM_SETREDRAW, on);
        Send(list_, WM_SETREDRAW, on);
    }

    HWND list_;
    HWND header_;
};

}  // namespace

constinit const ClassInfo CListViewExtended::kInfo{
    .name = L"CListViewExtended",
    .clsid = __uuidof(::CListViewExtended),
    .iid = __uuidof(_CListViewExtended),
    .policy = FailurePolicy::ComponentFailure,
    .componentFailure = eErrListViewExtended_ComponentFailure,
};

CListViewExtended::~CListViewExtended() {
    if (attached_) EndHooks(window_, kHooked);
}

void CListViewExtended::Attach(LONG window) {
    if (!IsWindow(WindowFrom(window))) {
        throw ClassError(eErrListViewExtended_InvalidWindowHandle, L"Invalid window handle");
    }
    Detach();
    window_ = window;
    bool added = true;
    for (const LONG message : kHooked) added &= Succeeds([&] { AddHook(window_, message); });
    if (added) attached_ = true;
}

void CListViewExtended::Detach() {
    if (attached_) RemoveHooks(window_, kHooked);
}

HWND CListViewExtended::Window() const {
    const HWND window = WindowFrom(window_);
    if (IsWindow(window)) return window;
    throw ClassError(eErrListViewExtended_NotInitialized,
                     L"Object not properly initialized. Set the Hwnd property first");
}

STDMETHODIMP CListViewExtended::Init(LONG* hWnd) noexcept {
    return Guard([&] { Attach(Given(hWnd)); });
}

STDMETHODIMP CListViewExtended::put_hWnd(LONG* hWnd) noexcept {
    return Guard([&] { Attach(Given(hWnd)); });
}

STDMETHODIMP CListViewExtended::get_hWnd(LONG* result) noexcept { return Get(result, window_); }

STDMETHODIMP CListViewExtended::put_PreventColumnResize(VARIANT_BOOL* Value) noexcept {
    return Let(Value, preventColumnResize_);
}

STDMETHODIMP CListViewExtended::get_PreventColumnResize(VARIANT_BOOL* result) noexcept {
    return Get(result, preventColumnResize_);
}

STDMETHODIMP CListViewExtended::put_ResizeColumnsToFitWidth(VARIANT_BOOL* Value) noexcept {
    return Let(Value, fitWidth_);
}

STDMETHODIMP CListViewExtended::get_ResizeColumnsToFitWidth(VARIANT_BOOL* result) noexcept {
    return Get(result, fitWidth_);
}

STDMETHODIMP CListViewExtended::RemoveHeaderStyle(EListViewHeaderStyles* Style) noexcept {
    return Guard([&] {
        const LONG style = Given(Style);
        if (const HWND header = HeaderOf(Window())) ChangeStyle(header, StyleOf(header) & ~style);
    });
}

STDMETHODIMP CListViewExtended::ResizeColumns(EColumnsSizeStyle* Style) noexcept {
    return Guard([&] {
        const bool byItems = Given(Style) == eColumnsSizeStyle_AutosizeByItems;
        const HWND list = Window();
        const HWND header = HeaderOf(list);
        if (!header) return;
        const LONG count = Send(header, HDM_GETITEMCOUNT);
        const LPARAM width = byItems ? LVSCW_AUTOSIZE : LVSCW_AUTOSIZE_USEHEADER;
        for (LONG i = 0; i < count; ++i) Send(list, LVM_SETCOLUMNWIDTH, static_cast<WPARAM>(i), width);
    });
}

STDMETHODIMP CListViewExtended::SetHeaderStyle(EListViewHeaderStyles* Style) noexcept {
    return Guard([&] {
        const LONG style = Given(Style);
        if (const HWND header = HeaderOf(Window())) ChangeStyle(header, StyleOf(header) | style);
    });
}

STDMETHODIMP CListViewExtended::SetSubItemIcon(LONG* Item, LONG* SubItem, LONG* Icon) noexcept {
    return Guard([&] {
        LVITEMA item{};
        item.mask = LVIF_IMAGE;
        item.iItem = Given(Item);
        item.iSubItem = Given(SubItem);
        item.iImage = Given(Icon);
        const HWND list = Window();
        if (!HeaderOf(list)) return;
        const LONG extended = Send(list, LVM_GETEXTENDEDLISTVIEWSTYLE);
        Send(list, LVM_SETEXTENDEDLISTVIEWSTYLE, 0, extended | LVS_EX_SUBITEMIMAGES);
        Send(list, LVM_SETITEMA, 0, reinterpret_cast<LPARAM>(&item));
    });
}

STDMETHODIMP CListViewExtended::get_Redraw(VARIANT_BOOL* result) noexcept {
    return PassOn(result, [&] { return redraw_; });
}

STDMETHODIMP CListViewExtended::put_Redraw(VARIANT_BOOL* Value) noexcept {
    return PassOn([&] {
        redraw_ = Given(Value) != VARIANT_FALSE;
        if (window_) Send(WindowFrom(window_), WM_SETREDRAW, redraw_);
    });
}

HRESULT CListViewExtended::MsgResponse(LONG* result) noexcept {
    return PassOn(result, [&] {
        const bool resized = hooks_.DispatchedMessage() == WM_WINDOWPOSCHANGED;
        return static_cast<LONG>(resized ? eMsgResponse_PreviousFirst : eMsgResponse_HookAlone);
    });
}

HRESULT CListViewExtended::WindowProc(LONG window, LONG message, LONG_PTR wParam, LONG_PTR lParam,
                                      LONG_PTR* result) noexcept {
    return PassOn(result, [&] {
        if (message == WM_NOTIFY) return Notified(window, wParam, lParam);
        if (message == WM_WINDOWPOSCHANGED) StretchColumns(WindowFrom(window));
        return LONG_PTR{0};
    });
}

void CListViewExtended::StretchColumns(HWND list) {
    if (!InReportView(list) || !fitWidth_) return;
    RECT client{};
    GetClientRect(list, &client);
    const LONG width = client.right - client.left;
    if (width == lastWidth_) return;
    ColumnFit fit(width, StretchRatio(width, lastWidth_));
    lastWidth_ = width;
    const HWND header = HeaderOf(list);
    if (!header) return;
    RedrawPause pause(list, header);  // ends without columns, too
    const LONG count = Send(header, HDM_GETITEMCOUNT);
    if (count == 0) return;
    pause.Begin();
    const auto set = [&](LONG column, LONG to) { Send(list, LVM_SETCOLUMNWIDTH, static_cast<WPARAM>(column), to); };
    for (LONG i = 0; i < count - 1; ++i) set(i, fit.Scale(Send(list, LVM_GETCOLUMNWIDTH, static_cast<WPARAM>(i))));
    set(count - 1, fit.Rest());
}

// Deliberate: the wide forms of the two notifications pass through.
LONG_PTR CListViewExtended::Notified(LONG window, LONG_PTR wParam, LONG_PTR lParam) {
    const auto& header = Given(reinterpret_cast<const NMHDR*>(lParam));
    const bool resizes = header.code == HDN_BEGINTRACKA || header.code == HDN_DIVIDERDBLCLICKA;
    if (preventColumnResize_ && resizes) return 1;
    return hooks_.CallPreviousProc(window, WM_NOTIFY, wParam, lParam);
}

}  // namespace velk
