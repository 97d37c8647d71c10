// Connection points for a class that raises events: one outgoing dispatch interface, any number of sinks.
#pragma once

#include <bit>
#include <cstdint>
#include <initializer_list>
#include <vector>

#include "platform/com_ptr.h"
#include "platform/platform.h"

namespace velk {

// What an event carries. A text or an object is the caller's and is only read.
struct EventArgument {
    EventArgument(bool truth) noexcept : EventArgument(VT_BOOL, truth ? 0xFFFF : 0) {}
    EventArgument(LONG number) noexcept : EventArgument(VT_I4, static_cast<ULONG>(number)) {}
    EventArgument(FLOAT number) noexcept : EventArgument(VT_R4, std::bit_cast<std::uint32_t>(number)) {}
    EventArgument(double number) noexcept : EventArgument(VT_R8, std::bit_cast<std::uint64_t>(number)) {}
    EventArgument(BSTR text) noexcept : EventArgument(VT_BSTR, reinterpret_cast<ULONG_PTR>(text)) {}
    EventArgument(IDispatch* object) noexcept : EventArgument(VT_DISPATCH, reinterpret_cast<ULONG_PTR>(object)) {}

    std::uint64_t bits;
    VARTYPE type;
    bool isVariable = false;

  private:
    EventArgument(VARTYPE kind, std::uint64_t value) noexcept : bits(value), type(kind) {}
};

// An [in, out] argument: each sink gets a variable of its own, and nobody sees what it writes there.
inline EventArgument ByReference(EventArgument argument) noexcept {
    argument.isVariable = true;
    return argument;
}

// Holds the sinks. Its lifetime is its owner's; its identity is its own, as connection points are to have.
class ConnectionPoint final : public IConnectionPoint {
  public:
    ConnectionPoint(IConnectionPointContainer* container, REFIID events) noexcept
        : container_(container), events_(events) {}

    const IID& events() const noexcept { return events_; }
    bool HasSinks() const noexcept { return sinks_.size() > disconnected_; }

    // Calls every sink that is connected now, with up to kMostArguments arguments in the order of their
    // declaration. While it is called a sink may connect or disconnect any sink, and drop the last reference to the
    // owner, one of whose members is running and keeps it. What a sink answers, errors included, is its own affair.
    void Raise(DISPID event, std::initializer_list<EventArgument> arguments) noexcept;
    static constexpr std::size_t kMostArguments = 8;

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
