#include "frame/object/event_source.h"

#include <algorithm>

#include "frame/object/enumerator.h"
#include "platform/system_errors.h"
#include "platform/variant.h"

namespace velk {
namespace {

struct PointItem {
    ComPtr<IConnectionPoint> point;
    bool Give(IConnectionPoint*& given) const noexcept {
        given = ComPtr(point).Detach();
        return true;
    }
};

struct ConnectionItem {
    ComPtr<IDispatch> sink;
    DWORD cookie;
    bool Give(CONNECTDATA& given) const noexcept {
        given = {ComPtr(sink).Detach(), cookie};
        return true;
    }
};

void CallSink(IDispatch* sink, DISPID event, std::initializer_list<EventArgument> arguments) {
    VARIANT passed[ConnectionPoint::kMostArguments];
    Variant variables[ConnectionPoint::kMostArguments];
    VARIANT* place = passed + arguments.size();  // the last argument comes first
    Variant* variable = variables;
    for (const EventArgument& argument : arguments) {
        *--place = argument.value;
        if (!argument.isVariable) continue;
        ThrowIfFailed(VariantCopy(variable, place));
        place->vt |= VT_BYREF;
        place->byref = &variable++->lVal;
    }
    DISPPARAMS parameters{passed, nullptr, static_cast<UINT>(arguments.size()), 0};
    sink->Invoke(event, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters, nullptr, nullptr, nullptr);
}

}  // namespace

STDMETHODIMP EventSource::EnumConnectionPoints(IEnumConnectionPoints** points) noexcept try {
    if (!points) return E_POINTER;
    *points = nullptr;
    std::vector<PointItem> all{{ComPtr<IConnectionPoint>(&point_)}};
    return Enumerator<IEnumConnectionPoints, PointItem, LPCONNECTIONPOINT>::Make(std::move(all), points);
} catch (...) {
    return E_OUTOFMEMORY;
}

STDMETHODIMP EventSource::FindConnectionPoint(REFIID iid, IConnectionPoint** point) noexcept {
    if (!point) return E_POINTER;
    *point = nullptr;
    if (iid != point_.events()) return CONNECT_E_NOCONNECTION;
    *point = ComPtr<IConnectionPoint>(&point_).Detach();
    return S_OK;
}

STDMETHODIMP ConnectionPoint::QueryInterface(REFIID iid, void** object) noexcept {
    if (!object) return E_POINTER;
    const bool known = iid == IID_IUnknown || iid == IID_IConnectionPoint;
    *object = known ? this : nullptr;
    if (!known) return E_NOINTERFACE;
    AddRef();
    return S_OK;
}

STDMETHODIMP ConnectionPoint::GetConnectionInterface(IID* iid) noexcept {
    if (!iid) return E_POINTER;
    *iid = events_;
    return S_OK;
}

STDMETHODIMP ConnectionPoint::GetConnectionPointContainer(IConnectionPointContainer** container) noexcept {
    if (!container) return E_POINTER;
    *container = ComPtr<IConnectionPointContainer>(container_).Detach();
    return S_OK;
}

// A sink that offers the event interface itself is preferred; one that only has IDispatch gets the same calls.
STDMETHODIMP ConnectionPoint::Advise(IUnknown* sink, DWORD* cookie) noexcept try {
    if (!sink || !cookie) return E_POINTER;
    *cookie = 0;
    const ComPtr<IConnectionPointContainer> held(container_);
    const ComPtr<IUnknown> given(sink);
    ComPtr<IDispatch> object = given.As<IDispatch>(events_);
    if (!object) object = given.As<IDispatch>();
    if (!object) return CONNECT_E_CANNOTCONNECT;
    sinks_.push_back({++lastCookie_, std::move(object)});
    *cookie = lastCookie_;
    return S_OK;
} catch (...) {
    return E_OUTOFMEMORY;
}

STDMETHODIMP ConnectionPoint::Unadvise(DWORD cookie) noexcept {
    const auto found =
        std::find_if(sinks_.begin(), sinks_.end(), [cookie](const Sink& sink) { return sink.cookie == cookie; });
    if (found == sinks_.end()) return CONNECT_E_NOCONNECTION;
    const Sink leaving = std::move(*found);  // released only when the list is in order again
    sinks_.erase(found);
    return S_OK;
}

STDMETHODIMP ConnectionPoint::EnumConnections(IEnumConnections** connections) noexcept try {
    if (!connections) return E_POINTER;
    *connections = nullptr;
    const ComPtr<IConnectionPointContainer> held(container_);
    std::vector<ConnectionItem> all;
    all.reserve(sinks_.size());
    for (const Sink& sink : sinks_) all.push_back({sink.object, sink.cookie});
    return Enumerator<IEnumConnections, ConnectionItem, CONNECTDATA>::Make(std::move(all), connections);
} catch (...) {
    return E_OUTOFMEMORY;
}

bool ConnectionPoint::IsConnected(DWORD cookie) const noexcept {
    return std::any_of(sinks_.begin(), sinks_.end(), [cookie](const Sink& sink) { return sink.cookie == cookie; });
}

void ConnectionPoint::Raise(DISPID event, std::initializer_list<EventArgument> arguments) noexcept try {
    const ComPtr<IConnectionPointContainer> held(container_);
    const auto call = [&](IDispatch* sink) { CallSink(sink, event, arguments); };
    if (sinks_.size() == 1) {  // the usual case, without a copy of the list
        const ComPtr<IDispatch> only = sinks_.front().object;
        call(only.get());
        return;
    }
    const std::vector<Sink> connected = sinks_;
    for (const Sink& sink : connected) {
        if (IsConnected(sink.cookie)) call(sink.object.get());
    }
} catch (...) {  // no memory for the list: the event is lost, the computation goes on
}

}  // namespace velk
