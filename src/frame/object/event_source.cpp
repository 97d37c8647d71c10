#include "frame/object/event_source.h"

#include <algorithm>
#include <utility>

#include "frame/object/enumerator.h"

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

void CallSink(IDispatch* sink, DISPID event, const FLOAT& number) noexcept {
    FLOAT variable = number;
    VARIANT passed;
    passed.vt = VT_BYREF | VT_R4;
    passed.pfltVal = &variable;
    DISPPARAMS parameters{&passed, nullptr, 1, 0};
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
    if (cookie == 0 || found == sinks_.end()) return CONNECT_E_NOCONNECTION;
    if (static_cast<std::size_t>(found - sinks_.begin()) < inEvent_) {  // released when the event has been raised
        found->cookie = 0;
        ++disconnected_;
        return S_OK;
    }
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
    for (const Sink& sink : sinks_) {
        if (sink.cookie != 0) all.push_back({sink.object, sink.cookie});
    }
    return Enumerator<IEnumConnections, ConnectionItem, CONNECTDATA>::Make(std::move(all), connections);
} catch (...) {
    return E_OUTOFMEMORY;
}

void ConnectionPoint::Raise(DISPID event, std::span<const FLOAT> numbers) noexcept {
    for (const FLOAT& number : numbers) {
        const std::size_t before = std::exchange(inEvent_, sinks_.size());
        const std::size_t count = inEvent_;
        for (std::size_t i = 0; i < count; ++i) {
            if (sinks_[i].cookie != 0) CallSink(sinks_[i].object.get(), event, number);
        }
        inEvent_ = before;
        if (disconnected_ != 0) ReleaseDisconnected(before);
    }
}

// Those that an outer event is still on its way to stay. A sink is released when the list is in order again.
void ConnectionPoint::ReleaseDisconnected(std::size_t first) noexcept {
    for (std::size_t i = first; i < sinks_.size();) {
        if (sinks_[i].cookie != 0) {
            ++i;
            continue;
        }
        const Sink leaving = std::move(sinks_[i]);
        sinks_.erase(sinks_.begin() + static_cast<std::ptrdiff_t>(i));
        --disconnected_;
        i = first;  // its destruction may change the list
    }
}

}  // namespace velk
