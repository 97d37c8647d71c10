// Connection points for a class that raises events: one outgoing dispatch interface, any number of sinks.
#pragma once

#include <initializer_list>
#include <vector>

#include "platform/com_ptr.h"
#include "platform/platform.h"

namespace velk {

// What an event carries. The value is the caller's and is only read.
struct EventArgument {
    EventArgument(bool truth) noexcept {
        value.vt = VT_BOOL;
        value.boolVal = truth ? VARIANT_TRUE : VARIANT_FALSE;
    }
    EventArgument(LONG number) noexcept {
        value.vt = VT_I4;
        value.lVal = number;
    }
    EventArgument(FLOAT number) noexcept {
        value.vt = VT_R4;
        value.fltVal = number;
    }
    EventArgument(double number) noexcept {
        value.vt = VT_R8;
        value.dblVal = number;
    }
    EventArgument(BSTR text) noexcept {
        value.vt = VT_BSTR;
        value.bstrVal = text;
    }
    EventArgument(IDispatch* object) noexcept {
        value.vt = VT_DISPATCH;
        value.pdispVal = object;
    }

    VARIANT value{};
    bool isVariable = false;
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
    bool HasSinks() const noexcept { return !sinks_.empty(); }

    // Calls every sink that is connected now, with up to kMostArguments arguments in the order of their
    // declaration. While it is called a sink may connect or disconnect any sink, and drop the last reference to the
    // owner. What a sink answers, errors included, is its own affair.
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
        DWORD cookie;
        ComPtr<IDispatch> object;
    };
    bool IsConnected(DWORD cookie) const noexcept;

    IConnectionPointContainer* container_;
    const IID& events_;
    DWORD lastCookie_ = 0;
    std::vector<Sink> sinks_;
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
