// Values of every kind that a client can pass, and arguments made of them. The order is random but always the same.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <random>
#include <vector>

#include "platform/text.h"
#include "support/late_bound.h"
#include "support/value_object.h"

namespace velk::test {

inline constexpr unsigned kSeed = 20030117;
inline std::mt19937 engine(kSeed);

inline int Below(int limit) { return static_cast<int>(engine() % static_cast<unsigned>(limit)); }
inline bool OneIn(int count) { return Below(count) == 0; }
template <class Values>
auto& AnyOf(Values& values) {
    return values[static_cast<std::size_t>(Below(static_cast<int>(std::size(values))))];
}

// What calls may meet: windows, texts that name something, and objects. Reading an object or asking it who it is runs
// the client's code.
inline std::vector<LONG> realWindows;
inline std::vector<std::wstring> furtherTexts;
inline std::vector<ComPtr<IDispatch>> furtherObjects;
inline std::function<void()> clientCode;

inline Variant Of(VARTYPE type, LONGLONG bits = 0) { return Owned(Bare(type, bits)); }
template <class Object>
Variant Of(VARTYPE type, ComPtr<Object> object) {
    return Of(type, reinterpret_cast<LONG_PTR>(object.Detach()));
}

inline const std::vector<ComPtr<ValueObject>>& Objects() {
    static const std::vector<ComPtr<ValueObject>> all = [] {
        std::vector<ComPtr<ValueObject>> objects;
        const Variant text = Text(L"12");
        for (const VARIANT& value : {Arg(12L), static_cast<const VARIANT&>(text), Missing()}) {
            objects.push_back(ValueObject::Make(value));
        }
        for (const HRESULT answer :
             {E_FAIL, DISP_E_EXCEPTION, DISP_E_MEMBERNOTFOUND, E_OUTOFMEMORY, RPC_E_DISCONNECTED}) {
            objects.push_back(ValueObject::Make(Arg(0L)));
            objects.back()->answer = answer;
        }
        // One of them is a picture, too.
        PICTDESC none{sizeof(PICTDESC), PICTYPE_NONE, {}};
        EXPECT_EQ(S_OK, OleCreatePictureIndirect(&none, IID_IPictureDisp, TRUE, objects[0]->more.ReceiveVoid()));
        const auto interfere = [](auto...) {
            if (clientCode) clientCode();
        };
        for (const auto& object : objects) object->onRead = interfere, object->onQuestion = interfere;
        return objects;
    }();
    return all;
}

inline std::wstring AnyText() {
    static const wchar_t* const kTexts[] = {L"",    L"0",    L"-1",         L"1e999",
                                            L"abc", L"True", L"12/31/1999", L"C:\\none\\x.dat"};
    // around the sizes of the buffers that texts go through
    static const int kLengths[] = {254, 255, 256, 259, 260, 261, 8191, 8192, 8193, 32'767, 65'535, 65'536, 100'000};
    if (!furtherTexts.empty() && OneIn(4)) return AnyOf(furtherTexts);
    if (OneIn(2)) return AnyOf(kTexts);
    std::wstring text(static_cast<std::size_t>(OneIn(100) ? AnyOf(kLengths) : Below(40)), L' ');
    for (wchar_t& c : text) c = static_cast<wchar_t>(OneIn(3) ? engine() : L'!' + Below(90));
    return text;
}

inline Variant TextValue() { return Of(VT_BSTR, OneIn(10) ? 0 : reinterpret_cast<LONG_PTR>(Bstr(AnyText()).Detach())); }

inline Variant NumberValue() {
    // Round the powers of two, and what is no number or infinite: single and double.
    static const ULONGLONG kNoNumbers[] = {0x7FC00000, 0x7F800000, 0xFF800000, 0x7FF8ull << 48, 0x7FF0ull << 48};
    const ULONGLONG edge = (1ull << Below(64)) - static_cast<unsigned>(Below(3));
    const ULONGLONG bits = OneIn(3) ? ULONGLONG{engine()} << Below(32) : OneIn(8) ? AnyOf(kNoNumbers) : edge;
    VARTYPE type = VT_UNKNOWN;
    while (!IsSelfContained(type)) type = static_cast<VARTYPE>(Below(VT_UINT + 1));
    Variant value = Of(type, static_cast<LONGLONG>(OneIn(2) ? bits : 0 - bits));
    if (value.vt == VT_DECIMAL) value.decVal.Hi32 = engine();
    return value;
}

inline Variant ObjectValue() {
    if (!furtherObjects.empty() && OneIn(2)) return Of(VT_DISPATCH, AnyOf(furtherObjects));
    const VARTYPE type = OneIn(3) ? VT_UNKNOWN : VT_DISPATCH;
    return OneIn(4) ? Of(type) : Of(type, AnyOf(Objects()));
}

inline Variant SimpleValue() { return OneIn(3) ? TextValue() : OneIn(3) ? ObjectValue() : NumberValue(); }

inline SAFEARRAY* Filled(SAFEARRAY* array, VARTYPE type) {
    std::size_t count = 1;
    for (USHORT i = 0; i < array->cDims; ++i) count *= array->rgsabound[i].cElements;
    for (std::size_t i = 0; i < count; ++i) {
        if (type == VT_BSTR) static_cast<BSTR*>(array->pvData)[i] = TextValue().Detach().bstrVal;
        if (type == VT_VARIANT) static_cast<VARIANT*>(array->pvData)[i] = SimpleValue().Detach();
    }
    return array;
}

inline Variant VectorOf(VARTYPE type) {
    SAFEARRAY* const array = SafeArrayCreateVector(type, OneIn(2), static_cast<ULONG>(Below(5)));
    return Of(VT_ARRAY | type, reinterpret_cast<LONG_PTR>(Filled(array, type)));
}

// Of any type, dimensions and bounds; sometimes not allocated, without data, or of another type than its value says.
inline Variant ArrayValue() {
    static const VARTYPE kTypes[] = {VT_BSTR, VT_VARIANT, VT_BSTR, VT_VARIANT, VT_I4, VT_UI1, VT_R8, VT_DISPATCH};
    static const LONG kLowest[] = {0, 1, -3, 0x7FFFFFF0};
    const VARTYPE type = AnyOf(kTypes), said = VT_ARRAY | (OneIn(8) ? AnyOf(kTypes) : type);
    if (OneIn(8)) return Of(said);
    SAFEARRAY* array = nullptr;
    const UINT dimensions = OneIn(2) ? 1 : static_cast<UINT>(1 + Below(3));
    SAFEARRAYBOUND bounds[3];
    for (SAFEARRAYBOUND& bound : bounds) bound = {static_cast<ULONG>(Below(5)), AnyOf(kLowest)};
    if (OneIn(8)) {
        SafeArrayAllocDescriptorEx(type, dimensions, &array);
        std::copy_n(bounds, dimensions, array->rgsabound);
    } else {
        array = Filled(SafeArrayCreate(type, dimensions, bounds), type);
    }
    return Of(said, reinterpret_cast<LONG_PTR>(array));
}

inline Variant SaneValue(VARTYPE type) {
    if (type == VT_VARIANT) return OneIn(5) ? VectorOf(VT_BSTR) : SimpleValue();
    if (type == VT_BSTR) return TextValue();
    if (type == VT_DISPATCH || type == VT_UNKNOWN) return ObjectValue();
    if (type == (VT_ARRAY | VT_BSTR)) return OneIn(5) ? Of(type) : VectorOf(VT_BSTR);
    if (type == VT_I4 && !realWindows.empty() && OneIn(2)) return Of(type, AnyOf(realWindows));
    Variant value = Of(type, Below(5));
    if (type == VT_R8) value.dblVal = Below(1000) / 8.0;
    return value;
}

// One type in eight may not exist, and is without contents: no client can pass a pointer of a kind that nobody knows.
inline Variant AnyValue() {
    if (OneIn(8)) return Of(static_cast<VARTYPE>(OneIn(2) ? engine() : Below(80) | (Below(8) << 12)));
    return OneIn(4) ? ArrayValue() : SimpleValue();
}

// The hook library takes nothing but hooks.
inline Variant ExactValue(VARTYPE type) {
    const bool isHook = type == VT_DISPATCH && !furtherObjects.empty();
    return isHook ? Of(type, furtherObjects[0]) : SaneValue(type);
}

// What a member takes.
struct Taken {
    VARTYPE type;
    bool byReference, optional;
};

// The client's side of one call: its values and variables, which are destroyed with it.
class Client {
  public:
    Client() noexcept : outer_(std::exchange(current_, this)) {}
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;
    ~Client() { current_ = outer_; }

