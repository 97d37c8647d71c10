// The class behind shapes.idl. It stands in the test program itself, which embeds the type library.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <functional>

#include "frame/object/automation_object.h"
#include "platform/text.h"
#include "platform/variant.h"
#include "shapes.h"
#include "support/late_bound.h"
#include "support/malloc_spy.h"
#include "support/value_object.h"

namespace velk::test {

// A value of its own, whatever the given one refers to.
inline Variant Copy(const VARIANT& value) {
    Variant copy;
    ThrowIfFailed(VariantCopyInd(&copy, const_cast<VARIANT*>(&value)));
    return copy;
}

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
    using Object = IDispatch*;
    using Font = IFontDisp*;
    STDMETHODIMP EchoShort(SHORT value, SHORT* result) noexcept override { return Echo<VT_I2>(value, result); }
    STDMETHODIMP EchoBoolean(Truth value, Truth* result) noexcept override { return Echo<VT_BOOL>(value, result); }
    STDMETHODIMP EchoLong(LONG value, LONG* result) noexcept override { return Echo<VT_I4>(value, result); }
    STDMETHODIMP EchoDouble(DOUBLE value, DOUBLE* result) noexcept override { return Echo<VT_R8>(value, result); }
    STDMETHODIMP EchoString(BSTR value, BSTR* result) noexcept override { return Echo<VT_BSTR>(value, result); }
    STDMETHODIMP EchoVariant(VARIANT value, VARIANT* result) noexcept override {
        return Echo<VT_VARIANT>(value, result);
    }
    STDMETHODIMP EchoObject(Object value, Object* result) noexcept override { return Echo<VT_DISPATCH>(value, result); }
    STDMETHODIMP EchoFont(Font value, Font* result) noexcept override { return Echo<VT_DISPATCH>(value, result); }

    STDMETHODIMP SwapShort(SHORT* value, SHORT* result) noexcept override { return Swap<VT_I2>(value, result); }
    STDMETHODIMP SwapBoolean(Truth* value, Truth* result) noexcept override { return Swap<VT_BOOL>(value, result); }
    STDMETHODIMP SwapLong(LONG* value, LONG* result) noexcept override { return Swap<VT_I4>(value, result); }
    STDMETHODIMP SwapDouble(DOUBLE* value, DOUBLE* result) noexcept override { return Swap<VT_R8>(value, result); }
    STDMETHODIMP SwapString(BSTR* value, BSTR* result) noexcept override { return Swap<VT_BSTR>(value, result); }
    STDMETHODIMP SwapVariant(VARIANT* value, VARIANT* result) noexcept override {
        return Swap<VT_VARIANT>(value, result);
    }
    STDMETHODIMP SwapObject(Object* value, Object* result) noexcept override {
        return Swap<VT_DISPATCH>(value, result);
    }
    STDMETHODIMP SwapFont(Font* value, Font* result) noexcept override { return Swap<VT_DISPATCH>(value, result); }
    STDMETHODIMP SwapStrings(SAFEARRAY** value, BSTR* result) noexcept override;
    STDMETHODIMP Mixed(SHORT a, DOUBLE b, LONG* c, BSTR d, VARIANT e, VARIANT* f, FLOAT g, BSTR* h,
                       BSTR* result) noexcept override;

    STDMETHODIMP get_Step(LONG* result) noexcept override;
    STDMETHODIMP put_Step(LONG value) noexcept override { return Let(&value, step_); }
    STDMETHODIMP get_Item(LONG index, VARIANT* result) noexcept override {
        return Echo<VT_VARIANT>(static_cast<const VARIANT&>(items_[index & 3]), result);
    }
    STDMETHODIMP put_Item(LONG index, VARIANT value) noexcept override;
    STDMETHODIMP putref_Item(LONG index, VARIANT value) noexcept override;

  private:
    // Between a member's argument and the variant that holds the same, or is it.
    template <class T>
    static VARIANT Held(VARTYPE type, const T& value) noexcept {
        VARIANT held{};
        held.vt = type;
        std::memcpy(type == VT_VARIANT ? static_cast<void*>(&held) : &held.byref, &value, sizeof value);
        return held;
    }
    template <class T>
    static T Contents(Variant held) noexcept {
        T contents;
        const VARIANT given = held.Detach();
        std::memcpy(&contents, std::is_same_v<T, VARIANT> ? static_cast<const void*>(&given) : &given.byref, sizeof(T));
        return contents;
    }
    template <VARTYPE kType, class T>
    HRESULT Echo(const T& value, T* result) const noexcept {
        return Guard(result, [&] { return Contents<T>(Copy(Held(kType, value))); });
    }
    template <VARTYPE kType, class T>
    HRESULT Swap(T* value, T* result) noexcept {
        return Guard(result, [&] {
            Variant was = Copy(Held(kType, Given(value)));
            Exchange(kType, *value);
            return Contents<T>(std::move(was));
        });
    }
    template <class T>
    void Exchange(VARTYPE type, T& value) {
        VARIANT before = Held(type, value);
        value = Contents<T>(std::exchange(kept_, Copy(before)));
        VariantClear(&before);
    }

    LONG step_ = 1;
    Variant kept_, items_[4];
};

// The number of a value's type and what it holds as facts have it; which object, too.
std::wstring Describe(const VARIANT& value);

inline Variant Holding(VARTYPE type, void* content = nullptr) {
    Variant made;
    made.vt = type;
    made.byref = content;
    return made;
}

// An object with every shape of member, and a check that nothing is left behind.
class ShapesTest : public testing::Test {
  protected:
    // What the library and the platform make once and keep is made before the counting starts.
    void SetUp() override {
        Get(shapes_.get(), L"Step");
        InvokeByPlatform(shapes_.get(), L"EchoFont", DISPATCH_METHOD,
                         {Holding(VT_DISPATCH)});  // reads the fonts' types
        EXPECT_TRUE(library::Use::Any());
        alive_ = MallocSpy::Alive();
    }
    void TearDown() override {
        shapes_ = nullptr;
        EXPECT_FALSE(library::Use::Any());
        EXPECT_EQ(alive_, MallocSpy::Alive()) << "strings or arrays left behind";
    }

    ComPtr<CShapes> shapes_ = CShapes::Make();
    LONG alive_ = 0;
};

}  // namespace velk::test
