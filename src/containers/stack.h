// CStack: a stack of variants. See value_stack.h for its deliberate oddities.
#pragma once

#include "containers/stack.idl.h"
#include "containers/value_stack.h"
#include "frame/object/automation_object.h"
#include "platform/variant.h"

namespace velk {

class CStack final : public AutomationObject<_CStack> {
  public:
    static const ClassInfo kInfo;

    CStack() noexcept : AutomationObject(kInfo) {}

    STDMETHODIMP get_Count(LONG* result) noexcept override;
    STDMETHODIMP get_GrowBy(LONG* result) noexcept override;
    STDMETHODIMP put_GrowBy(LONG* Value) noexcept override;
    STDMETHODIMP get_Peak(VARIANT* result) noexcept override;
    STDMETHODIMP Clear() noexcept override;
    STDMETHODIMP Pop(VARIANT* result) noexcept override;
    STDMETHODIMP Push(VARIANT* Value) noexcept override;

  protected:
    std::optional<std::vector<Variant>> Items() override;

  private:
    ValueStack<Variant> stack_;
};

}  // namespace velk
