#include "winhelpers/menu/icon_menu.h"

#include <utility>

#include "platform/colour.h"
#include "platform/long_handles.h"

namespace velk {
namespace {

HMENU RequireMenu(LONG handle) {
    if (!IsMenu(HandleFrom<HMENU>(handle))) throw RuntimeError(Error::InvalidProcedureCall);
    return HandleFrom<HMENU>(handle);
}

UINT RequireCommand(LONG command) {
    if (command == 0) throw RuntimeError(Error::InvalidProcedureCall);
    return static_cast<UINT>(command);
}

void RequireOwnWindow(LONG handle) {
    const DWORD thread = GetWindowThreadProcessId(WindowFrom(handle), nullptr);
    if (thread != GetCurrentThreadId() || !IsWhole(handle)) throw RuntimeError(Error::InvalidProcedureCall);
}

COLORREF MaskOf(OLE_COLOR colour) {
    constexpr auto kNone = static_cast<OLE_COLOR>(-1);
    if (colour == kNone) return CLR_INVALID;
    const auto translated = static_cast<COLORREF>(TranslateColor(static_cast<LONG>(colour)));
    if (translated == CLR_INVALID) throw RuntimeError(Error::InvalidProcedureCall);
    return translated;
}

}  // namespace

constinit const ClassInfo cIconMenu::kInfo{
    .name = L"cIconMenu",
    .clsid = __uuidof(::cIconMenu),
    .iid = __uuidof(_cIconMenu),
    .policy = FailurePolicy::PassOn,
};

cIconMenu::~cIconMenu() {
    if (!window_) return;
    messages_.RestoreMenus();
    EndHooks(window_, MenuMessages::kHooked);
}

STDMETHODIMP cIconMenu::Attach(LONG hWnd) noexcept {
    return Guard([&] {
        RequireOwnWindow(hWnd);
        if (hWnd != window_) Hook(hWnd);
    });
}

STDMETHODIMP cIconMenu::Detach() noexcept {
    return Guard([&] { Unhook(); });
}

// The new window first, so that a failure leaves the old one attached.
void cIconMenu::Hook(LONG window) {
    try {
        for (const LONG message : MenuMessages::kHooked) AddHook(window, message);
    } catch (...) {
        Succeeds([&] { RemoveHooks(window, MenuMessages::kHooked); });
        throw;
    }
    Unhook();
    window_ = window;
}

void cIconMenu::Unhook() {
    if (!window_) return;
    messages_.RestoreMenus();
    RemoveHooks(std::exchange(window_, 0), MenuMessages::kHooked);
}

STDMETHODIMP cIconMenu::get_hWnd(LONG* result) noexcept { return Get(result, window_); }

STDMETHODIMP cIconMenu::get_ImageList(LONG* result) noexcept {
    return Guard(result, [&] { return icons_.list.handle(); });
}

STDMETHODIMP cIconMenu::put_ImageList(LONG Handle) noexcept {
    return Guard([&] { icons_.list.Set(Handle); });
}

STDMETHODIMP cIconMenu::get_MaskColor(OLE_COLOR* result) noexcept { return Get(result, maskColor_); }

STDMETHODIMP cIconMenu::put_MaskColor(OLE_COLOR Color) noexcept {
    return Guard([&] {
        icons_.mask = MaskOf(Color);
        maskColor_ = Color;
    });
}

void cIconMenu::RequireImage(LONG image) const {
    const bool beyond = icons_.list.handle() && image >= icons_.list.Count();
    if (image < MenuIcon::kNoImage || beyond) throw RuntimeError(Error::SubscriptOutOfRange);
}

STDMETHODIMP cIconMenu::get_CommandImage(LONG Command, LONG* result) noexcept {
    return Guard(result, [&] { return icons_.commands.Image(RequireCommand(Command)); });
}

STDMETHODIMP cIconMenu::put_CommandImage(LONG Command, LONG Image) noexcept {
    return Guard([&] {
        RequireImage(Image);
        icons_.commands.SetImage(RequireCommand(Command), Image);
    });
}

STDMETHODIMP cIconMenu::get_CommandPicture(LONG Command, IPictureDisp** result) noexcept {
    return Guard(result, [&] { return icons_.commands.Picture(RequireCommand(Command)); });
}

STDMETHODIMP cIconMenu::put_CommandPicture(LONG Command, IPictureDisp* Picture) noexcept {
    return Guard([&] { icons_.commands.SetPicture(RequireCommand(Command), Picture); });
}

STDMETHODIMP cIconMenu::putref_CommandPicture(LONG Command, IPictureDisp* Picture) noexcept {
    return put_CommandPicture(Command, Picture);
}

STDMETHODIMP cIconMenu::get_SubmenuImage(LONG Menu, LONG* result) noexcept {
    return Guard(result, [&] { return icons_.submenus.Image(RequireMenu(Menu)); });
}

STDMETHODIMP cIconMenu::put_SubmenuImage(LONG Menu, LONG Image) noexcept {
    return Guard([&] {
        RequireImage(Image);
        icons_.submenus.SetImage(RequireMenu(Menu), Image);
    });
}

STDMETHODIMP cIconMenu::get_SubmenuPicture(LONG Menu, IPictureDisp** result) noexcept {
    return Guard(result, [&] { return icons_.submenus.Picture(RequireMenu(Menu)); });
}

STDMETHODIMP cIconMenu::put_SubmenuPicture(LONG Menu, IPictureDisp* Picture) noexcept {
    return Guard([&] { icons_.submenus.SetPicture(RequireMenu(Menu), Picture); });
}

STDMETHODIMP cIconMenu::putref_SubmenuPicture(LONG Menu, IPictureDisp* Picture) noexcept {
    return put_SubmenuPicture(Menu, Picture);
}

STDMETHODIMP cIconMenu::ClearIcons() noexcept {
    return Guard([&] {
        icons_.commands.Clear();
        icons_.submenus.Clear();
    });
}

HRESULT cIconMenu::MsgResponse(LONG* result) noexcept {
    return Guard(result, [&] {
        const bool afterwards = MenuMessages::IsHandledAfterwards(hooks_.DispatchedMessage());
        return static_cast<LONG>(afterwards ? eMsgResponse_PreviousFirst : eMsgResponse_HookAlone);
    });
}

HRESULT cIconMenu::WindowProc(LONG window, LONG message, LONG_PTR wParam, LONG_PTR lParam, LONG_PTR* result) noexcept {
    return Guard(result, [&] {
        if (message == WM_DESTROY) return Unhook(), LONG_PTR{0};
        const auto handled =
            messages_.Handle(WindowFrom(window), static_cast<UINT>(message), static_cast<WPARAM>(wParam), lParam);
        return handled ? *handled : hooks_.CallPreviousProc(window, message, wParam, lParam);
    });
}

}  // namespace velk
