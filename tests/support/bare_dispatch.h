#pragma once

#include "frame/object/helper_object.h"

namespace velk::test {

// What every late-bound object of the tests has in common: identity and count, and no description of itself.
template <class Interface>
class BareObject : public HelperObject<Interface> {
  public:
    STDMETHODIMP QueryInterface(REFIID iid, void** object) noexcept override {
        return HelperObject<Interface>::QueryInterface(iid == IID_IDispatch ? __uuidof(Interface) : iid, object);
    }
    STDMETHODIMP GetTypeInfoCount(UINT*) noexcept override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) noexcept override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) noexcept override { return E_NOTIMPL; }

    ULONG count() noexcept { return this->AddRef(), this->Release(); }
};

using BareDispatch = BareObject<IDispatch>;

}  // namespace velk::test
