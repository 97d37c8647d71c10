#pragma once

#include <functional>
#include <utility>

#include "platform/com_ptr.h"
#include "platform/platform.h"

namespace velk::test {

// What every object of the tests has in common: identity and count.
template <class Interface>
class BareUnknown : public Interface {
  public:
    STDMETHODIMP QueryInterface(REFIID iid, void** object) noexcept override {
        *object = iid == IID_IUnknown || iid == __uuidof(Interface) ? this : nullptr;
        return *object ? AddRef(), S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return ++count_; }
    STDMETHODIMP_(ULONG) Release() noexcept override {
        const ULONG left = --count_;
        if (left == 0) delete this;
        return left;
    }

    ULONG count() const noexcept { return count_; }

  protected:
    virtual ~BareUnknown() = default;

  private:
    ULONG count_ = 1;
};

// ... and every late-bound one, with no description of itself.
template <class Interface>
class BareObject : public BareUnknown<Interface> {
  public:
    STDMETHODIMP QueryInterface(REFIID iid, void** object) noexcept override {
        return BareUnknown<Interface>::QueryInterface(iid == IID_IDispatch ? __uuidof(Interface) : iid, object);
    }
    STDMETHODIMP GetTypeInfoCount(UINT*) noexcept override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) noexcept override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) noexcept override { return E_NOTIMPL; }
};

using BareDispatch = BareObject<IDispatch>;

// A late-bound object that is all in one function.
class Callee final : public BareDispatch {
  public:
    using Answer = std::function<HRESULT(DISPID, DISPPARAMS* given)>;

    static ComPtr<IDispatch> Make(Answer answer) {
        auto* const made = new Callee;
        made->answer_ = std::move(answer);
        return ComPtr<IDispatch>::Attach(made);
    }
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* given, VARIANT*, EXCEPINFO*,
                        UINT*) noexcept override {
        return answer_(id, given);
    }

  private:
    Answer answer_;
};

}  // namespace velk::test
