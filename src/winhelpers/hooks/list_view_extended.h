// CListViewExtended: header styles, column widths and sub-item icons of a list view, and a hook that stretches its
// columns and keeps the user from resizing them.
//
// Kept as described: the attached flag is never cleared, and only the header's ANSI notifications are held back.
#pragma once

#include "winhelpers/hooks/hooking_object.h"
#include "winhelpers/hooks/list_view_extended.idl.h"

namespace velk {

class CListViewExtended final : public HookingObject<_CListViewExtended> {
  public:
    static const ClassInfo kInfo;

    CListViewExtended() noexcept : HookingObject(kInfo) {}
    ~CListViewExtended() override;

    STDMETHODIMP Init(LONG* hWnd) noexcept override;
    STDMETHODIMP put_hWnd(LONG* hWnd) noexcept override;
    STDMETHODIMP get_hWnd(LONG* result) noexcept override;
    STDMETHODIMP put_PreventColumnResize(VARIANT_BOOL* Value) noexcept override;
    STDMETHODIMP get_PreventColumnResize(VARIANT_BOOL* result) noexcept override;
    STDMETHODIMP put_ResizeColumnsToFitWidth(VARIANT_BOOL* Value) noexcept override;
    STDMETHODIMP get_ResizeColumnsToFitWidth(VARIANT_BOOL* result) noexcept override;
    STDMETHODIMP RemoveHeaderStyle(EListViewHeaderStyles* Style) noexcept override;
    STDMETHODIMP ResizeColumns(EColumnsSizeStyle* Style) noexcept override;
    STDMETHODIMP SetHeaderStyle(EListViewHeaderStyles* Style) noexcept override;
    STDMETHODIMP SetSubItemIcon(LONG* Item, LONG* SubItem, LONG* Icon) noexcept override;
    STDMETHODIMP get_Redraw(VARIANT_BOOL* result) noexcept override;
    STDMETHODIMP put_Redraw(VARIANT_BOOL* Value) noexcept override;

    HRESULT MsgResponse(LONG* result) noexcept override;
    HRESULT WindowProc(LONG window, LONG message, LONG_PTR wParam, LONG_PTR lParam, LONG_PTR* result) noexcept override;

  private:
    void Attach(LONG window);
    void Detach();

    HWND Window() const;  // raises that there is none
    void StretchColumns(HWND list);
    LONG_PTR Notified(LONG window, LONG_PTR wParam, LONG_PTR lParam);

    LONG window_ = 0;
    LONG lastWidth_ = 0;
    bool attached_ = false;
    bool preventColumnResize_ = false;
    bool fitWidth_ = false;
    bool redraw_ = false;
};

}  // namespace velk
