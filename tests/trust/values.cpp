#include "trust/values.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "platform/text.h"

namespace velk::test {
namespace {

Variant SimpleValue();

Variant Of(VARTYPE type, LONGLONG bits = 0) {
    Variant value;
    value.vt = type;
    value.llVal = bits;
    return value;
}

template <class Object>
Variant Of(VARTYPE type, ComPtr<Object> object) {
    return Of(type, reinterpret_cast<LONG_PTR>(object.Detach()));
}

Variant TextValue() { return Of(VT_BSTR, OneIn(10) ? 0 : reinterpret_cast<LONG_PTR>(Bstr(AnyText()).Detach())); }

Variant NumberValue() {
    // Round the powers of two, and what is no number or infinite: single and double.
    static const LONGLONG kNoNumbers[] = {0x7FC00000, 0x7F800000, 0xFF800000, 0x7FF8LL << 48, 0x7FF0LL << 48};
    const LONGLONG edge = static_cast<LONGLONG>((1ull << Below(64)) - static_cast<unsigned>(Below(3)));
    const LONGLONG bits = OneIn(3) ? static_cast<LONGLONG>(engine()) << Below(32) : OneIn(8) ? AnyOf(kNoNumbers) : edge;
    VARTYPE type = VT_UNKNOWN;
    while (!IsSelfContained(type)) type = static_cast<VARTYPE>(Below(VT_UINT + 1));
    Variant value = Of(type, OneIn(2) ? bits : -bits);
    if (value.vt == VT_DECIMAL) value.decVal.Hi32 = engine();
    return value;
}

Variant ObjectValue() {
    if (!furtherObjects.empty() && OneIn(2)) return Of(VT_DISPATCH, AnyOf(furtherObjects));
    const VARTYPE type = OneIn(3) ? VT_UNKNOWN : VT_DISPATCH;
    return OneIn(4) ? Of(type) : Of(type, AnyOf(Objects()));
}

Variant SimpleValue() { return OneIn(3) ? TextValue() : OneIn(3) ? ObjectValue() : NumberValue(); }

SAFEARRAY* Filled(SAFEARRAY* array, VARTYPE type) {
    std::size_t count = 1;
    for (USHORT i = 0; i < array->cDims; ++i) count *= array->rgsabound[i].cElements;
    for (std::size_t i = 0; i < count; ++i) {
        if (type == VT_BSTR) static_cast<BSTR*>(array->pvData)[i] = TextValue().Detach().bstrVal;
        if (type == VT_VARIANT) static_cast<VARIANT*>(array->pvData)[i] = SimpleValue().Detach();
    }
    return array;
}

Variant VectorOf(VARTYPE type) {
    SAFEARRAY* const array = SafeArrayCreateVector(type, OneIn(2), static_cast<ULONG>(Below(5)));
    return Of(VT_ARRAY | type, reinterpret_cast<LONG_PTR>(Filled(array, type)));
}

// Of any type, dimensions and bounds; sometimes not allocated, without data, or of another type than its value says.
Variant ArrayValue() {
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

Variant SaneValue(VARTYPE type) {
    if (type == VT_VARIANT) return OneIn(5) ? VectorOf(VT_BSTR) : SimpleValue();
    if (type == VT_BSTR) return TextValue();
    if (type == VT_DISPATCH || type == VT_UNKNOWN) return ObjectValue();
    if (type == (VT_ARRAY | VT_BSTR)) return OneIn(5) ? Of(type) : VectorOf(VT_BSTR);
    if (type == VT_I4 && !realWindows.empty() && OneIn(2)) return Of(type, AnyOf(realWindows));
    Variant value = Of(type, Below(5));
    if (type == VT_R8) value.dblVal = Below(1000) / 8.0;
    return value;
}

std::vector<ComPtr<ValueObject>> MakeObjects() {
    std::vector<ComPtr<ValueObject>> objects;
    const Variant text = Text(L"12");
    for (const VARIANT& value : {Arg(12L), static_cast<const VARIANT&>(text), Missing()}) {
        objects.push_back(ValueObject::Make(value));
    }
    for (const HRESULT answer : {E_FAIL, DISP_E_EXCEPTION, DISP_E_MEMBERNOTFOUND, E_OUTOFMEMORY, RPC_E_DISCONNECTED}) {
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
}

}  // namespace

std::wstring AnyText() {
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

// One type in eight may not exist, and is without contents: no client can pass a pointer of a kind that nobody knows.
Variant AnyValue() {
    if (OneIn(8)) return Of(static_cast<VARTYPE>(OneIn(2) ? engine() : Below(80) | (Below(8) << 12)));
    return OneIn(4) ? ArrayValue() : SimpleValue();
}

// The hook library takes nothing but hooks.
Variant ExactValue(VARTYPE type) {
    const bool isHook = type == VT_DISPATCH && !furtherObjects.empty();
    return isHook ? Of(type, furtherObjects[0]) : SaneValue(type);
}

std::vector<ComPtr<ValueObject>>& Objects() {
    static std::vector<ComPtr<ValueObject>> objects = MakeObjects();
    return objects;
}

// Scripts have texts for numbers, and arrays of variants for those of texts.
VARIANT Client::Sane(Taken taken) {
    Variant value = OneIn(4) ? SimpleValue() : SaneValue(taken.type);
    if (value.vt < VT_BSTR && OneIn(8)) VariantChangeType(&value, &value, 0, VT_BSTR);
    if (value.vt == (VT_ARRAY | VT_BSTR) && OneIn(3)) value = VectorOf(VT_VARIANT);
    if (value.vt != taken.type || OneIn(3)) return OneIn(2) ? Plain(std::move(value)) : Variable(std::move(value));
    return taken.byReference ? Reference(std::move(value)) : Plain(std::move(value));
}

VARIANT Client::Any() {
    if (OneIn(8)) return OneIn(3) ? Missing() : Arg(static_cast<VARIANT*>(nullptr));
    if (OneIn(8)) return variables_.empty() ? Missing() : Arg(AnyOf(variables_));
    if (OneIn(3)) return Plain(AnyValue());
    const VARIANT reference = OneIn(2) ? Reference(AnyValue()) : Variable(AnyValue());
    return OneIn(4) ? Variable(Owned(reference)) : reference;
}

void Client::ChangeAVariable() {
    if (!current_ || current_->variables_.empty()) return;
    VARIANT* const variable = AnyOf(current_->variables_);
    if (SUCCEEDED(VariantClear(variable)))
        *variable = OneIn(2) ? AnyValue().Detach() : Ref(static_cast<VARTYPE>(VT_I2 + Below(20)), nullptr);
}

}  // namespace velk::test
