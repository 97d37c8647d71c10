#pragma once

#include "platform/com_ptr.h"
#include "platform/platform.h"
#include "support/bare_dispatch.h"

namespace velk::test {

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
