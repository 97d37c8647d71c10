// What a scenario makes: objects, listeners, and a registry key.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "facts/values.h"
#include "platform/text.h"
#include "support/activation.h"
#include "support/client.h"
#include "support/event_sink.h"

namespace velk::facts {

// By the name of a class, which the library's manifest tells.
inline ComPtr<IDispatch> New(const std::wstring& name) {
    static const test::Activation known(test::BuiltFile(L"VelkSupport.manifest"));
    CLSID clsid;
    ComPtr<IDispatch> object;
    if (FAILED(CLSIDFromProgID((L"VelkSupport." + name).c_str(), &clsid)) ||
        FAILED(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, object.ReceiveVoid())))
        throw std::runtime_error("no class " + ToAnsi(name));
    return object;
}

// An object that does something when its last reference is released.
inline ComPtr<IDispatch> Farewell(const std::function<void()>& bye) {
    return test::Callee::Make(
        [kept = std::shared_ptr<void>(nullptr, [bye](void*) { bye(); })](auto...) { return DISP_E_MEMBERNOTFOUND; });
}

// Hears the events of an object, each event as a line: "Progress 0.5f".
inline std::unique_ptr<test::Connection> Listening(IDispatch* source, std::function<void(const std::wstring&)> hear) {
    ComPtr<ITypeLib> types;
    ComPtr<ITypeInfo> events;
    IID iid;
    const auto described = ComPtr<IUnknown>(source).As<IProvideClassInfo2>();
    if (!described || FAILED(described->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &iid)))
        throw std::runtime_error("no events");
    LoadTypeLib(test::LibraryPath().c_str(), types.Receive());
    types->GetTypeInfoOfGuid(iid, events.Receive());
    const auto sink = test::Callee::Make([events, hear](DISPID id, DISPPARAMS* given) {
        Bstr name;
        events->GetDocumentation(id, name.Receive(), nullptr, nullptr, nullptr);
        std::vector<std::wstring> values;
        for (UINT i = given->cArgs; i-- > 0;) {
            Variant value;
            VariantCopyInd(&value, &given->rgvarg[i]);
            values.push_back(Show(value));
        }
        // What a handler writes into a Single is read by no class.
        if (given->cArgs && given->rgvarg[0].vt == (VT_BYREF | VT_R4)) *given->rgvarg[0].pfltVal = 77;
        hear(TextOf(name.get()) + L" " + Joined(values));
        return S_OK;
    });
    return std::make_unique<test::Connection>(source, iid, sink.get());
}

// A key of the current user's that is empty at first and gone in the end, with values below it: "Sub\v" is v of Sub.
class RegistryKey {
  public:
    explicit RegistryKey(std::string root) : root_(std::move(root)) { Remove(); }
    RegistryKey(const RegistryKey&) = delete;
    RegistryKey& operator=(const RegistryKey&) = delete;
    ~RegistryKey() { Remove(); }

    LSTATUS Store(const std::string& value, DWORD type, const std::string& bytes) const {
        const std::size_t slash = value.rfind('\\');
        return RegSetKeyValueA(HKEY_CURRENT_USER, (root_ + '\\' + value.substr(0, slash)).c_str(), &value[slash + 1],
                               type, bytes.data(), static_cast<DWORD>(bytes.size()));
    }
    // 1 "bytes"
    std::wstring Load(const std::string& value) const {
        const std::size_t slash = value.rfind('\\');
        std::string bytes(200'000, '\0');
        DWORD type = 0, size = static_cast<DWORD>(bytes.size());
        RegGetValueA(HKEY_CURRENT_USER, (root_ + '\\' + value.substr(0, slash)).c_str(), &value[slash + 1],
                     RRF_RT_ANY | RRF_NOEXPAND, &type, bytes.data(), &size);
        return std::to_wstring(type) + L" " + Quote(std::string_view(bytes).substr(0, size));
    }

  private:
    void Remove() const { RegDeleteTreeA(HKEY_CURRENT_USER, root_.c_str()); }

    const std::string root_;
};

}  // namespace velk::facts
