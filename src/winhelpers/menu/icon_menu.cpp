#include "winhelpers/menu/icon_menu.h"

#include <algorithm>
#include <utility>

#include "platform/colour.h"
#include "platform/long_handles.h"
#include "platform/text.h"
#include "winhelpers/menu/menu_text.h"
#include "winhelpers/support/support_guard.h"

namespace velk {
namespace {

constexpr const wchar_t* kClass = L"cIconMenu";

// The first four are handled after the window did, whose result counts; the rest in its place, as far as they concern
// an item of ours.
constexpr LONG kMessages[] = {WM_INITMENUPOPUP, WM_EXITMENULOOP, WM_SETTINGCHANGE, WM_DESTROY,
                              WM_ENTERMENULOOP, WM_MEASUREITEM,  WM_DRAWITEM,      WM_MENUCHAR};

bool IsHandledAfterwards(LONG message) noexcept {
    const auto* const end = kMessages + 4;
    return std::find(kMessages, end, message) != end;
}

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
    if (thread != GetCurrentThreadId()) throw RuntimeError(Error::InvalidProcedureCall);
}

COLORREF MaskOf(LONG colour) {
    constexpr LONG kNone = -1;
    if (colour == kNone) return CLR_INVALID;
    const auto translated = static_cast<COLORREF>(TranslateColor(colour));
    if (translated == CLR_INVALID) throw RuntimeError(Error::InvalidProcedureCall);
    return translated;
}

ComPtr<IPictureDisp> Handed(IPicture* picture) noexcept { return ComPtr<IPicture>(picture).As<IPictureDisp>(); }

char16_t UpperCase(char16_t character) noexcept {
    auto folded = static_cast<wchar_t>(character);
    CharUpperBuffW(&folded, 1);
    return static_cast<char16_t>(folded);
}

// The character that a menu was sent, which is in the code page of a window that takes no wide ones.
char16_t KeyOf(HWND window, WORD key) noexcept {
    if (IsWindowUnicode(window)) return UpperCase(key);
    const char narrow[] = {static_cast<char>(key)};
    wchar_t wide = 0;
    return MultiByteToWideChar(CP_ACP, 0, narrow, 1, &wide, 1) == 1 ? UpperCase(static_cast<char16_t>(wide)) : 0;
}

// Also in a loop that began before the window was attached.
bool InMenuMode() noexcept {
    GUITHREADINFO info{};
    info.cbSize = sizeof info;
    return GetGUIThreadInfo(GetCurrentThreadId(), &info) && info.flags & (GUI_INMENUMODE | GUI_POPUPMENUMODE);
}

}  // namespace

constinit const ClassInfo cIconMenu::kInfo{
    .name = kClass,
    .clsid = __uuidof(::cIconMenu),
    .iid = __uuidof(_cIconMenu),
    .events = nullptr,
    .policy = FailurePolicy::PassOn,
    .componentFailure = S_OK,
    .creationFailed = L"An error has occured in VelkSupport.cIconMenu.Class_Initialize ",
};

cIconMenu::~cIconMenu() {
    Quietly([&] { Unhook(); });
}

STDMETHODIMP cIconMenu::Attach(LONG hWnd) noexcept {
    return Guard(L"Attach", [&] {
        RequireOwnWindow(hWnd);
        if (hWnd != window_) Hook(hWnd);
    });
}

STDMETHODIMP cIconMenu::Detach() noexcept {
    return Guard(L"Detach", [&] { Unhook(); });
}

// The new window first, so that a failure leaves the old one attached.
void cIconMenu::Hook(LONG window) {
    try {
        for (const LONG message : kMessages) AddHook(window, message);
    } catch (...) {
        RemoveHooks(window);
        throw;
    }
    Unhook();
    window_ = window;
}

void cIconMenu::RemoveHooks(LONG window) {
    for (const LONG message : kMessages) RemoveHook(window, message);
}

STDMETHODIMP cIconMenu::get_hWnd(LONG* result) noexcept {
    return Guard(L"hWnd", result, [&] { return window_; });
}

STDMETHODIMP cIconMenu::get_ImageList(LONG* result) noexcept {
    return Guard(L"ImageList", result, [&] { return icons_.list.handle(); });
}

STDMETHODIMP cIconMenu::put_ImageList(LONG Handle) noexcept {
    return Guard(L"ImageList", [&] { icons_.list.Set(Handle); });
}

STDMETHODIMP cIconMenu::get_MaskColor(LONG* result) noexcept {
    return Guard(L"MaskColor", result, [&] { return maskColor_; });
}

STDMETHODIMP cIconMenu::put_MaskColor(LONG Color) noexcept {
    return Guard(L"MaskColor", [&] {
        icons_.mask = MaskOf(Color);
        maskColor_ = Color;
    });
}

