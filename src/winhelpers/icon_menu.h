// cIconMenu: menus with icons for a window, drawn through the messages that the window gets about its menus.
//
// What a client asks for in a wrong way is its error. What goes wrong while messages are handled has nobody to be
// raised to: it is shown, and the message goes its usual way.
#pragma once

#include "frame/automation_object.h"
#include "velksprt.h"
#include "winhelpers/hook_client.h"
#include "winhelpers/menu_icons.h"
#include "winhelpers/menu_painter.h"
#include "winhelpers/open_menus.h"
#include "winhelpers/subclass_face.h"

namespace velk {

class cIconMenu final : public AutomationObject<_cIconMenu> {
  public:
    static const ClassInfo kInfo;

    cIconMenu() noexcept : AutomationObject(kInfo) { icons_.mask = kMagenta; }
    ~cIconMenu() override;

    STDMETHODIMP Attach(LONG hWnd) noexcept override;
    STDMETHODIMP Detach() noexcept override;
    STDMETHODIMP get_hWnd(LONG* result) noexcept override;
    STDMETHODIMP get_ImageList(LONG* result) noexcept override;
    STDMETHODIMP put_ImageList(LONG Handle) noexcept override;
    STDMETHODIMP get_MaskColor(LONG* result) noexcept override;
    STDMETHODIMP put_MaskColor(LONG Color) noexcept override;
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

    STDMETHODIMP InterfaceSupportsErrorInfo(REFIID iid) noexcept override {
        return iid == __uuidof(ISubclass) ? S_OK : AutomationObject::InterfaceSupportsErrorInfo(iid);
    }

    // Of ISubclass.
    HRESULT MsgResponse(LONG* result) noexcept;
    HRESULT WindowProc(LONG window, LONG message, LONG wParam, LONG lParam, LONG* result) noexcept;

  protected:
    void* ExtraFace(REFIID iid) noexcept override { return iid == __uuidof(ISubclass) ? &subclass_ : nullptr; }

  private:
    static constexpr LONG kMagenta = RGB(255, 0, 255);

    void Hook(LONG window);
    void RemoveHooks(LONG window);
    void Unhook();

    // True when the message is settled, with its result.
    bool Handle(LONG message, LONG wParam, LONG lParam, LONG* result);
    void OpenPopup(HMENU menu);
    bool MeasureItem(MEASUREITEMSTRUCT* measured);
    bool DrawItem(const DRAWITEMSTRUCT* drawn);
    bool FindKey(HMENU menu, WORD key, LONG* result);
    void CloseMenus() noexcept;

    void RequireImage(LONG image) const;
    const MenuIcon* IconOf(const OpenItem& item) const noexcept;

    SubclassFace<cIconMenu> subclass_{*this};
    HookClient hooks_;
    LONG window_ = 0;
    LONG maskColor_ = kMagenta;
    MenuIcons icons_;
    MenuPainter painter_;
    OpenMenus menus_;
    std::vector<char16_t> keys_;
};

}  // namespace velk
