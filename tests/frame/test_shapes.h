// The class behind shapes.idl. It stands in the test program itself, which embeds the type library.
#pragma once

#include "frame/object/automation_object.h"
#include "platform/text.h"
#include "platform/variant.h"
#include "shapes.h"

namespace velk::test {

class CShapes : public AutomationObject<_CShapes> {
  public:
    static const ClassInfo kInfo;  // passes failures on
    static const ClassInfo kWrapping;
    static const ClassInfo kReporting;
    static constexpr HRESULT kComponentFailure = static_cast<HRESULT>(0x80044999);

    explicit CShapes(const ClassInfo& info = kInfo) noexcept : AutomationObject(info) {}
    static ComPtr<CShapes> Make(const ClassInfo& info = kInfo) { return ComPtr<CShapes>::Attach(new CShapes(info)); }

    STDMETHODIMP EchoLong(LONG value, LONG* result) noexcept override { return Echo(value, result); }
    STDMETHODIMP EchoDouble(DOUBLE value, DOUBLE* result) noexcept override { return Echo(value, result); }
    STDMETHODIMP EchoString(BSTR value, BSTR* result) noexcept override { return Echo(value, result); }
    STDMETHODIMP EchoVariant(VARIANT value, VARIANT* result) noexcept override { return Echo(value, result); }
    STDMETHODIMP EchoObject(IDispatch* value, IDispatch** result) noexcept override { return Echo(value, result); }
    STDMETHODIMP EchoFont(IFontDisp* value, IFontDisp** result) noexcept override { return Echo(value, result); }

    STDMETHODIMP BumpShort(SHORT* value, SHORT* result) noexcept override { return Bump(value, result); }
    STDMETHODIMP BumpLong(LONG* value, LONG* result) noexcept override { return Bump(value, result); }
    STDMETHODIMP BumpBoolean(VARIANT_BOOL* value, VARIANT_BOOL* result) noexcept override {
        return Bump(value, result);
    }
    STDMETHODIMP BumpString(BSTR* value, BSTR* result) noexcept override { return Bump(value, result); }
    STDMETHODIMP BumpVariant(VARIANT* value, VARIANT* result) noexcept override { return Bump(value, result); }
    STDMETHODIMP BumpKind(EFailure* value, EFailure* result) noexcept override { return Bump(value, result); }
    STDMETHODIMP SwapObject(IDispatch** value, IDispatch** result) noexcept override { return Bump(value, result); }
    STDMETHODIMP SwapFont(IFontDisp** value, IFontDisp** result) noexcept override { return Bump(value, result); }

    STDMETHODIMP FillStrings(SAFEARRAY** strings, LONG count, BSTR* result) noexcept override;
    STDMETHODIMP Mixed(SHORT a, DOUBLE b, LONG c, DOUBLE* d, BSTR* e, VARIANT f, BSTR g, FLOAT h,
                       BSTR* result) noexcept override;
    STDMETHODIMP Optional(LONG first, LONG number, LONG* reference, BSTR text, VARIANT rest, VARIANT* last,
                          BSTR* result) noexcept override;

    STDMETHODIMP get_Step(LONG* result) noexcept override { return Echo(step_, result); }
    STDMETHODIMP put_Step(LONG value) noexcept override;
    STDMETHODIMP get_Item(LONG index, VARIANT* result) noexcept override;
    STDMETHODIMP put_Item(LONG index, VARIANT value) noexcept override;
    STDMETHODIMP putref_Item(LONG index, VARIANT value) noexcept override;

    STDMETHODIMP Fail(EFailure kind, LONG* result) noexcept override;

  private:
    template <class T>
    HRESULT Echo(T value, T* result) const noexcept {
        return Guard(result, [&] { return Copy(value); });
    }
    template <class T>
    HRESULT Bump(T* value, T* result) noexcept {
        return Guard(result, [&] {
            auto was = Copy(Given(value));
            if (step_ != 0) Change(*value);
            return was;
        });
    }
    template <class T>
    static T Copy(T value) {
        return value;
    }
    static Bstr Copy(BSTR value) { return Bstr(View(value)); }
    static Variant Copy(const VARIANT& value);
    static ComPtr<IDispatch> Copy(IDispatch* value) { return ComPtr<IDispatch>(value); }
    static ComPtr<IFontDisp> Copy(IFontDisp* value) { return ComPtr<IFontDisp>(value); }
    template <class T>
    void Change(T& value) {
        value = static_cast<T>(value + static_cast<T>(step_));
    }
    void Change(BSTR& value);
    void Change(VARIANT& value);
    void Change(IDispatch*& value);
    void Change(IFontDisp*& value);

    LONG step_ = 1;
    Variant items_[4];
};

// What a value is and holds, locale and address independent, such as "8:text" or "array of 12 from 1: 8:a 8:b".
std::wstring Describe(const VARIANT& value);

}  // namespace velk::test
