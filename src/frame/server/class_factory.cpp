#include "frame/server/class_factory.h"

#include <algorithm>
#include <new>

#include "frame/object/helper_object.h"

namespace velk {
namespace {

class ClassFactory final : public HelperObject<IClassFactory> {
  public:
    explicit ClassFactory(const ClassEntry& entry) noexcept : entry_(entry) {}

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
