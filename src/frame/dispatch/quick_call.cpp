#include "frame/dispatch/quick_call.h"

#include <utility>

#include "frame/dispatch/conversion.h"

namespace velk::dispatch {
namespace {

// A member that takes a variant may be lent any that needs neither a reference of its own nor to be followed.
const void* LentVariant(const VARIANT& value) noexcept {
    return value.vt == VT_BSTR || IsSelfContained(value.vt) ? &value : nullptr;
}

// What the member gets: the client's own, or the value of `own`, which is Empty before, and owns afterwards what was
// converted and not what was copied. Null when the argument needs more than that. A null `given` is one left out.
const void* Lent(const Parameter& parameter, const VARIANT* given, Variant* own) noexcept {
    if (!given && !parameter.optional) return nullptr;
    const VARIANT& value = given ? *given : parameter.defaultValue;
    const VARIANT* const variable = value.vt == kVariable ? value.pvarVal : nullptr;
    if (parameter.type == VT_VARIANT) return LentVariant(variable ? *variable : value);
    if (value.vt == parameter.type) {
        own->llVal = value.llVal;
        return &own->byref;
    }
    if (value.vt == (parameter.type | VT_BYREF)) return value.byref;
    if (variable) return variable->vt == parameter.type ? &variable->byref : nullptr;
    return Convert(own, parameter.type, value) ? &own->byref : nullptr;
}

template <std::size_t... I>
bool Lend(const QuickCall& call, IDispatch* object, const DISPPARAMS& given, VARIANT* answer, EXCEPINFO* exception,
          HRESULT* ended, std::index_sequence<I...>) noexcept {
    Variant own[sizeof...(I)];
    const void* lent[sizeof...(I)];
    for (UINT i = 0; i < sizeof...(I); ++i) {
        lent[i] = Lent(call.parameters[i], i < given.cArgs ? &given.rgvarg[given.cArgs - 1 - i] : nullptr, &own[i]);
        if (!lent[i]) return false;
    }
    *ended = InvokeQuick(call, object, answer, exception, lent[I]...);
    return true;
}

}  // namespace

bool InvokeLending(const QuickCall& call, IDispatch* object, const DISPPARAMS& given, VARIANT* result,
                   EXCEPINFO* exception, HRESULT* ended) noexcept {
    if (given.cArgs && !given.rgvarg) return false;
    if (call.named &&
        (given.cArgs != call.count || !given.rgdispidNamedArgs || *given.rgdispidNamedArgs != DISPID_PROPERTYPUT)) {
        return false;
    }
    VARIANT answer{};  // the client's place for the result may be one of the arguments
    const auto lend = [&](auto count) { return Lend(call, object, given, &answer, exception, ended, count); };
    const bool lent = call.count == 1   ? lend(std::make_index_sequence<1>())
                      : call.count == 2 ? lend(std::make_index_sequence<2>())
                      : call.count == 3 ? lend(std::make_index_sequence<3>())
                                        : lend(std::make_index_sequence<4>());
    if (lent && result) *result = answer;
    return lent;
}

}  // namespace velk::dispatch
