// What a scenario makes: objects and listeners.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "facts/values.h"
#include "platform/text.h"
#include "support/client.h"
#include "support/late_bound.h"
#include "support/value_object.h"

namespace velk::facts {

// By the name of a class, which the library's manifest tells.
inline ComPtr<IDispatch> New(const std::wstring& name) {
    static const auto known = test::Activated(test::BuiltFile(L"VelkSupport.manifest"));
    CLSID clsid;
    ComPtr<IDispatch> object;
    if (FAILED(CLSIDFromProgID((L"VelkSupport." + name).c_str(), &clsid)) ||
        FAILED(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, object.ReceiveVoid())))
        throw std::runtime_error("no class " + ToAnsi(name));
    return object;
}

// An object that does something when its last reference is released.
inline ComPtr<IDispatch> Farewell(const std::function<void()>& bye) {
    const auto made = test::ValueObject::Make(test::Missing());
    made->onRead = [kept = std::shared_ptr<void>(nullptr, [bye](void*) { bye(); })](auto...) {};
    return made.As<IDispatch>();
}

// Hears the events of an object, each event as a line: "Progress 0.5f".
inline std::shared_ptr<IConnectionPoint> Listening(IDispatch* source, std::function<void(const std::wstring&)> hear) {
    ComPtr<ITypeLib> types;
    ComPtr<ITypeInfo> events;
    IID iid;
    const auto described = ComPtr<IUnknown>(source).As<IProvideClassInfo2>();
    if (!described || FAILED(described->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &iid)))
        throw std::runtime_error("no events");
    LoadTypeLib(test::LibraryPath().c_str(), types.Receive());
    types->GetTypeInfoOfGuid(iid, events.Receive());
    const auto sink = test::ValueObject::Make(test::Missing());
    sink->onRead = [events, hear, &calls = sink->calls](DISPPARAMS* given) {
        Bstr name;
        events->GetDocumentation(calls.back(), name.Receive(), nullptr, nullptr, nullptr);
        std::vector<std::wstring> values;
        for (UINT i = given->cArgs; i-- > 0;) {
            Variant value;
            VariantCopyInd(&value, &given->rgvarg[i]);
            values.push_back(Show(value));
        }
        // What a handler writes into a Single is read by no class.
        if (given->cArgs && given->rgvarg[0].vt == (VT_BYREF | VT_R4)) *given->rgvarg[0].pfltVal = 77;
        hear(TextOf(name.get()) + L" " + Joined(values));
    };
    return test::Connected(source, iid, sink.get());
}

}  // namespace velk::facts
