#include "sysinfo/internet_connection.h"

#include <wininet.h>

#include "platform/system_library.h"
#include "platform/text.h"
#include "sysinfo/connection_flags.h"
#include "sysinfo/internet_connection_errors.idl.h"

namespace velk {
namespace {

constexpr ClassError kInvalidWorkMode(eErrInternetConnection_InvalidWorkMode, L"Invalid work mode");
constexpr ClassError kCannotSetOption(eErrInternetConnection_CannotSetOption, L"Cannot set the Internet option");

// Loaded at the first use, since most clients never ask, and kept: it has threads of its own once it was used.
constinit KeptSystemLibrary wininet(L"wininet.dll");

template <class Function>
Function& InternetFunction(const char* name) {
    Function* const found = FindFunction<Function>(wininet.get(), name);
    if (!found) throw RuntimeError(Error::FileNotFound);
    return *found;
}

struct ConnectionState {
    BOOL connected = FALSE;
    DWORD flags = 0;
    std::string name = std::string(256, ' ');
};

// What came back counts, also with a result of FALSE: that only means that there is no connection.
ConnectionState QueryConnection() {
    const auto& query = InternetFunction<decltype(InternetGetConnectedStateExA)>("InternetGetConnectedStateExA");
    ConnectionState state;
    state.connected = query(&state.flags, state.name.data(), static_cast<DWORD>(state.name.size()), 0);
    return state;
}

INTERNET_CONNECTED_INFO RequestFor(LONG mode) {
    switch (mode) {
        case eWorkMode_Offline:
            return {INTERNET_STATE_DISCONNECTED_BY_USER, ISO_FORCE_DISCONNECTED};
        case eWorkMode_Online:
            return {INTERNET_STATE_CONNECTED, 0};
        default:
            throw kInvalidWorkMode;
    }
}

}  // namespace

constinit const ClassInfo CInternetConnection::kInfo{
    .name = L"CInternetConnection",
    .clsid = __uuidof(::CInternetConnection),
    .iid = __uuidof(_CInternetConnection),
    .policy = FailurePolicy::ComponentFailure,
    .componentFailure = eErrInternetConnection_ComponentFailure,
};

STDMETHODIMP CInternetConnection::get_Connected(VARIANT_BOOL* result) noexcept {
    return Guard(result, [] { return QueryConnection().connected != FALSE; });
}

STDMETHODIMP CInternetConnection::get_ConnectionName(BSTR* result) noexcept {
    return Guard(result, [] { return FromAnsiBuffer(QueryConnection().name); });
}

STDMETHODIMP CInternetConnection::get_ConnectionType(EConnectionType* result) noexcept {
    return Guard(result, [] { return static_cast<EConnectionType>(ConnectionOf(QueryConnection().flags)); });
}

STDMETHODIMP CInternetConnection::get_RasInstalled(VARIANT_BOOL* result) noexcept {
    return Guard(result, [] { return (QueryConnection().flags & kConnectionRasInstalled) != 0; });
}

STDMETHODIMP CInternetConnection::get_WorkMode(EWorkMode* result) noexcept {
    return Guard(result, [] {
        return (QueryConnection().flags & kConnectionOffline) != 0 ? eWorkMode_Offline : eWorkMode_Online;
    });
}

STDMETHODIMP CInternetConnection::put_WorkMode(EWorkMode* eMode) noexcept {
    return Guard([&] {
        INTERNET_CONNECTED_INFO request = RequestFor(Given(AsNumber(eMode)));
        const auto& set = InternetFunction<decltype(InternetSetOptionA)>("InternetSetOptionA");
        if (!set(nullptr, INTERNET_OPTION_CONNECTED_STATE, &request, sizeof request)) throw kCannotSetOption;
    });
}

}  // namespace velk
