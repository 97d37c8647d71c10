#include "frame/class_factory.h"

#include <algorithm>
#include <new>

namespace velk {
namespace {

class ClassFactory final : public IClassFactory {
  public:
    explicit ClassFactory(const ClassEntry& entry) noexcept : entry_(entry) {}

    STDMETHODIMP QueryInterface(REFIID iid, void** object) noexcept override {
        if (!object) return E_POINTER;
        const bool known = iid == IID_IUnknown || iid == IID_IClassFactory;
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

    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID iid, void** object) noexcept override try {
        if (!object) return E_POINTER;
        *object = nullptr;
        if (outer) return CLASS_E_NOAGGREGATION;
        return ComPtr<IDispatch>::Attach(entry_.make())->QueryInterface(iid, object);
    } catch (...) {
        return E_OUTOFMEMORY;
    }
    STDMETHODIMP LockServer(BOOL lock) noexcept override {
        library::Use::Lock(lock != FALSE);
        return S_OK;
    }

  private:
    const ClassEntry& entry_;
    library::Use use_;
    std::atomic<ULONG> count_ = 1;
};

}  // namespace

HRESULT GetClassFactory(REFCLSID clsid, REFIID iid, void** factory) noexcept {
    if (!factory) return E_POINTER;
    *factory = nullptr;
    const auto classes = Classes();
    const auto found = std::find_if(classes.begin(), classes.end(),
                                    [&](const ClassEntry& entry) { return entry.info->clsid == clsid; });
    if (found == classes.end()) return CLASS_E_CLASSNOTAVAILABLE;
    const auto made = ComPtr<ClassFactory>::Attach(new (std::nothrow) ClassFactory(*found));
    return made ? made->QueryInterface(iid, factory) : E_OUTOFMEMORY;
}

}  // namespace velk
