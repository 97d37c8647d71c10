#pragma once

#include <atomic>

#include "frame/module/library.h"
#include "platform/platform.h"

namespace velk {

// The base of the small objects that are handed out beside the classes: one interface, a reference count, and a use of
// the library as long as somebody holds them. `Base` is the interface, or a class that has some of its members.
template <class Base, class Interface = Base>
class HelperObject : public Base {
  public:
    HelperObject() noexcept = default;
    HelperObject(const HelperObject&) = delete;
    HelperObject& operator=(const HelperObject&) = delete;

    STDMETHODIMP QueryInterface(REFIID iid, void** object) noexcept override {
        if (!object) return E_POINTER;
        const bool known = iid == IID_IUnknown || iid == __uuidof(Interface);
        *object = known ? this : nullptr;
        if (!known) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return ++count_; }
    STDMETHODIMP_(ULONG) Release() noexcept override {
        const ULONG left = --count_;
        if (left == 0) delete this;
        return left;
    }

  protected:
    virtual ~HelperObject() = default;

  private:
    library::Use use_;
    std::atomic<ULONG> count_ = 1;
};

}  // namespace velk
