#pragma once

#include <functional>
#include <memory>

#include "platform/com_ptr.h"
#include "platform/variant.h"
#include "support/bare_dispatch.h"

namespace velk::test {

// An object with nothing but a default property, which can fail and run code of its own; as a sink it does the same in
// an event, whose number is what was called.
class ValueObject final : public BareDispatch {
  public:
    Variant value;
    HRESULT answer = S_OK;
    std::function<void(DISPPARAMS* given)> onRead;
    std::function<void()> onQuestion;  // what else the object is
    ComPtr<IUnknown> more;             // which has further interfaces
    DISPID called = DISPID_UNKNOWN;    // the last; a soak makes millions of calls

    static ComPtr<ValueObject> Make(const VARIANT& value) {
        auto made = ComPtr<ValueObject>::Attach(new ValueObject);
        VariantCopy(&made->value, const_cast<VARIANT*>(&value));
        return made;
    }
    STDMETHODIMP QueryInterface(REFIID iid, void** object) noexcept override {
        if (onQuestion) onQuestion();
        const HRESULT found = BareDispatch::QueryInterface(iid, object);
        return FAILED(found) && more ? more->QueryInterface(iid, object) : found;
    }
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* given, VARIANT* result, EXCEPINFO*,
                        UINT*) noexcept override {
        called = id;
        if (onRead) onRead(given);
        if (id != DISPID_VALUE) return DISP_E_MEMBERNOTFOUND;
        return FAILED(answer) ? answer : VariantCopy(result, &value);
    }
};

// Connects a sink to an object's events for as long as the result lives; null when that is refused.
inline std::shared_ptr<IConnectionPoint> Connected(IUnknown* source, REFIID events, IUnknown* sink) {
    DWORD cookie = 0;
    ComPtr<IConnectionPoint> point;
    const auto container = ComPtr<IUnknown>(source).As<IConnectionPointContainer>();
    if (!container || FAILED(container->FindConnectionPoint(events, point.Receive()))) return nullptr;
    if (FAILED(point->Advise(sink, &cookie))) return nullptr;
    return {point.Detach(), [cookie](IConnectionPoint* made) { made->Unadvise(cookie), made->Release(); }};
}

}  // namespace velk::test
