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

// Whether a call is a quick one. A result that nobody wants is for Invoke.
inline bool IsQuick(const QuickCall* call, REFIID reserved, const DISPPARAMS* given, const VARIANT* result) noexcept {
    return call && (result || call->result == VT_EMPTY) && given && given->cArgs <= (call->argument ? 1u : 0u) &&
           given->cNamedArgs == call->named && InlineIsEqualGUID(reserved, IID_NULL);
}

// Makes a call that runs no code but the member's. This needs no calling convention of words: every platform passes up
// to three pointers to it as to any function.
template <class... Argument>
[[gnu::always_inline]] inline HRESULT InvokeQuick(const QuickCall& call, IDispatch* object, VARIANT* result,
                                                  EXCEPINFO* exception, Argument... argument) noexcept {
    using Getter = HRESULT(STDMETHODCALLTYPE*)(IDispatch*, Argument..., void*);
    using Method = HRESULT(STDMETHODCALLTYPE*)(IDispatch*, Argument...);
    void* const function = (*reinterpret_cast<void***>(object))[call.slot];
    if (result) result->vt = VT_EMPTY;
    HRESULT ended;
    if (call.result == VT_EMPTY) {
        ended = reinterpret_cast<Method>(function)(object, argument...);
    } else {
        void* const place = call.result == VT_VARIANT ? static_cast<void*>(result) : &result->byref;
        ended = reinterpret_cast<Getter>(function)(object, argument..., place);
    }
    if (FAILED(ended)) return Exception(ended, exception);
    if (call.result != VT_VARIANT && call.result != VT_EMPTY) result->vt = call.result;
    return S_OK;
}

// The same for a member that takes an argument. False when that needs more than lending; nothing has happened then.
bool InvokeLending(const QuickCall& call, IDispatch* object, const DISPPARAMS& given, VARIANT* result,
                   EXCEPINFO* exception, HRESULT* ended) noexcept;

}  // namespace velk::dispatch
