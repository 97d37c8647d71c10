// The one implementation of late-bound calls. What a member looks like comes from the type library; see call_plan.h.
#pragma once

#include "frame/call_plan.h"
#include "frame/platform.h"

namespace velk::dispatch {

HRESULT GetIDsOfNames(const InterfacePlan& plan, REFIID reserved, LPOLESTR* names, UINT count, DISPID* ids) noexcept;

HRESULT Invoke(const InterfacePlan& plan, IDispatch* object, DISPID id, REFIID reserved, LCID locale, WORD flags,
               DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception, UINT* badArgument) noexcept;

}  // namespace velk::dispatch
