// CLinkedList: a list of variants. See node_list.h for its deliberate oddities and variant_search.h for Find.
//
// A member that fails shows the report and raises the error to its caller. One failure gives one report, titled with
// the member that the client called, or with ExpandList, a procedure of its own, when Add or SetSize cannot grow the
// list.
#pragma once

#include "containers/linked_list.idl.h"
#include "containers/variant_search.h"
#include "frame/object/automation_object.h"

namespace velk {

class CLinkedList final : public AutomationObject<_CLinkedList> {
  public:
    static const ClassInfo kInfo;

    CLinkedList() noexcept : AutomationObject(kInfo) {}
    void OnCreate() noexcept;

    STDMETHODIMP Add(VARIANT* Value, LONG* Before, LONG* After, LONG* result) noexcept override;
    STDMETHODIMP CheckIndex(LONG* Index) noexcept override;
    STDMETHODIMP Find(VARIANT* Value, FindConditionConstants* Condition, LONG* StartIndex, VARIANT_BOOL* Descending,
                      LONG* result) noexcept override;
    STDMETHODIMP Move(LONG* Index) noexcept override;
    STDMETHODIMP MoveFirst() noexcept override;
    STDMETHODIMP MoveLast() noexcept override;
    STDMETHODIMP MoveNext() noexcept override;
    STDMETHODIMP MovePrevious() noexcept override;
    STDMETHODIMP Remove(LONG* Index) noexcept override;
    STDMETHODIMP RemoveAll() noexcept override;
    STDMETHODIMP SetSize(LONG* numEls, LONG* ChunkSize) noexcept override;
    STDMETHODIMP get_BOL(VARIANT_BOOL* result) noexcept override;
    STDMETHODIMP get_Count(LONG* result) noexcept override;
    STDMETHODIMP get_CurrIndex(LONG* result) noexcept override;
    STDMETHODIMP put_CurrIndex(LONG* Index) noexcept override;
    STDMETHODIMP get_EOL(VARIANT_BOOL* result) noexcept override;
    STDMETHODIMP get_IsEmpty(VARIANT_BOOL* result) noexcept override;
    STDMETHODIMP get_Item(LONG* Index, VARIANT* result) noexcept override;
    STDMETHODIMP put_Item(LONG* Index, VARIANT* Value) noexcept override;
    STDMETHODIMP putref_Item(LONG* Index, VARIANT* Value) noexcept override;

  protected:
    std::optional<std::vector<Variant>> Items() override;

  private:
    HRESULT GrowAndAdd(const VARIANT& value, LONG before, LONG after, LONG* result) noexcept;

    VariantList list_;
};

}  // namespace velk
