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

}  // namespace velk::dispatch
