// Members as scripts call them: each kind of call is a program of its own for the platform's VBScript, which gets the
// object and the arguments as its variables.
#pragma once

#include <activscp.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "facts/values.h"
#include "platform/text.h"
#include "support/bare_dispatch.h"
#include "support/late_bound.h"

namespace velk::facts {

// Whether the language has values of this kind.
inline bool KnownToScripts(const VARIANT& value) {
    const VARTYPE type = value.vt == (VT_BYREF | VT_VARIANT) ? value.pvarVal->vt : value.vt;
    return type <= VT_BOOL ? type != VT_ERROR : type == VT_UI1 || (type & VT_ARRAY);
}

// Function M(o, a0, a1) ... o.Name((a0), a1): references and objects are handed on as variables, the others as values.
inline std::wstring ProgramFor(const std::wstring& name, WORD flags, const std::vector<VARIANT>& arguments) {
    std::vector<std::wstring> parameters{L"o"}, given;
    for (const VARIANT& argument : arguments) {
        const bool whole = (argument.vt & VT_BYREF) || argument.vt == VT_DISPATCH;
        const std::wstring variable = L"a" + std::to_wstring(given.size());
        parameters.push_back(variable);
        given.push_back(whole ? variable : L"(" + variable + L")");
    }
    std::wstring set, put;
    if (flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) put = L" = " + given.back(), given.pop_back();
    if (flags & DISPATCH_PROPERTYPUTREF) set = L"Set ";
    const std::wstring call = L"o." + name + (given.empty() ? L"" : L"(" + Joined(given) + L")");
    return L"Function M(" + Joined(parameters) + L")\n" +
           (put.empty() ? L"M = Array(" + call + L")" : set + call + put) + L"\nEnd Function";
}

class Script {
  public:
    explicit Script(const std::wstring& program) {
        CLSID language{};
        CLSIDFromProgID(L"VBScript", &language);
        CoCreateInstance(language, nullptr, CLSCTX_INPROC_SERVER, __uuidof(IActiveScript), engine_.ReceiveVoid());
        if (!engine_) throw std::runtime_error("VBScript is not installed");
        const auto parser = engine_.As<IActiveScriptParse>();
        engine_->SetScriptSite(site_.get());
        parser->InitNew();
        parser->ParseScriptText(program.c_str(), nullptr, nullptr, nullptr, 0, 0, 0, nullptr, nullptr);
        engine_->SetScriptState(SCRIPTSTATE_CONNECTED);
        engine_->GetScriptDispatch(nullptr, script_.Receive());
    }
    Script(const Script&) = delete;
    Script& operator=(const Script&) = delete;
    ~Script() { engine_->Close(); }

    test::Outcome Call(IDispatch* object, std::vector<VARIANT> arguments) {
        arguments.insert(arguments.begin(), test::Arg(object));
        test::Outcome outcome = test::Invoke(script_.get(), L"M", DISPATCH_METHOD, std::move(arguments));
        if (FAILED(outcome.result)) {
            outcome = std::exchange(site_->failed, {});
            outcome.result = DISP_E_EXCEPTION;
        }
        const Variant made = std::move(outcome.value);  // an array of one, or nothing
        LONG first = 0;
        if (made.vt & VT_ARRAY) SafeArrayGetElement(made.parray, &first, &outcome.value);
        return outcome;
    }

  private:
    // Where the engine tells its errors.
    class Site final : public test::BareUnknown<IActiveScriptSite> {
      public:
        test::Outcome failed;

        STDMETHODIMP OnScriptError(IActiveScriptError* error) noexcept override {
            EXCEPINFO told{};
            return error->GetExceptionInfo(&told), failed.Take(told), S_OK;
        }
        STDMETHODIMP GetLCID(LCID*) noexcept override { return E_NOTIMPL; }
        STDMETHODIMP GetItemInfo(LPCOLESTR, DWORD, IUnknown**, ITypeInfo**) noexcept override { return E_NOTIMPL; }
        STDMETHODIMP GetDocVersionString(BSTR*) noexcept override { return E_NOTIMPL; }
        STDMETHODIMP OnScriptTerminate(const VARIANT*, const EXCEPINFO*) noexcept override { return S_OK; }
        STDMETHODIMP OnStateChange(SCRIPTSTATE) noexcept override { return S_OK; }
        STDMETHODIMP OnEnterScript() noexcept override { return S_OK; }
        STDMETHODIMP OnLeaveScript() noexcept override { return S_OK; }
    };

    const ComPtr<Site> site_ = ComPtr<Site>::Attach(new Site);
    ComPtr<IActiveScript> engine_;
    ComPtr<IDispatch> script_;
};

}  // namespace velk::facts
