// CConCat: builds a long string from many pieces. Append shows a failure and goes on; the properties raise theirs.
#pragma once

#include "containers/con_cat.idl.h"
#include "containers/text_buffer.h"
#include "frame/object/automation_object.h"

namespace velk {

class CConCat final : public AutomationObject<_CConCat> {
  public:
    static const ClassInfo kInfo;

    CConCat() noexcept : AutomationObject(kInfo) {}

    STDMETHODIMP get_Text(BSTR* result) noexcept override;
    STDMETHODIMP put_Text(BSTR strText) noexcept override;
    STDMETHODIMP get_Length(LONG* result) noexcept override;
    STDMETHODIMP Append(BSTR* strSource) noexcept override;

  private:
    TextBuffer buffer_;
};

}  // namespace velk
