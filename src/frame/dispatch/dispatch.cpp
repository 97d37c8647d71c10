#include "frame/dispatch/dispatch.h"

#include <algorithm>
#include <memory>
#include <new>

#include "frame/dispatch/argument.h"
#include "frame/failure/failure.h"
#include "frame/module/library.h"
#include "platform/com_ptr.h"
#include "platform/text.h"

namespace velk::dispatch {
namespace {

// The settled arguments of one call, in the member's order. Only as many are constructed as the member takes.
class Arguments {
  public:
    explicit Arguments(const CallPlan& plan) noexcept : plan_(plan) {
        std::uninitialized_default_construct_n(all(), plan.parameters.size());
    }
    Arguments(const Arguments&) = delete;
    Arguments& operator=(const Arguments&) = delete;
    ~Arguments() { std::destroy_n(all(), plan_.parameters.size()); }

    HRESULT Settle(const DISPPARAMS& given, LCID locale, UINT* badArgument) noexcept;
    HRESULT Call(IDispatch* object, void* result) noexcept;
    HRESULT WriteBack(LCID locale) noexcept;

  private:
    HRESULT Match(const DISPPARAMS& given, UINT* badArgument) noexcept;
    HRESULT MatchNamed(const DISPPARAMS& given, UINT* badArgument) noexcept;
    Argument* all() noexcept { return reinterpret_cast<Argument*>(storage_); }

