#include "velksub/script_hook.h"

#include <new>

#include "platform/variant.h"

namespace velk {
namespace {

DISPID IdOf(IDispatch* object, const wchar_t* name) noexcept {
    DISPID id = DISPID_UNKNOWN;
    auto* wanted = const_cast<LPOLESTR>(name);
    return SUCCEEDED(object->GetIDsOfNames(IID_NULL, &wanted, 1, LOCALE_USER_DEFAULT, &id)) ? id : DISPID_UNKNOWN;
}

VARIANT ToVariant(LONG value) noexcept {
    VARIANT made{};
    made.vt = VT_I4;
    made.lVal = value;
    return made;
}

}  // namespace

ComPtr<ISubclass> ScriptHook::For(IDispatch* object) noexcept {
    ComPtr<IDispatch> held(object);
    if (!held || held.As<ISubclass>()) return nullptr;
    const DISPID response = IdOf(object, L"MsgResponse");
    const DISPID procedure = IdOf(object, L"WindowProc");
    if (response == DISPID_UNKNOWN || procedure == DISPID_UNKNOWN) return nullptr;
    return ComPtr<ISubclass>::Attach(new (std::nothrow) ScriptHook(std::move(held), response, procedure));
}

STDMETHODIMP ScriptHook::QueryInterface(REFIID iid, void** object) noexcept {
    if (iid != __uuidof(ISubclass)) return object_->QueryInterface(iid, object);
    return HelperObject::QueryInterface(iid, object);
}

STDMETHODIMP ScriptHook::get_MsgResponse(LONG* result) noexcept { return Call(response_, {}, result); }

STDMETHODIMP ScriptHook::WindowProc(LONG hWnd, LONG iMsg, LONG wParam, LONG lParam, LONG* result) noexcept {
    VARIANT reversed[] = {ToVariant(lParam), ToVariant(wParam), ToVariant(iMsg), ToVariant(hWnd)};
    return Call(procedure_, reversed, result);
}

// A member without a result gives 0.
HRESULT ScriptHook::Call(DISPID member, std::span<VARIANT> arguments, LONG* result) noexcept {
    DISPPARAMS parameters{arguments.data(), nullptr, static_cast<UINT>(arguments.size()), 0};
    Variant answer, number;
    HRESULT called = object_->Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD | DISPATCH_PROPERTYGET,
                                     &parameters, &answer, nullptr, nullptr);
    if (SUCCEEDED(called)) called = VariantChangeType(&number, &answer, 0, VT_I4);
    if (SUCCEEDED(called)) *result = number.lVal;
    return called;
}

}  // namespace velk