void cIconMenu::RequireImage(LONG image) const {
    const bool beyond = icons_.list.handle() && image >= icons_.list.Count();
    if (image < MenuIcon::kNoImage || beyond) throw RuntimeError(Error::SubscriptOutOfRange);
}

STDMETHODIMP cIconMenu::get_CommandImage(LONG Command, LONG* result) noexcept {
    return Guard(L"CommandImage", result, [&] { return icons_.commands.Image(RequireCommand(Command)); });
}

STDMETHODIMP cIconMenu::put_CommandImage(LONG Command, LONG Image) noexcept {
    return Guard(L"CommandImage", [&] {
        RequireImage(Image);
        icons_.commands.SetImage(RequireCommand(Command), Image);
    });
}

STDMETHODIMP cIconMenu::get_CommandPicture(LONG Command, IPictureDisp** result) noexcept {
    return Guard(L"CommandPicture", result, [&] { return Handed(icons_.commands.Picture(RequireCommand(Command))); });
}

STDMETHODIMP cIconMenu::put_CommandPicture(LONG Command, IPictureDisp* Picture) noexcept {
    return Guard(L"CommandPicture", [&] { icons_.commands.SetPicture(RequireCommand(Command), Picture); });
}

STDMETHODIMP cIconMenu::putref_CommandPicture(LONG Command, IPictureDisp* Picture) noexcept {
    return put_CommandPicture(Command, Picture);
}

STDMETHODIMP cIconMenu::get_SubmenuImage(LONG Menu, LONG* result) noexcept {
    return Guard(L"SubmenuImage", result, [&] { return icons_.submenus.Image(RequireMenu(Menu)); });
}

STDMETHODIMP cIconMenu::put_SubmenuImage(LONG Menu, LONG Image) noexcept {
    return Guard(L"SubmenuImage", [&] {
        RequireImage(Image);
        icons_.submenus.SetImage(RequireMenu(Menu), Image);
    });
}

STDMETHODIMP cIconMenu::get_SubmenuPicture(LONG Menu, IPictureDisp** result) noexcept {
    return Guard(L"SubmenuPicture", result, [&] { return Handed(icons_.submenus.Picture(RequireMenu(Menu))); });
}

STDMETHODIMP cIconMenu::put_SubmenuPicture(LONG Menu, IPictureDisp* Picture) noexcept {
    return Guard(L"SubmenuPicture", [&] { icons_.submenus.SetPicture(RequireMenu(Menu), Picture); });
}

STDMETHODIMP cIconMenu::putref_SubmenuPicture(LONG Menu, IPictureDisp* Picture) noexcept {
    return put_SubmenuPicture(Menu, Picture);
}

STDMETHODIMP cIconMenu::ClearIcons() noexcept {
    return Guard(L"ClearIcons", [&] {
        icons_.commands.Clear();
        icons_.submenus.Clear();
    });
}

HRESULT cIconMenu::MsgResponse(LONG* result) noexcept {
    if (!result) return E_POINTER;
    *result = eMsgResponse_HookAlone;
    velk::Guard(kClass, L"MsgResponse", [&] {
        if (IsHandledAfterwards(hooks_.DispatchedMessage())) *result = eMsgResponse_PreviousFirst;
    });
    return S_OK;
}

HRESULT cIconMenu::WindowProc(LONG window, LONG message, LONG wParam, LONG lParam, LONG* result) noexcept {
    if (!result) return E_POINTER;
    *result = 0;
    bool settled = false;
    velk::Guard(kClass, L"WindowProc", [&] { settled = Handle(message, wParam, lParam, result); });
    if (settled || IsHandledAfterwards(message)) return S_OK;
    return PassOn(result, [&] { return hooks_.CallPreviousProc(window, message, wParam, lParam); });
}

bool cIconMenu::Handle(LONG message, LONG wParam, LONG lParam, LONG* result) {
    switch (message) {
        case WM_INITMENUPOPUP:
            if (!HIWORD(lParam)) OpenPopup(HandleFrom<HMENU>(wParam));  // the system menu is the system's
            return true;
        case WM_ENTERMENULOOP:
            menus_.EnterLoop();
            return false;
        case WM_EXITMENULOOP:
            menus_.LeaveLoop();
            ForgetGoneMenus();
            return true;
        case WM_SETTINGCHANGE:
            painter_.ForgetSettings();
            return true;
        case WM_DESTROY:
            Unhook();
            return true;
        case WM_MEASUREITEM:
            *result = TRUE;
            return MeasureItem(AddressFrom<MEASUREITEMSTRUCT*>(lParam));
        case WM_DRAWITEM:
            *result = TRUE;
            return DrawItem(AddressFrom<const DRAWITEMSTRUCT*>(lParam));
        case WM_MENUCHAR:
            return FindKey(HandleFrom<HMENU>(lParam), LOWORD(wParam), result);
        default:
            return false;
    }
}

