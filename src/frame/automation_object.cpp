#include "frame/automation_object.h"

#include "frame/report.h"

namespace velk {

HRESULT GetTypeInfoOf(REFGUID guid, ITypeInfo** info) noexcept try {
    *info = library::TypeInfo(guid).Detach();
    return S_OK;
} catch (...) {
    return CaughtFailure().code;
}

ULONG ObjectCore::CountDown() noexcept {
    const ULONG left = count_.fetch_sub(1, std::memory_order_acq_rel) - 1;
    if (left != 0) return left;
    count_ = 1;  // code that runs while the object goes may take and drop references to it
    delete this;
    return 0;
}

HRESULT ObjectCore::Fail(const wchar_t* member, FailurePolicy policy) const noexcept try {
    const Failure failure = CaughtFailure();
    const bool ours = failure.kind != Failure::Kind::Runtime;
    if (failure.kind == Failure::Kind::NullArgument || policy == FailurePolicy::PassOn) {
        return RaiseToClient(failure, info_.name, info_.iid);
    }
    if (policy != FailurePolicy::ComponentFailure) {
        ReportFailure(failure, member);
        return policy == FailurePolicy::Report ? S_OK : RaiseToClient(failure, info_.name, info_.iid);
    }
    if (ours) return RaiseToClient(failure, info_.name, info_.iid);
    const std::wstring description = std::wstring(info_.name) + L" component failure";
    return RaiseToClient(
        {Failure::Kind::Class, info_.componentFailure, info_.componentFailure, description, ErrorSource::Class},
        info_.name, info_.iid);
} catch (...) {
    return E_OUTOFMEMORY;
}

HRESULT ObjectCore::GetCoclass(ITypeInfo** info) const noexcept {
    if (!info) return E_POINTER;
    *info = nullptr;
    return GetTypeInfoOf(info_.clsid, info);
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
