// What a scenario makes: objects, pictures to draw on, and objects that do something as they are destroyed.
#pragma once

#include <functional>
#include <string>
#include <utility>

#include "platform/drawing_handles.h"
#include "platform/text.h"
#include "support/bare_dispatch.h"
#include "support/client.h"

namespace velk::facts {

// By the name of a class of the library, or by a program identifier.
inline ComPtr<IDispatch> Made(const std::wstring& name) {
    ComPtr<IDispatch> object;
    CLSID clsid;
    if (SUCCEEDED(CLSIDFromProgID(name.c_str(), &clsid))) {
        CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, object.ReceiveVoid());
        return object;
    }
    ComPtr<ITypeLib> types;
    LoadTypeLib(test::LibraryPath().c_str(), types.Receive());
    ComPtr<ITypeInfo> info;
    MEMBERID member = 0;
    USHORT found = 1;
    types->FindName(const_cast<LPOLESTR>(name.c_str()), 0, info.Receive(), &member, &found);
    TYPEATTR* attributes = nullptr;
    if (!info || FAILED(info->GetTypeAttr(&attributes))) throw std::runtime_error("no class " + ToAnsi(name));
    clsid = attributes->guid;
    info->ReleaseTypeAttr(attributes);
    return test::CreateObject<IDispatch>(clsid);
}

// Another dispatch interface of an object, by its identifier.
inline ComPtr<IDispatch> PartOf(IDispatch* object, const std::wstring& identifier) {
    IID iid{};
    ComPtr<IDispatch> part;
    IIDFromString(identifier.c_str(), &iid);
    object->QueryInterface(iid, part.ReceiveVoid());
    return part;
}

// A picture in memory.
struct Canvas {
    static constexpr int kSize = 80;
    GdiObject bitmap{CreateCompatibleBitmap(ScreenContext(GetDC(nullptr)).get(), kSize, kSize)};
    CreatedContext context{CreateCompatibleDC(nullptr)};
    SelectedObject selected{context.get(), bitmap.get()};
};

// An object that does something when its last reference is released.
class Farewell final : public test::BareDispatch {
  public:
    explicit Farewell(std::function<void()> onGone) : onGone_(std::move(onGone)) {}
    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) noexcept override {
        return DISP_E_MEMBERNOTFOUND;
    }

  private:
    ~Farewell() override { onGone_(); }
    std::function<void()> onGone_;
};

}  // namespace velk::facts
