#pragma once

#include <vector>

#include "trust/members.h"
#include "trust/values.h"

namespace velk::test {

enum class Arguments { Sane, Any };

// A late-bound call before it is made; all of it is open to damage.
struct Request {
    Request(const Member& member, Client& client, Arguments arguments);
    Request(const Request&) = delete;
    Request& operator=(const Request&) = delete;

    HRESULT SendTo(IDispatch* object, LCID locale = LOCALE_USER_DEFAULT, VARIANT* result = nullptr,
                   EXCEPINFO* raised = nullptr, UINT* bad = nullptr) {
        return object->Invoke(id, iid, locale, flags, isNull ? nullptr : &parameters, result, raised, bad);
    }

    DISPID id;
    WORD flags;
    IID iid = IID_NULL;
    std::vector<VARIANT> arguments;
    std::vector<DISPID> names = std::vector<DISPID>(64, DISPID_PROPERTYPUT);
    DISPPARAMS parameters{};
    bool isNull = false;
};

// What a member failed with.
struct Raised : EXCEPINFO {
    Raised() : EXCEPINFO{} {}
    Raised(const Raised&) = delete;
    Raised& operator=(const Raised&) = delete;
    ~Raised() {
        for (const BSTR text : {bstrSource, bstrDescription, bstrHelpFile}) SysFreeString(text);
    }
};

// An answer that automation knows: success, a numbered exception, or what was wrong with the call.
bool IsProper(HRESULT answer);

}  // namespace velk::test
