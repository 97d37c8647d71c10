#include "velksub/hooked_window.h"

namespace velk {
namespace {

constexpr const wchar_t* kMark = L"VelkSub.HookedWindow";

WNDPROC ProcedureOf(HWND window, bool unicode) noexcept {
    const auto get = unicode ? GetWindowLongPtrW : GetWindowLongPtrA;
    return reinterpret_cast<WNDPROC>(get(window, GWLP_WNDPROC));
}

WNDPROC SetProcedure(HWND window, bool unicode, WNDPROC procedure) noexcept {
    const auto set = unicode ? SetWindowLongPtrW : SetWindowLongPtrA;
    return reinterpret_cast<WNDPROC>(set(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(procedure)));
}

// No code lies so high in a process's memory.
bool IsHandle(WNDPROC procedure) noexcept { return HIWORD(reinterpret_cast<ULONG_PTR>(procedure)) == 0xFFFF; }

}  // namespace

bool HookedWindow::Subclass() noexcept {
    unicode_ = IsWindowUnicode(handle_) != FALSE;
    if (!SetPropW(handle_, kMark, this)) return false;
    previous_ = SetProcedure(handle_, unicode_, procedure_);
    if (previous_ == procedure_) previous_ = unicode_ ? DefWindowProcW : DefWindowProcA;  // put back by another program
    previousIsHandle_ = IsHandle(previous_);
    if (!previous_) RemoveMark();
    return previous_ != nullptr;
}

bool HookedWindow::Restore() noexcept {
    if (ProcedureOf(handle_, unicode_) != procedure_) return false;
    SetProcedure(handle_, unicode_, previous_);
    RemoveMark();
    return true;
}

void HookedWindow::RemoveMark() noexcept { RemovePropW(handle_, kMark); }

bool HookedWindow::IsStillThere() const noexcept {
    return GetPropW(handle_, kMark) == this || ProcedureOf(handle_, unicode_) == procedure_;
}

bool HookedWindow::IsSubclassed(HWND window) noexcept { return GetPropW(window, kMark) != nullptr; }

}  // namespace velk
