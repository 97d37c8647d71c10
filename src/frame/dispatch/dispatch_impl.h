// The IDispatch of one dual interface: its members are called by the plans that its type information gives.
#pragma once

#include "frame/dispatch/call_plan.h"
#include "frame/dispatch/dispatch.h"
#include "platform/platform.h"

namespace velk {

template <class Interface>
class DispatchImpl : public Interface {
  public:
    STDMETHODIMP GetTypeInfoCount(UINT* count) noexcept override {
        if (!count) return E_POINTER;
        *count = 1;
        return S_OK;
    }
    STDMETHODIMP GetTypeInfo(UINT index, LCID, ITypeInfo** info) noexcept override {
        if (!info) return E_POINTER;
        *info = nullptr;
        if (index != 0) return DISP_E_BADINDEX;
        return dispatch::GetTypeInfoOf(__uuidof(Interface), info);
    }
    STDMETHODIMP GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count, LCID, DISPID* ids) noexcept override {
        const InterfacePlan* const plan = Plan();
        return plan ? dispatch::GetIDsOfNames(*plan, reserved, names, count, ids) : E_OUTOFMEMORY;
    }
    STDMETHODIMP Invoke(DISPID id, REFIID reserved, LCID locale, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                        EXCEPINFO* exception, UINT* badArgument) noexcept override {
        const InterfacePlan* const plan = Plan();
        if (!plan) return E_OUTOFMEMORY;
        return dispatch::Invoke(*plan, References::Replaced, this,
                                {id, reserved, locale, flags, parameters, result, exception, badArgument});
    }

  protected:
    static const InterfacePlan* Plan() noexcept { return plan_.get(); }

  private:
    static inline constinit KeptPlan plan_{__uuidof(Interface)};
};

}  // namespace velk
