// The one implementation of late-bound calls. What a member looks like comes from the type library; see call_plan.h.
#pragma once

#include "frame/dispatch/call_plan.h"
#include "frame/dispatch/fitting_call.h"
#include "platform/platform.h"

namespace velk::dispatch {

// The description of an interface or a class.
HRESULT GetTypeInfoOf(REFGUID guid, ITypeInfo** info) noexcept;

HRESULT GetIDsOfNames(const InterfacePlan& plan, REFIID reserved, LPOLESTR* names, UINT count, DISPID* ids) noexcept;

// What a client gives to IDispatch::Invoke.
struct Request {
    DISPID id;
    REFIID reserved;
    LCID locale;
    WORD flags;
    DISPPARAMS* parameters;
    VARIANT* result;
    EXCEPINFO* exception;
    UINT* badArgument;
};

// The object has to outlive the call, in which the client's code may drop the last reference.
HRESULT Invoke(const InterfacePlan& plan, References references, IDispatch* object, const Request& request) noexcept;

// Turns the thread's error information into the form of a late-bound call.
HRESULT Exception(HRESULT failure, EXCEPINFO* exception) noexcept;

// Whether a call is one without arguments, of a member that takes none. A result that nobody wants is for Invoke.
inline bool IsQuick(const QuickCall& call, REFIID reserved, WORD flags, const DISPPARAMS* parameters,
                    const VARIANT* result) noexcept {
    return (flags & call.flags) && (result || call.result == VT_EMPTY) && parameters &&
           !(parameters->cArgs | parameters->cNamedArgs) && InlineIsEqualGUID(reserved, IID_NULL);
}

// Makes such a call, which runs no code but the member's. This needs no calling convention of words: every platform
// passes one or two pointers to it as to any function.
[[gnu::always_inline]] inline HRESULT InvokeQuick(const QuickCall& call, IDispatch* object, VARIANT* result,
                                                  EXCEPINFO* exception) noexcept {
    using Getter = HRESULT(STDMETHODCALLTYPE*)(IDispatch*, void*);
    using Method = HRESULT(STDMETHODCALLTYPE*)(IDispatch*);
    void* const function = (*reinterpret_cast<void***>(object))[call.slot];
    if (result) result->vt = VT_EMPTY;
    HRESULT ended;
    if (call.result == VT_EMPTY) {
        ended = reinterpret_cast<Method>(function)(object);
    } else {
        void* const place = call.result == VT_VARIANT ? static_cast<void*>(result) : &result->byref;
        ended = reinterpret_cast<Getter>(function)(object, place);
    }
    if (FAILED(ended)) return Exception(ended, exception);
    if (call.result != VT_VARIANT && call.result != VT_EMPTY) result->vt = call.result;
    return S_OK;
}

}  // namespace velk::dispatch
