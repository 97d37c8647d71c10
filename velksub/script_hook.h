#pragma once

#include <span>
#include <utility>

#include "frame/object/helper_object.h"
#include "platform/com_ptr.h"
#include "velksub.h"

namespace velk {

// The ISubclass of an object that has its members by name only, as the objects of scripts do. It counts as the same
// hook as that object.
class ScriptHook final : public HelperObject<ISubclass> {
  public:
    // Null for an object that is a hook itself, and for one that is none even by name.
    static ComPtr<ISubclass> For(IDispatch* object) noexcept;

    STDMETHODIMP QueryInterface(REFIID iid, void** object) noexcept override;
    STDMETHODIMP GetTypeInfoCount(UINT* count) noexcept override { return object_->GetTypeInfoCount(count); }
    STDMETHODIMP GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) noexcept override {
        return object_->GetTypeInfo(index, locale, info);
    }
    STDMETHODIMP GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count, LCID locale,
                               DISPID* ids) noexcept override {
        return object_->GetIDsOfNames(reserved, names, count, locale, ids);
    }
    STDMETHODIMP Invoke(DISPID id, REFIID reserved, LCID locale, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                        EXCEPINFO* exception, UINT* badArgument) noexcept override {
        return object_->Invoke(id, reserved, locale, flags, parameters, result, exception, badArgument);
    }

    STDMETHODIMP get_MsgResponse(LONG* result) noexcept override;
    STDMETHODIMP put_MsgResponse(LONG) noexcept override { return S_OK; }
    STDMETHODIMP WindowProc(LONG hWnd, LONG iMsg, LONG wParam, LONG lParam, LONG* result) noexcept override;

  private:
    ScriptHook(ComPtr<IDispatch> object, DISPID response, DISPID procedure) noexcept
        : object_(std::move(object)), response_(response), procedure_(procedure) {}

    HRESULT Call(DISPID member, std::span<VARIANT> arguments, LONG* result) noexcept;

    ComPtr<IDispatch> object_;
    DISPID response_;
    DISPID procedure_;
};

}  // namespace velk