// An accelerator's menu is announced like one that opens, but is not shown, and no loop ends.
void cIconMenu::OpenPopup(HMENU menu) {
    if (!menus_.InLoop() && !InMenuMode()) return;
    if (GetWindowLongPtrW(WindowFrom(window_), GWL_EXSTYLE) & WS_EX_LAYOUTRTL) return;
    if (!menus_.AnyOpen()) painter_.Prepare(icons_.CellSize());
    menus_.Open(menu, [this](OpenItem& item, UINT state) {
        if (item.IsSeparator()) return 0;
        const TextWidths widths = painter_.Measure(menus_.text(), state & MFS_DEFAULT);
        item.labelWidth = widths.label;
        return widths.accelerator;
    });
}

bool cIconMenu::MeasureItem(MEASUREITEMSTRUCT* measured) {
    const OpenMenu* const menu = measured && measured->CtlType == ODT_MENU ? menus_.Find(measured->itemData) : nullptr;
    if (!menu) return false;
    const OpenItem& item = OpenMenu::ItemOf(measured->itemData);
    const Size size =
        item.IsSeparator() ? painter_.SeparatorSize() : painter_.ItemSize(item.labelWidth, menu->widestAccelerator);
    measured->itemWidth = static_cast<UINT>(size.width);
    measured->itemHeight = static_cast<UINT>(size.height);
    return true;
}

bool cIconMenu::DrawItem(const DRAWITEMSTRUCT* drawn) {
    const OpenMenu* const menu = drawn && drawn->CtlType == ODT_MENU ? menus_.Find(drawn->itemData) : nullptr;
    if (!menu) return false;
    const OpenItem& item = OpenMenu::ItemOf(drawn->itemData);
    const auto now = menus_.Read(*menu, item);
    if (!now) return true;  // taken away meanwhile, and its data mean nothing to the client
    DrawnItem shown{menus_.text(),           drawn->itemState, item.IsSeparator(), (now->type & MFT_RADIOCHECK) != 0,
                    now->submenu != nullptr, IconOf(item)};
    if (now->state & MFS_DEFAULT) shown.state |= ODS_DEFAULT;  // Wine does not say so
    painter_.Draw(shown, icons_, drawn->hDC, drawn->rcItem);
    return true;
}

const MenuIcon* cIconMenu::IconOf(const OpenItem& item) const noexcept {
    return item.submenu ? icons_.submenus.Find(item.submenu) : icons_.commands.Find(item.id);
}

// Mnemonics first; items without one answer to their first letter. Items that are not ours are found by the system, or
// by the client that draws them.
bool cIconMenu::FindKey(HMENU menu, WORD key, LONG* result) {
    const OpenMenu* const opened = menus_.FindMenu(menu);
    if (!opened) return false;
    const int count = GetMenuItemCount(menu);
    std::size_t current = KeyMatch::kNone;
    const auto find = [&](auto keyOf) {
        keys_.clear();
        for (int i = 0; i < count; ++i) {
            const auto item = menus_.Read(menu, static_cast<UINT>(i));
            const bool ours = item && opened->Holds(item->data);
            const MenuText text = SplitMenuText(Utf16(ours ? menus_.text() : L""));
            if (item && (item->state & MFS_HILITE)) current = static_cast<std::size_t>(i);
            keys_.push_back(UpperCase(keyOf(text.label)));
        }
        return FindMenuKey(keys_, KeyOf(WindowFrom(window_), key), current);
    };
    KeyMatch match = find([](std::u16string_view label) { return MnemonicOf(label); });
    if (match.position == KeyMatch::kNone) {
        match = find(
            [](std::u16string_view label) { return label.empty() || MnemonicOf(label) ? char16_t{0} : label.front(); });
    }
    if (match.position == KeyMatch::kNone) return false;
    *result = MAKELONG(match.position, match.onlyOne ? MNC_EXECUTE : MNC_SELECT);
    return true;
}

// Their handles may come back with other menus.
void cIconMenu::ForgetGoneMenus() noexcept {
    icons_.submenus.RemoveIf([](HMENU menu) { return !IsMenu(menu); });
}

// Also when the window is destroyed, whose menus may have gone with it.
void cIconMenu::Unhook() {
    if (!window_) return;
    menus_.RestoreAll();
    ForgetGoneMenus();
    RemoveHooks(std::exchange(window_, 0));
}

}  // namespace velk
