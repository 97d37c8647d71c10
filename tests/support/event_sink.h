#pragma once

#include <functional>
#include <vector>

#include "platform/com_ptr.h"
#include "platform/platform.h"
#include "support/bare_dispatch.h"

namespace velk::test {

// A late-bound sink that records what it is called with and can misbehave on demand.
class EventSink final : public BareDispatch {
  public:
    struct Event {
        DISPID id;
        double value;
    };
    std::vector<Event> events;
    std::function<void(VARIANT* last)> onEvent;  // runs inside the event; an earlier argument is last[1]
    HRESULT answer = S_OK;

    static ComPtr<EventSink> Make() { return ComPtr<EventSink>::Attach(new EventSink); }

    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT*, EXCEPINFO*,
                        UINT*) noexcept override {
        VARIANT* const argument = parameters->rgvarg;
        const bool isSingle = argument && argument->vt == (VT_R4 | VT_BYREF);
        events.push_back({id, isSingle ? static_cast<double>(*argument->pfltVal) : -1.0});
        if (onEvent) onEvent(argument);
        return answer;
    }
};

// Connects a sink to an object's events for as long as it lives.
class Connection {
  public:
    Connection(IUnknown* source, REFIID events, IUnknown* sink) {
        const auto container = ComPtr<IUnknown>(source).As<IConnectionPointContainer>();
        if (!container || FAILED(container->FindConnectionPoint(events, point_.Receive()))) return;
        result_ = point_->Advise(sink, &cookie_);
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection() {
        if (point_) point_->Unadvise(cookie_);
    }

    HRESULT result() const noexcept { return result_; }

  private:
    ComPtr<IConnectionPoint> point_;
    DWORD cookie_ = 0;
    HRESULT result_ = CONNECT_E_NOCONNECTION;
};

}  // namespace velk::test
