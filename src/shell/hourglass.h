// CHourglass: the hourglass for the life of an object. See pointer_override.h for the pointer itself.
#pragma once

#include "frame/object/automation_object.h"
#include "shell/hourglass.idl.h"

namespace velk {

class CHourglass final : public AutomationObject<_CHourglass> {
  public:
    static const ClassInfo kInfo;

    CHourglass() noexcept : AutomationObject(kInfo) {}
    ~CHourglass() override;

    STDMETHODIMP get_Value(VARIANT_BOOL* result) noexcept override;
    STDMETHODIMP put_Value(VARIANT_BOOL* blnValue) noexcept override;

  private:
    bool value_ = false;
};

}  // namespace velk