    // As a client that knows the member passes it. Scripts have texts for numbers, and arrays of variants for those of
    // texts.
    VARIANT Sane(Taken taken) {
        Variant value = OneIn(4) ? SimpleValue() : SaneValue(taken.type);
        if (value.vt < VT_BSTR && OneIn(8)) VariantChangeType(&value, &value, 0, VT_BSTR);
        if (value.vt == (VT_ARRAY | VT_BSTR) && OneIn(3)) value = VectorOf(VT_VARIANT);
        if (value.vt != taken.type || OneIn(3)) return OneIn(2) ? Plain(std::move(value)) : Variable(std::move(value));
        return taken.byReference ? Reference(std::move(value)) : Plain(std::move(value));
    }
    VARIANT Any() {
        if (OneIn(8)) return OneIn(3) ? Missing() : Arg(static_cast<VARIANT*>(nullptr));
        if (OneIn(8)) return variables_.empty() ? Missing() : Arg(AnyOf(variables_));
        if (OneIn(3)) return Plain(AnyValue());
        const VARIANT reference = OneIn(2) ? Reference(AnyValue()) : Variable(AnyValue());
        return OneIn(4) ? Variable(Owned(reference)) : reference;
    }

    // Of the call that runs.
    static void ChangeAVariable() {
        if (!current_ || current_->variables_.empty()) return;
        VARIANT* const variable = AnyOf(current_->variables_);
        if (SUCCEEDED(VariantClear(variable)))
            *variable = OneIn(2) ? AnyValue().Detach() : Ref(static_cast<VARTYPE>(VT_I2 + Below(20)), nullptr);
    }

  private:
    VARIANT Plain(Variant value) { return values_.emplace_back(std::move(value)); }
    VARIANT Variable(Variant value) {
        variables_.push_back(&values_.emplace_back(std::move(value)));
        return Arg(variables_.back());
    }
    VARIANT Reference(Variant value) {
        Variant& kept = values_.emplace_back(std::move(value));
        const bool whole = kept.vt == VT_DECIMAL || kept.vt == VT_VARIANT;
        return Ref(kept.vt, whole || kept.vt & VT_BYREF ? nullptr : &kept.llVal);
    }

    static inline Client* current_ = nullptr;
    Client* const outer_;
    std::deque<Variant> values_;
    std::vector<VARIANT*> variables_;
};

}  // namespace velk::test
