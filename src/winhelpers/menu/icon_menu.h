// cIconMenu: menus with icons for a window, drawn through the messages that the window gets about its menus.
//
// A member that fails raises its error. A message that cannot be handled, for want of memory, is handled by the window
// as if it were not attached: a message box in the middle of a menu would bring on more messages.
#pragma once

#include "winhelpers/hooks/hooking_object.h"
#include "winhelpers/menu/icon_menu.idl.h"
#include "winhelpers/menu/menu_icons.h"
#include "winhelpers/menu/menu_messages.h"

namespace velk {

class cIconMenu final : public HookingObject<_cIconMenu> {
  public:
    static const ClassInfo kInfo;

    cIconMenu() noexcept : HookingObject(kInfo) { icons_.mask = kMagenta; }
    ~cIconMenu() override;

    STDMETHODIMP Attach(LONG hWnd) noexcept override;
    STDMETHODIMP Detach() noexcept override;
    STDMETHODIMP get_hWnd(LONG* result) noexcept override;
    STDMETHODIMP get_ImageList(LONG* result) noexcept override;
    STDMETHODIMP put_ImageList(LONG Handle) noexcept override;
    STDMETHODIMP get_MaskColor(OLE_COLOR* result) noexcept override;
    STDMETHODIMP put_MaskColor(OLE_COLOR Color) noexcept override;
    STDMETHODIMP get_CommandImage(LONG Command, LONG* result) noexcept override;
    STDMETHODIMP put_CommandImage(LONG Command, LONG Image) noexcept override;
    STDMETHODIMP get_CommandPicture(LONG Command, IPictureDisp** result) noexcept override;
    STDMETHODIMP put_CommandPicture(LONG Command, IPictureDisp* Picture) noexcept override;
    STDMETHODIMP putref_CommandPicture(LONG Command, IPictureDisp* Picture) noexcept override;
    STDMETHODIMP get_SubmenuImage(LONG Menu, LONG* result) noexcept override;
    STDMETHODIMP put_SubmenuImage(LONG Menu, LONG Image) noexcept override;
    STDMETHODIMP get_SubmenuPicture(LONG Menu, IPictureDisp** result) noexcept override;
    STDMETHODIMP put_SubmenuPicture(LONG Menu, IPictureDisp* Picture) noexcept override;
    STDMETHODIMP putref_SubmenuPicture(LONG Menu, IPictureDisp* Picture) noexcept override;
    STDMETHODIMP ClearIcons() noexcept override;

    HRESULT MsgResponse(LONG* result) noexcept override;
    HRESULT WindowProc(LONG window, LONG message, LONG_PTR wParam, LONG_PTR lParam, LONG_PTR* result) noexcept override;

  private:
    static constexpr LONG kMagenta = RGB(255, 0, 255);

    void Hook(LONG window);
    void Unhook();
    void RequireImage(LONG image) const;

    LONG window_ = 0;
    OLE_COLOR maskColor_ = kMagenta;
    MenuIcons icons_;
    MenuMessages messages_{icons_};
};

}  // namespace velk
