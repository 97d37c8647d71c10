// The quickest late-bound call: a member that takes nothing, or what the client has is lent to it as it is. No foreign
// code runs but the member's. What does not fit is for Invoke.
#pragma once

#include "frame/dispatch/call_plan.h"
#include "frame/dispatch/dispatch.h"
#include "platform/platform.h"

namespace velk::dispatch {

// Whether a call is a quick one. A result that nobody wants is for Invoke.
inline bool IsQuick(const QuickCall* call, REFIID reserved, const DISPPARAMS* given, const VARIANT* result) noexcept {
    return call && (result || call->result == VT_EMPTY) && given && given->cArgs <= call->count &&
           given->cNamedArgs == call->named && InlineIsEqualGUID(reserved, IID_NULL);
}

// Makes a call that runs no code but the member's. This needs no calling convention of words: every platform passes a
// few pointers to it as to any function.
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

// The same for a member that takes arguments. False when one of them needs more than lending; nothing has happened
// then.
bool InvokeLending(const QuickCall& call, IDispatch* object, const DISPPARAMS& given, VARIANT* result,
                   EXCEPINFO* exception, HRESULT* ended) noexcept;

}  // namespace velk::dispatch
