// Listens to the first source of events of an object: each event as a line, "Progress 0.5f".
#pragma once

#include <functional>
#include <string>

#include "facts/values.h"
#include "platform/text.h"
#include "support/client.h"
#include "support/event_sink.h"

namespace velk::facts {

class Listener {
  public:
    using Hear = std::function<void(const std::wstring& event)>;

    Listener(IDispatch* source, Hear hear) {
        ComPtr<IEnumConnectionPoints> points;
        ComPtr<IConnectionPoint> point;
        ComPtr<ITypeLib> types;
        ComPtr<ITypeInfo> events;
        IID iid;
        const auto container = ComPtr<IUnknown>(source).As<IConnectionPointContainer>();
        if (!container || FAILED(container->EnumConnectionPoints(points.Receive())))
            throw std::runtime_error("no events");
        points->Next(1, point.Receive(), nullptr);
        point->GetConnectionInterface(&iid);
        LoadTypeLib(test::LibraryPath().c_str(), types.Receive());
        types->GetTypeInfoOfGuid(iid, events.Receive());
        sink_ = ComPtr<Sink>::Attach(new Sink(std::move(events), std::move(hear)));
        connection_ = std::make_unique<test::Connection>(source, iid, sink_.get());
    }

  private:
    class Sink final : public test::BareDispatch {
      public:
        Sink(ComPtr<ITypeInfo> events, Hear hear) : events_(std::move(events)), hear_(std::move(hear)) {}
        STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* given, VARIANT*, EXCEPINFO*,
                            UINT*) noexcept override {
            Bstr name;
            events_->GetDocumentation(id, name.Receive(), nullptr, nullptr, nullptr);
            std::wstring line(View(name.get()));
            for (UINT i = given->cArgs; i-- > 0;) {
                Variant value;
                VariantCopyInd(&value, &given->rgvarg[i]);
                line += (i + 1 == given->cArgs ? L" " : L", ") + Show(value);
            }
            // What a handler writes into a Single is read by no class.
            if (given->cArgs && given->rgvarg[0].vt == (VT_BYREF | VT_R4)) *given->rgvarg[0].pfltVal = 77;
            hear_(line);
            return S_OK;
        }

      private:
        ComPtr<ITypeInfo> events_;
        Hear hear_;
    };

    ComPtr<Sink> sink_;
    std::unique_ptr<test::Connection> connection_;
};

}  // namespace velk::facts
