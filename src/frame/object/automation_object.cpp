#include "frame/object/automation_object.h"

#include <string>

#include "frame/failure/report.h"

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
    const ClassInfo& info = info_;  // the object may be gone when its report is closed
    const bool ours = failure.kind != Failure::Kind::Runtime;
    if (failure.kind == Failure::Kind::NullArgument || policy == FailurePolicy::PassOn) {
        return RaiseToClient(failure, info.name, info.iid);
    }
    if (policy != FailurePolicy::ComponentFailure) {
        ReportFailure(failure, member);
        return policy == FailurePolicy::Report ? S_OK : RaiseToClient(failure, info.name, info.iid);
    }
    if (ours) return RaiseToClient(failure, info.name, info.iid);
    const std::wstring description = std::wstring(info.name) + L" component failure";
    return RaiseToClient(
        {Failure::Kind::Class, info.componentFailure, info.componentFailure, description, ErrorSource::Class},
        info.name, info.iid);
} catch (...) {
    return E_OUTOFMEMORY;
}

#ifndef NDEBUG
HRESULT ObjectCore::CheckThread(const wchar_t* member) const noexcept try {
    if (info_.onAnyThread || GetCurrentThreadId() == thread_) return S_OK;
    const std::wstring where = std::wstring(info_.name) + L"." + member;
    OutputDebugStringW((where + L" is called on a thread that did not make the object\n").c_str());
    return RPC_E_WRONG_THREAD;
} catch (...) {
    return RPC_E_WRONG_THREAD;
}
#endif

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
