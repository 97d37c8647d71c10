// The one implementation of late-bound calls. What a member looks like comes from the type library; see call_plan.h.
#pragma once

#include "frame/dispatch/call_plan.h"
#include "platform/platform.h"

namespace velk::dispatch {

// The description of an interface or a class.
HRESULT GetTypeInfoOf(REFGUID guid, ITypeInfo** info) noexcept;

HRESULT GetIDsOfNames(const InterfacePlan& plan, REFIID reserved, LPOLESTR* names, UINT count, DISPID* ids) noexcept;

HRESULT InvokeAny(const InterfacePlan& plan, IDispatch* object, DISPID id, REFIID reserved, LCID locale, WORD flags,
                  DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception, UINT* badArgument) noexcept;

// Turns the thread's error information into the form of a late-bound call.
HRESULT Exception(HRESULT failure, EXCEPINFO* exception) noexcept;

// Calls a member that takes nothing but the place for its result. This needs no calling convention of words: every
// platform passes two pointers to it as to any function.
inline HRESULT InvokeGetter(const GetterCall& call, IDispatch* object, VARIANT* result, EXCEPINFO* exception) noexcept {
    using Function = HRESULT(STDMETHODCALLTYPE*)(IDispatch*, void*);
    const auto function = reinterpret_cast<Function>((*reinterpret_cast<void***>(object))[call.slot]);
    result->vt = VT_EMPTY;
    const HRESULT ended = function(object, call.result == VT_VARIANT ? static_cast<void*>(result) : &result->byref);
    if (FAILED(ended)) return Exception(ended, exception);
    if (call.result != VT_VARIANT) result->vt = call.result;
    return S_OK;
}

inline HRESULT Invoke(const InterfacePlan& plan, IDispatch* object, DISPID id, REFIID reserved, LCID locale, WORD flags,
                      DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception, UINT* badArgument) noexcept {
    const GetterCall call = plan.Getter(id);
    const bool getter = (flags & call.flags) && result && parameters && !(parameters->cArgs | parameters->cNamedArgs) &&
                        InlineIsEqualGUID(reserved, IID_NULL);
    return getter ? InvokeGetter(call, object, result, exception)
                  : InvokeAny(plan, object, id, reserved, locale, flags, parameters, result, exception, badArgument);
}

}  // namespace velk::dispatch
