// A hook of the tests' own, and the hook library as its clients reach it.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include "support/bare_dispatch.h"
#include "support/client.h"
#include "velksub.h"

namespace velk::test {

// Of a kind: w with ISubclass2, n without it, s as scripts have them: the members of ISubclass by name and nothing
// else.
class TestHook final : public BareObject<ISubclass>, public ISubclass2 {
  public:
    struct Message {
        LONG window, number;
        LONG_PTR wParam, lParam;
    };

    static ComPtr<TestHook> Make(char kind = 'n') {
        auto made = ComPtr<TestHook>::Attach(new TestHook);
        return made->kind_ = kind, made;
    }

    STDMETHODIMP QueryInterface(REFIID iid, void** object) noexcept override {
        if (kind_ == 's' && iid == __uuidof(ISubclass)) return E_NOINTERFACE;
        if (iid != __uuidof(ISubclass2)) return BareObject::QueryInterface(iid, object);
        *object = kind_ == 'w' ? static_cast<ISubclass2*>(this) : nullptr;
        return *object ? AddRef(), S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return BareObject::AddRef(); }
    STDMETHODIMP_(ULONG) Release() noexcept override { return BareObject::Release(); }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* ids) noexcept override {
        *ids = !_wcsicmp(names[0], L"msgresponse") ? 5 : !_wcsicmp(names[0], L"windowproc") ? 6 : DISPID_UNKNOWN;
        return *ids != DISPID_UNKNOWN ? S_OK : DISP_E_UNKNOWNNAME;
    }
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* given, VARIANT* result, EXCEPINFO*,
                        UINT*) noexcept override {
        LONG number = 0;
        const VARIANT* const last = given->rgvarg;
        if (id != 5 && id != 6) return DISP_E_MEMBERNOTFOUND;
        EXPECT_EQ(id == 5 ? 0u : 4u, given->cArgs);
        const HRESULT ends =
            id == 5 ? respond(&number) : WindowProc(last[3].lVal, last[2].lVal, last[1].lVal, last[0].lVal, &number);
        return result->vt = VT_R8, result->dblVal = number, ends;  // numbers come as scripts keep them
    }
    STDMETHODIMP get_MsgResponse(LONG* result) noexcept override { return respond(result); }
    STDMETHODIMP put_MsgResponse(LONG) noexcept override { return S_OK; }
    STDMETHODIMP WindowProc(LONG hWnd, LONG iMsg, LONG wParam, LONG lParam, LONG* result) noexcept override {
        EXPECT_NE('w', kind_);
        LONG_PTR whole = 0;
        const HRESULT ends = WindowProcPtr(hWnd, iMsg, wParam, lParam, &whole);
        return *result = static_cast<LONG>(whole), ends;
    }
    STDMETHODIMP WindowProcPtr(LONG hWnd, LONG iMsg, LONG_PTR wParam, LONG_PTR lParam,
                               LONG_PTR* result) noexcept override {
        return handle ? handle({hWnd, iMsg, wParam, lParam}, result) : S_OK;
    }

    // As this hook passes a message on.
    LONG_PTR PassOn(IHookManager* manager, const Message& m) const {
        LONG_PTR whole = 0;
        LONG narrow = 0;
        const HRESULT passed = kind_ == 'w' ? ComPtr<IHookManager>(manager).As<IHookManager2>()->CallPreviousProcPtr(
                                                  m.window, m.number, m.wParam, m.lParam, &whole)
                                            : manager->CallPreviousProc(m.window, m.number, static_cast<LONG>(m.wParam),
                                                                        static_cast<LONG>(m.lParam), &narrow);
        EXPECT_EQ(S_OK, passed);
        return kind_ == 'w' ? whole : narrow;
    }

    std::function<HRESULT(LONG*)> respond = [](LONG* result) { return *result = 2, S_OK; };
    std::function<HRESULT(const Message&, LONG_PTR*)> handle;

  private:
    char kind_ = 'n';
};

// The hook library is found without registration for as long as the result lives.
inline std::shared_ptr<void> HookLibrary() { return Activated(BuiltFile(L"VelkHooks.manifest")); }

}  // namespace velk::test
