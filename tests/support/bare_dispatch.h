#pragma once

#include "platform/platform.h"

namespace velk::test {

// What every late-bound object of the tests has in common: identity, count, and no description of itself.
template <class Interface>
class BareObject : public Interface {
  public:
    STDMETHODIMP QueryInterface(REFIID iid, void** object) noexcept override {
        *object = iid == IID_IUnknown || iid == IID_IDispatch || iid == __uuidof(Interface) ? this : nullptr;
        if (!*object) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return ++count_; }
    STDMETHODIMP_(ULONG) Release() noexcept override {
        const ULONG left = --count_;
        if (left == 0) delete this;
        return left;
    }
    STDMETHODIMP GetTypeInfoCount(UINT*) noexcept override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) noexcept override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) noexcept override { return E_NOTIMPL; }

    ULONG count() const noexcept { return count_; }

  protected:
    virtual ~BareObject() = default;

  private:
    ULONG count_ = 1;
};

using BareDispatch = BareObject<IDispatch>;

}  // namespace velk::test
