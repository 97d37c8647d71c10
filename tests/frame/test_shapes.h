// The class behind shapes.idl. It stands in the test program itself, which embeds the type library.
#pragma once

#include <functional>

#include "frame/object/automation_object.h"
#include "platform/text.h"
#include "platform/variant.h"
#include "shapes.h"

namespace velk::test {

class CShapes : public AutomationObject<_CShapes> {
  public:
    static constexpr HRESULT kComponentFailure = static_cast<HRESULT>(0x80044999);
    template <FailurePolicy kPolicy>
    static constexpr ClassInfo kInfoFor = {
        .name = L"CShapes",
        .clsid = __uuidof(::CShapes),
        .iid = __uuidof(_CShapes),
        .policy = kPolicy,
        .componentFailure = kComponentFailure,
        .creationFailed = L"An error has occured in Shapes.CShapes.Class_Initialize ",
        .references = References::Replaced,
    };
    static constexpr const ClassInfo& kInfo = kInfoFor<FailurePolicy::PassOn>;

    explicit CShapes(const ClassInfo& info = kInfo) noexcept : AutomationObject(info) {}
    static ComPtr<CShapes> Make(const ClassInfo& info = kInfo) { return ComPtr<CShapes>::Attach(new CShapes(info)); }

    std::function<void()> onStep;  // runs when Step is read

    using Truth = VARIANT_BOOL;
    STDMETHODIMP EchoShort(SHORT value, SHORT* result) noexcept override { return Echo(value, result); }
    STDMETHODIMP EchoBoolean(Truth value, Truth* result) noexcept override { return Echo(value, result); }
    STDMETHODIMP EchoLong(LONG value, LONG* result) noexcept override { return Echo(value, result); }
    STDMETHODIMP EchoDouble(DOUBLE value, DOUBLE* result) noexcept override { return Echo(value, result); }
    STDMETHODIMP EchoString(BSTR value, BSTR* result) noexcept override { return Echo(value, result); }
    STDMETHODIMP EchoVariant(VARIANT value, VARIANT* result) noexcept override { return Echo(value, result); }
    STDMETHODIMP EchoObject(IDispatch* value, IDispatch** result) noexcept override { return Echo(value, result); }
    STDMETHODIMP EchoFont(IFontDisp* value, IFontDisp** result) noexcept override { return Echo(value, result); }

    STDMETHODIMP BumpShort(SHORT* value, SHORT* result) noexcept override { return Bump(value, result); }
    STDMETHODIMP BumpLong(LONG* value, LONG* result) noexcept override { return Bump(value, result); }
    STDMETHODIMP BumpDouble(DOUBLE* value, DOUBLE* result) noexcept override { return Bump(value, result); }
    STDMETHODIMP BumpBoolean(Truth* value, Truth* result) noexcept override { return Bump(value, result); }
    STDMETHODIMP BumpString(BSTR* value, BSTR* result) noexcept override { return Bump(value, result); }
    STDMETHODIMP BumpVariant(VARIANT* value, VARIANT* result) noexcept override { return Bump(value, result); }
    STDMETHODIMP BumpKind(EKind* value, EKind* result) noexcept override { return Bump(value, result); }
    STDMETHODIMP BumpObject(IDispatch** value, IDispatch** result) noexcept override { return Bump(value, result); }
    STDMETHODIMP BumpFont(IFontDisp** value, IFontDisp** result) noexcept override { return Bump(value, result); }

    STDMETHODIMP FillStrings(SAFEARRAY** strings, LONG count, BSTR* result) noexcept override;
    STDMETHODIMP Mixed(SHORT a, DOUBLE b, LONG* c, BSTR d, VARIANT e, VARIANT* f, FLOAT g, BSTR* h,
                       BSTR* result) noexcept override;

    STDMETHODIMP get_Step(LONG* result) noexcept override;
    STDMETHODIMP put_Step(LONG value) noexcept override { return Let(&value, step_); }
    STDMETHODIMP get_Item(LONG index, VARIANT* result) noexcept override { return Echo(items_[index & 3], result); }
    STDMETHODIMP put_Item(LONG index, VARIANT value) noexcept override;
    STDMETHODIMP putref_Item(LONG index, VARIANT value) noexcept override;

  private:
    template <class Held, class T>
    HRESULT Echo(const Held& value, T* result) const noexcept {
        return Guard(result, [&] { return Copy<T>(value); });
    }
    template <class T>
    HRESULT Bump(T* value, T* result) noexcept {
        return Guard(result, [&] {
            auto was = Copy<T>(Given(value));
            if (step_ != 0) Change(*value);
            return was;
        });
    }
    template <class T>
    static void Replace(T*& value, std::type_identity_t<T*> by) {
        if (T* const before = std::exchange(value, by)) before->Release();
    }
    void Change(BSTR& value);
    void Change(VARIANT& value);
    void Change(IDispatch*& value) { Replace(value, ComPtr<_CShapes>(this).Detach()); }
    template <class T>
    void Change(T& value) {
        if constexpr (std::is_pointer_v<T>) {
            Replace(value, nullptr);
        } else {
            value = static_cast<T>(value + static_cast<T>(step_));
        }
    }
    template <class T>
    static auto Copy(const T& value) {
        if constexpr (std::is_same_v<T, BSTR>) {
            return Bstr(View(value));
        } else if constexpr (std::is_same_v<T, VARIANT>) {
            Variant copy;
            ThrowIfFailed(VariantCopy(&copy, const_cast<VARIANT*>(&value)));
            return copy;
        } else if constexpr (std::is_pointer_v<T>) {
            return ComPtr(value);
        } else {
            return value;
        }
    }

    LONG step_ = 1;
    Variant items_[4];
};

// What a value is and holds, independent of the locale, such as "8:text" or "array of 12 from 1: 8:a 8:b".
std::wstring Describe(const VARIANT& value);

}  // namespace velk::test