    const CallPlan& plan_;
    UINT index_[kMaxArguments];  // where each one stands in the caller's array, kOmitted if it does not
    alignas(Argument) std::byte storage_[sizeof(Argument) * kMaxArguments];
};

constexpr UINT kOmitted = static_cast<UINT>(-1);

// Callers lay arguments down in reverse: the named ones first, then the last positional one to the first.
HRESULT Arguments::Match(const DISPPARAMS& given, UINT* badArgument) noexcept {
    const std::size_t wanted = plan_.parameters.size();
    if (given.cArgs > wanted || given.cNamedArgs > given.cArgs) return DISP_E_BADPARAMCOUNT;
    if ((given.cArgs && !given.rgvarg) || (given.cNamedArgs && !given.rgdispidNamedArgs)) return DISP_E_BADPARAMCOUNT;
    std::fill_n(index_, wanted, kOmitted);
    for (UINT i = 0; i < given.cArgs - given.cNamedArgs; ++i) index_[i] = given.cArgs - 1 - i;
    if (plan_.isLet && given.cNamedArgs == 0) return DISP_E_PARAMNOTFOUND;
    return given.cNamedArgs ? MatchNamed(given, badArgument) : S_OK;
}

HRESULT Arguments::MatchNamed(const DISPPARAMS& given, UINT* badArgument) noexcept {
    const auto wanted = static_cast<DISPID>(plan_.parameters.size());
    for (UINT i = 0; i < given.cNamedArgs; ++i) {
        const DISPID name = given.rgdispidNamedArgs[i];
        const DISPID position = plan_.isLet && name == DISPID_PROPERTYPUT ? wanted - 1 : name;
        if (position < 0 || position >= wanted || index_[position] != kOmitted) {
            *badArgument = i;
            return DISP_E_PARAMNOTFOUND;
        }
        index_[position] = i;
    }
    return S_OK;
}

HRESULT Arguments::Settle(const DISPPARAMS& given, LCID locale, UINT* badArgument) noexcept {
    HRESULT result = Match(given, badArgument);
    const std::size_t count = plan_.parameters.size();
    std::size_t at = 0;
    for (at = 0; SUCCEEDED(result) && at < count; ++at) {
        VARIANT* const value = index_[at] == kOmitted ? nullptr : &given.rgvarg[index_[at]];
        result = all()[at].SettleObjects(plan_.parameters[at], value, locale);
        if (FAILED(result)) *badArgument = index_[at] == kOmitted ? 0 : index_[at];
    }
    for (at = 0; SUCCEEDED(result) && at < count; ++at) {
        result = all()[at].SettleRest(plan_.parameters[at], locale);
        if (FAILED(result)) *badArgument = index_[at] == kOmitted ? 0 : index_[at];
    }
    return result;
}

HRESULT Arguments::Call(IDispatch* object, void* result) noexcept {
    SlotCall call;
    for (std::size_t i = 0; i < plan_.parameters.size(); ++i) {
        const Parameter& parameter = plan_.parameters[i];
        const VARIANT& passed = all()[i].passed();
        parameter.byReference ? call.AddPointer(passed.byref) : call.AddValue(passed, parameter.type);
    }
    return call.Run(object, plan_.slot, result);
}

HRESULT Arguments::WriteBack(LCID locale) noexcept {
    HRESULT result = S_OK;
    for (std::size_t i = 0; SUCCEEDED(result) && i < plan_.parameters.size(); ++i) {
        result = all()[i].WriteBack(plan_.parameters[i], locale);
    }
    return result;
}

// Where a member stores its result: the whole variant, or the value inside it.
void* PlaceOf(VARIANT& result, VARTYPE type) noexcept {
    if (type == VT_EMPTY) return nullptr;
    if (type == VT_VARIANT) return &result;
    result.vt = type;
    return &result.byref;
}

// What goes wrong on the way to the member and back is the answer; how the member itself ended is `ended`.
[[gnu::noinline]] HRESULT CallWithAny(const CallPlan& plan, IDispatch* object, const DISPPARAMS& given, LCID locale,
                                      void* result, HRESULT* ended, UINT* badArgument) noexcept {
    Arguments arguments(plan);
    const HRESULT settled = arguments.Settle(given, locale, badArgument);
    if (FAILED(settled)) return settled;
    *ended = arguments.Call(object, result);
    return SUCCEEDED(*ended) ? arguments.WriteBack(locale) : S_OK;
}

}  // namespace

HRESULT GetTypeInfoOf(REFGUID guid, ITypeInfo** info) noexcept try {
    *info = library::TypeInfo(guid).Detach();
    return S_OK;
} catch (...) {
    return CaughtFailure().code;
}

HRESULT GetIDsOfNames(const InterfacePlan& plan, REFIID reserved, LPOLESTR* names, UINT count, DISPID* ids) noexcept {
    if (reserved != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
    if (!names || !ids || !count) return E_INVALIDARG;
    std::fill_n(ids, count, DISPID_UNKNOWN);
    if (!std::all_of(names, names + count, [](LPOLESTR name) { return name != nullptr; })) return E_INVALIDARG;
    ids[0] = plan.MemberId(names[0]);
    for (UINT i = 1; i < count && ids[0] != DISPID_UNKNOWN; ++i) ids[i] = plan.ParameterId(ids[0], Utf16(names[i]));
    return std::find(ids, ids + count, DISPID_UNKNOWN) == ids + count ? S_OK : DISP_E_UNKNOWNNAME;
}

HRESULT Exception(HRESULT failure, EXCEPINFO* exception) noexcept {
    if (!exception) return DISP_E_EXCEPTION;
    *exception = {};
    exception->scode = failure;
    ComPtr<IErrorInfo> info;
    if (GetErrorInfo(0, info.Receive()) == S_OK) {
        info->GetSource(&exception->bstrSource);
        info->GetDescription(&exception->bstrDescription);
        info->GetHelpFile(&exception->bstrHelpFile);
        info->GetHelpContext(&exception->dwHelpContext);
    }
    return DISP_E_EXCEPTION;
}

HRESULT Invoke(const InterfacePlan& plan, References references, IDispatch* object, const Request& request) noexcept {
    if (request.reserved != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
    if (!request.parameters) return DISP_E_BADPARAMCOUNT;
    Variant answer;  // not the client's yet: its place for the result may be one of the arguments
    HRESULT called = DISP_E_MEMBERNOTFOUND;
    HRESULT ended = S_OK;
    UINT ignored = 0;
    if (const CallPlan* const member = plan.Find(request.id, request.flags)) {
        void* const place = PlaceOf(answer, member->result);
        called = FittingCall::Make(*member, references, *request.parameters, object, place, &ended)
                     ? S_OK
                     : CallWithAny(*member, object, *request.parameters, request.locale, place, &ended,
                                   request.badArgument ? request.badArgument : &ignored);
    }
    const bool succeeded = SUCCEEDED(called) && SUCCEEDED(ended);
    if (request.result) *request.result = succeeded ? answer.Detach() : VARIANT{};
    if (succeeded) return S_OK;
    return FAILED(called) ? called : Exception(ended, request.exception);
}

}  // namespace velk::dispatch
