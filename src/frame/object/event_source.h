// Connection points for a class that raises events: one outgoing dispatch interface, any number of sinks.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "platform/com_ptr.h"
#include "platform/platform.h"

namespace velk {

// Holds the sinks. Its lifetime is its owner's; its identity is its own, as connection points are to have.
class ConnectionPoint final : public IConnectionPoint {
  public:
    ConnectionPoint(IConnectionPointContainer* container, REFIID events) noexcept
        : container_(container), events_(events) {}

    const IID& events() const noexcept { return events_; }
    bool HasSinks() const noexcept { return sinks_.size() > disconnected_; }

    // Raises one event for each number. It calls every sink that is connected then with the number as an [in, out]
    // argument: each gets a variable of its own, and nobody sees what it writes there. While it is called a sink may
    // connect or disconnect any sink, and drop the last reference to the owner, one of whose members is running and
    // keeps it. What a sink answers, errors included, is its own affair.
    void Raise(DISPID event, std::span<const FLOAT> numbers) noexcept;

    STDMETHODIMP QueryInterface(REFIID iid, void** object) noexcept override;
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return container_->AddRef(); }
    STDMETHODIMP_(ULONG) Release() noexcept override { return container_->Release(); }

    STDMETHODIMP GetConnectionInterface(IID* iid) noexcept override;
    STDMETHODIMP GetConnectionPointContainer(IConnectionPointContainer** container) noexcept override;
    STDMETHODIMP Advise(IUnknown* sink, DWORD* cookie) noexcept override;
    STDMETHODIMP Unadvise(DWORD cookie) noexcept override;
    STDMETHODIMP EnumConnections(IEnumConnections** connections) noexcept override;

  private:
    struct Sink {
        DWORD cookie;  // 0 for one that was disconnected during an event
        ComPtr<IDispatch> object;
    };
    void ReleaseDisconnected(std::size_t first) noexcept;

    IConnectionPointContainer* container_;
    const IID& events_;
    DWORD lastCookie_ = 0;
    std::vector<Sink> sinks_;
    std::size_t inEvent_ = 0;  // the sinks at the front that an event is on its way to: they keep their places
    std::size_t disconnected_ = 0;
};

// The face that a class with events adds to its own: shares the owner's identity and reference count.
class EventSource final : public IConnectionPointContainer {
  public:
    EventSource(IUnknown* owner, REFIID events) noexcept : owner_(owner), point_(this, events) {}

    ConnectionPoint& point() noexcept { return point_; }

    STDMETHODIMP QueryInterface(REFIID iid, void** object) noexcept override {
        return owner_->QueryInterface(iid, object);
    }
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return owner_->AddRef(); }
    STDMETHODIMP_(ULONG) Release() noexcept override { return owner_->Release(); }

    STDMETHODIMP EnumConnectionPoints(IEnumConnectionPoints** points) noexcept override;
    STDMETHODIMP FindConnectionPoint(REFIID iid, IConnectionPoint** point) noexcept override;

  private:
    IUnknown* owner_;
    ConnectionPoint point_;
};

}  // namespace velk
