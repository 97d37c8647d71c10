// A hook of the tests' own, and the hook library as its clients reach it.
#pragma once

#include <functional>

#include "support/activation.h"
#include "support/bare_dispatch.h"
#include "support/client.h"
#include "velksub.h"

namespace velk::test {

class TestHook final : public BareObject<ISubclass> {
  public:
    struct Message {
        LONG window, number, wParam, lParam;
    };

    static ComPtr<TestHook> Make(LONG response) {
        auto made = ComPtr<TestHook>::Attach(new TestHook);
        made->respond = [response](LONG* result) { return *result = response, S_OK; };
        return made;
    }

    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) noexcept override {
        return E_NOTIMPL;
    }
    STDMETHODIMP get_MsgResponse(LONG* result) noexcept override { return respond(result); }
    STDMETHODIMP put_MsgResponse(LONG) noexcept override { return S_OK; }
    STDMETHODIMP WindowProc(LONG hWnd, LONG iMsg, LONG wParam, LONG lParam, LONG* result) noexcept override {
        return handle ? handle({hWnd, iMsg, wParam, lParam}, result) : S_OK;
    }

    std::function<HRESULT(LONG*)> respond;
    std::function<HRESULT(const Message&, LONG*)> handle;
};

// The hook library, found without registration while this lives.
class HookLibrary {
  public:
    ComPtr<IHookManager> Manager() const {
        ComPtr<IHookManager> manager;
        EXPECT_EQ(S_OK, CoCreateInstance(__uuidof(HookManager), nullptr, CLSCTX_INPROC_SERVER, __uuidof(IHookManager),
                                         manager.ReceiveVoid()));
        return manager;
    }
    static bool CanUnload() {
        const HMODULE module = GetModuleHandleW(L"VelkSub.dll");
        return module && Export<decltype(&DllCanUnloadNow)>("DllCanUnloadNow", module)() == S_OK;
    }

    // An earlier run may have left it registered.
    static void Unregister() {
        const HMODULE module = LoadLibraryW(BuiltFile(L"VelkSub.dll").c_str());
        EXPECT_EQ(S_OK, Export<decltype(&DllUnregisterServer)>("DllUnregisterServer", module)());
        FreeLibrary(module);
    }

  private:
    Activation active_{BuiltFile(L"VelkHooks.manifest")};
};

}  // namespace velk::test
