#include "winhelpers/hooks/form_size_constraint.h"

#include "platform/long_handles.h"

namespace velk {
namespace {

constexpr LONG kHooked[] = {WM_GETMINMAXINFO};

void Require(bool valid, EErrFormSizeConstraint code, const wchar_t* description) {
    if (!valid) throw ClassError(code, description);
}

}  // namespace

constinit const ClassInfo CFormSizeConstraint::kInfo{
    .name = L"CFormSizeConstraint",
    .clsid = __uuidof(::CFormSizeConstraint),
    .iid = __uuidof(_CFormSizeConstraint),
    .policy = FailurePolicy::ComponentFailure,
    .componentFailure = eErrFormSizeConstraint_ComponentFailure,
};

CFormSizeConstraint::~CFormSizeConstraint() {
    if (window_) EndHooks(window_, kHooked);
}

void CFormSizeConstraint::Attach(LONG window) {
    Require(IsWindow(WindowFrom(window)) != FALSE, eErrFormSizeConstraint_InvalidWindowHandle,
            L"Invalid window handle");
    Detach();
    window_ = window;
    AddHook(window_, WM_GETMINMAXINFO);
}

void CFormSizeConstraint::Detach() {
    if (window_) RemoveHooks(window_, kHooked);
}

STDMETHODIMP CFormSizeConstraint::Init(LONG* hWnd) noexcept {
    return Guard([&] { Attach(Given(hWnd)); });
}

STDMETHODIMP CFormSizeConstraint::get_hWnd(LONG* result) noexcept { return Get(result, window_); }

STDMETHODIMP CFormSizeConstraint::put_hWnd(LONG* hWnd) noexcept {
    return Guard([&] { Attach(Given(hWnd)); });
}

HRESULT CFormSizeConstraint::LetEdge(LONG* value, SizeRange& range, SizeRange::Setter set, EErrFormSizeConstraint code,
                                     const wchar_t* description, const char* member) noexcept {
    return GuardAs(member, [&] { Require((range.*set)(Given(value)), code, description); });
}

STDMETHODIMP CFormSizeConstraint::put_MaxHeight(LONG* Height) noexcept {
    return LetEdge(Height, height_, &SizeRange::SetMost, eErrFormSizeConstraint_InvalidMaxHeight,
                   L"Invalid maximum height");
}

STDMETHODIMP CFormSizeConstraint::get_MaxHeight(LONG* result) noexcept {
    return Guard(result, [&] { return height_.most(); });
}

STDMETHODIMP CFormSizeConstraint::put_MaxWidth(LONG* Width) noexcept {
    return LetEdge(Width, width_, &SizeRange::SetMost, eErrFormSizeConstraint_InvalidMaxWidth,
                   L"Invalid maximum width");
}

STDMETHODIMP CFormSizeConstraint::get_MaxWidth(LONG* result) noexcept {
    return Guard(result, [&] { return width_.most(); });
}

STDMETHODIMP CFormSizeConstraint::put_MinHeight(LONG* Height) noexcept {
    return LetEdge(Height, height_, &SizeRange::SetLeast, eErrFormSizeConstraint_InvalidMinHeight,
                   L"Invalid minimum height");
}

STDMETHODIMP CFormSizeConstraint::get_MinHeight(LONG* result) noexcept {
    return Guard(result, [&] { return height_.least(); });
}

STDMETHODIMP CFormSizeConstraint::put_MinWidth(LONG* Width) noexcept {
    return LetEdge(Width, width_, &SizeRange::SetLeast, eErrFormSizeConstraint_InvalidMinWidth,
                   L"Invalid minimum width");
}

STDMETHODIMP CFormSizeConstraint::get_MinWidth(LONG* result) noexcept {
    return Guard(result, [&] { return width_.least(); });
}

STDMETHODIMP CFormSizeConstraint::ReleaseForm() noexcept {
    return GuardAs("Release", [&] { Detach(); });
}

HRESULT CFormSizeConstraint::MsgResponse(LONG* result) noexcept {
    return Guard(result, [] { return LONG{eMsgResponse_PreviousFirst}; });
}

// Every call counts as WM_GETMINMAXINFO: the object is attached for no other message.
HRESULT CFormSizeConstraint::WindowProc(LONG, LONG, LONG_PTR, LONG_PTR lParam, LONG_PTR* result) noexcept {
    return Guard(result, [&] {
        auto* const limits = reinterpret_cast<MINMAXINFO*>(lParam);
        if (!limits) throw RuntimeError(Error::InvalidProcedureCall);
        width_.Apply(limits->ptMinTrackSize.x, limits->ptMaxTrackSize.x);
        height_.Apply(limits->ptMinTrackSize.y, limits->ptMaxTrackSize.y);
        return LONG_PTR{0};
    });
}

}  // namespace velk
