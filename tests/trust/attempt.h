// One call of a member as a client makes it, and all members in turn.
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "support/client.h"
#include "support/test_window.h"
#include "trust/request.h"

namespace velk::test {

struct Answer {
    HRESULT called = S_OK;
    HRESULT code = S_OK;  // what the member failed with
};

// One call with sane arguments; the same ones for the same seed.
class Attempt {
  public:
    Attempt(const Class& one, const Member& member, unsigned seed)
        : object_(one.MakeObject()), member_(member), seed_(seed) {
        if (one.library != Library()) realWindow = window_.emplace().handle();
    }
    Attempt(const Attempt&) = delete;
    Attempt& operator=(const Attempt&) = delete;
    ~Attempt() { realWindow = 0; }

    template <class Before, class After>
    Answer Make(Before before, After after) {
        engine.seed(seed_);
        Client client;
        Request request(member_, client, Arguments::Sane);
        Variant result;
        EXCEPINFO exception{};
        UINT bad = 0;
        before();
        const HRESULT called = object_->Invoke(request.id, IID_NULL, LOCALE_USER_DEFAULT, request.flags,
                                               &request.parameters, &result, &exception, &bad);
        after();
        for (const BSTR text : {exception.bstrSource, exception.bstrDescription, exception.bstrHelpFile})
            SysFreeString(text);
        SetErrorInfo(0, nullptr);
        return {called, exception.scode};
    }
    Answer Make() {
        return Make([] {}, [] {});
    }

    IDispatch* object() const noexcept { return object_.get(); }

  private:
    std::optional<TestWindow> window_;  // the hook library's members need one; hooks go with it
    ComPtr<IDispatch> object_;
    const Member& member_;
    unsigned seed_;
};

inline std::string Where(const Class& one, const Member& member) {
    const std::wstring text = one.name + L"." + member.name;
    return std::string(text.begin(), text.end());
}

// What every class and member is put through.
template <class Trial>
void ForEachMember(const wchar_t* library, Trial trial) {
    for (const Class& one : ReadClasses(library)) {
        for (const Member& member : one.members) {
            SCOPED_TRACE(Where(one, member));
            trial(one, member);
        }
    }
}

}  // namespace velk::test
