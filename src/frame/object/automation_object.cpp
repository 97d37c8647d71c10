#include "frame/object/automation_object.h"

#include <string>
#include <string_view>

#include "frame/failure/report.h"
#include "frame/object/enumerator.h"

namespace velk {
namespace {

constexpr ULONG kDestroyed = 0x80000000;  // more references than anybody takes

// The name by which clients know a member: that of the function without "get_", "put_" or "putref_".
std::wstring NameOf(std::string_view member) {
    for (const std::string_view accessor : {"get_", "put_", "putref_"}) {
        if (!member.starts_with(accessor)) continue;
        member.remove_prefix(accessor.size());
        break;
    }
    return {member.begin(), member.end()};
}

struct EnumeratedValue {
    Variant value;

    bool Give(VARIANT& given) const noexcept {
        VariantInit(&given);
        return SUCCEEDED(VariantCopy(&given, const_cast<Variant*>(&value)));
    }
};

void Report(const Failure& failure, const wchar_t* prefix, const char* member) noexcept try {
    ReportFailure(failure, (prefix + NameOf(member)).c_str());
} catch (...) {  // out of memory: there is nothing left to say it with
}

}  // namespace

ULONG ObjectCore::CountDown() noexcept {
    const ULONG left = count_.fetch_sub(1, std::memory_order_acq_rel) - 1;
    if (left == 0 && calls_ == 0) Destroy();
    return left;
}

bool ObjectCore::CountUpIfAlive() noexcept {
    ULONG count = count_;
    while (count != 0 && count < kDestroyed && !count_.compare_exchange_weak(count, count + 1)) {
    }
    return count != 0 && count < kDestroyed;
}

// A destructor may run code that takes and drops references to the object.
void ObjectCore::Destroy() noexcept {
    count_ = kDestroyed;
    delete this;
}

void* ObjectCore::FaceOf(REFIID iid, const IID& own, IDispatch* object, ISupportErrorInfo* errors,
                         IProvideClassInfo2* description) noexcept {
    if (iid == own || iid == IID_IDispatch || iid == IID_IUnknown) return object;
    if (iid == __uuidof(ISupportErrorInfo)) return errors;
    const bool described = iid == __uuidof(IProvideClassInfo) || iid == __uuidof(IProvideClassInfo2);
    return described ? description : nullptr;
}

HRESULT ObjectCore::Fail(const char* member, Policy ofMember, const Thrown* thrown) const noexcept try {
    const FailurePolicy policy = ofMember == Policy::PassOn ? FailurePolicy::PassOn : info_.policy;
    const Failure failure = thrown ? FailureOf(*thrown) : CaughtFailure();
    const bool ours = failure.kind != Thrown::Kind::Runtime;
    if (failure.kind == Thrown::Kind::NullArgument || policy == FailurePolicy::PassOn) {
        return RaiseToClient(failure, info_.name, info_.iid);
    }
    if (policy != FailurePolicy::ComponentFailure) {
        Report(failure, info_.reportedPrefix, member);
        return policy == FailurePolicy::Report ? S_OK : RaiseToClient(failure, info_.name, info_.iid);
    }
    if (ours) return RaiseToClient(failure, info_.name, info_.iid);
    const std::wstring description = std::wstring(info_.name) + L" component failure";
    return RaiseToClient(
        {Thrown::Kind::Class, info_.componentFailure, info_.componentFailure, description, ErrorSource::Class},
        info_.name, info_.iid);
} catch (...) {
    return E_OUTOFMEMORY;
}

#ifndef NDEBUG
HRESULT ObjectCore::CheckThread(const char* member) const noexcept try {
    if (GetCurrentThreadId() == thread_) return S_OK;
    const std::wstring where = std::wstring(info_.name) + L"." + NameOf(member);
    OutputDebugStringW((where + L" is called on a thread that did not make the object\n").c_str());
    return RPC_E_WRONG_THREAD;
} catch (...) {
    return RPC_E_WRONG_THREAD;
}
#endif

HRESULT ObjectCore::InvokeUnlisted(const InterfacePlan& plan, IDispatch* object,
                                   const dispatch::Request& request) noexcept {
    if (request.id == DISPID_VALUE && info_.defaultMember != DISPID_UNKNOWN) {
        dispatch::Request ofDefault = request;
        ofDefault.id = info_.defaultMember;
        return dispatch::Invoke(plan, References::OnlyRead, object, ofDefault);
    }
    if (request.id != DISPID_NEWENUM) return DISP_E_MEMBERNOTFOUND;
    return InvokeEnumerator(*request.parameters, request.result, request.exception);
}

HRESULT ObjectCore::InvokeEnumerator(const DISPPARAMS& parameters, VARIANT* result, EXCEPINFO* exception) noexcept try {
    if (parameters.cArgs != 0) return DISP_E_BADPARAMCOUNT;
    auto items = Items();
    if (!items) return DISP_E_MEMBERNOTFOUND;
    std::vector<EnumeratedValue> values;
    values.reserve(items->size());
    for (Variant& item : *items) values.push_back({std::move(item)});
    ComPtr<IEnumVARIANT> enumerator;
    const HRESULT made =
        Enumerator<IEnumVARIANT, EnumeratedValue, VARIANT>::Make(std::move(values), enumerator.Receive());
    if (FAILED(made) || !result) return made;
    result->vt = VT_UNKNOWN;
    result->punkVal = enumerator.Detach();
    return S_OK;
} catch (...) {
    return dispatch::Exception(Fail("NewEnum", Policy::PassOn, nullptr), exception);
}

HRESULT ObjectCore::GetCoclass(ITypeInfo** info) const noexcept {
    if (!info) return E_POINTER;
    *info = nullptr;
    return dispatch::GetTypeInfoOf(info_.clsid, info);
}

HRESULT ObjectCore::GetEventsGuid(DWORD kind, GUID* guid) const noexcept {
    if (!guid) return E_POINTER;
    *guid = GUID_NULL;
    if (kind != GUIDKIND_DEFAULT_SOURCE_DISP_IID) return E_INVALIDARG;
    if (!info_.events) return E_NOTIMPL;
    *guid = *info_.events;
    return S_OK;
}

}  // namespace velk
