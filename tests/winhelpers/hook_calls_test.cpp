// What the classes that hook windows ask of a hook manager, call by call.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <utility>

#include "winhelpers/hooked_fixture.h"

namespace velk::test {
namespace {

// Notes each call, as "+36a": attach, the message, the window. Refuses the attach number `refused`, counted from 1.
class NotingManager final : public BareObject<IHookManager> {
  public:
    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) noexcept override {
        return E_NOTIMPL;
    }
    STDMETHODIMP AddHook(ISubclass**, LONG hWnd, LONG iMsg) noexcept override {
        if (--refused == 0) return E_FAIL;
        return Note('+', hWnd, iMsg);
    }
    STDMETHODIMP RemoveHook(ISubclass**, LONG hWnd, LONG iMsg) noexcept override { return Note('-', hWnd, iMsg); }
    STDMETHODIMP get_DispatchedMessage(LONG* result) noexcept override { return *result = dispatched, S_OK; }
    STDMETHODIMP CallPreviousProc(LONG, LONG, LONG, LONG, LONG*) noexcept override { return E_NOTIMPL; }

    std::string Calls() { return std::exchange(calls_, ""); }

    LONG first = 0;
    int refused = 0;
    LONG dispatched = 0;

  private:
    HRESULT Note(char what, LONG window, LONG message) {
        calls_ += what + std::to_string(message) + (window == first ? "a " : "b ");
        return S_OK;
    }

    std::string calls_;
};

NotingManager* current;  // what the library gets for the hook manager
HRESULT WINAPI Create(REFCLSID, IUnknown*, DWORD, REFIID iid, void** object) {
    return current->QueryInterface(iid, object);
}

class HookCalls : public testing::Test {
  protected:
    HookCalls() { current = manager.get(), manager->first = a.handle(); }

    HRESULT Init(const ComPtr<IDispatch>& object, const TestWindow& window) {
        return Call(object.get(), L"Init", {Arg(window.handle())}).code;
    }

    const ImportPatch patch{Library(), "CoCreateInstance", reinterpret_cast<void*>(&Create)};
    const ComPtr<NotingManager> manager = ComPtr<NotingManager>::Attach(new NotingManager);
    const TestWindow a, b;
};

TEST_F(HookCalls, OfAFormThatDetachesOnceMoreAtItsEnd) {
    auto form = CreateObject<IDispatch>(__uuidof(CFormSizeConstraint));
    EXPECT_EQ(S_OK, Init(form, a));
    EXPECT_EQ(S_OK, Init(form, b));
    EXPECT_EQ("+36a -36a +36b ", manager->Calls());
    EXPECT_EQ(S_OK, Call(form.get(), L"Release").code);
    EXPECT_EQ("-36b ", manager->Calls());
    form = nullptr;
    EXPECT_EQ("-36b ", manager->Calls());
}

TEST_F(HookCalls, OfAListViewWhoseAttachedFlagIsNeverCleared) {
    auto list = CreateObject<IDispatch>(__uuidof(CListViewExtended));
    manager->refused = 2;
    EXPECT_EQ(S_OK, Init(list, a));
    EXPECT_EQ("+71a ", manager->Calls());
    manager->refused = 1;
    EXPECT_EQ(S_OK, Init(list, a));
    EXPECT_EQ("+78a ", manager->Calls()) << "not attached, so nothing is taken off";
    EXPECT_EQ(S_OK, Init(list, a));
    manager->refused = 1;
    EXPECT_EQ(S_OK, Init(list, b));
    EXPECT_EQ("+71a +78a -71a -78a +78b ", manager->Calls());
    list = nullptr;
    EXPECT_EQ("-71b -78b ", manager->Calls());
}

TEST_F(HookCalls, OfAnIconMenuThatAttachesWhollyOrNotAtAll) {
    auto icons = CreateObject<IDispatch>(__uuidof(::cIconMenu));
    const auto attach = [&](const TestWindow& window) {
        return Call(icons.get(), L"Attach", {Arg(window.handle())}).code;
    };
    const std::string added = "+279a +530a +26a +2a +529a +44a +43a +288a ";
    std::string removed = added;
    std::ranges::replace(removed, '+', '-');
    manager->refused = 3;
    EXPECT_NE(S_OK, attach(a));
    EXPECT_EQ("+279a +530a " + removed, manager->Calls());
    EXPECT_EQ(S_OK, attach(a));
    EXPECT_EQ(S_OK, attach(a));
    EXPECT_EQ(added, manager->Calls()) << "once is enough";
    icons = nullptr;
    EXPECT_EQ(removed, manager->Calls());
}

TEST_F(HookCalls, AskForTheMessageToSayHowItIsToBeHandled) {
    const struct {
        CLSID clsid;
        std::set<LONG> afterwards;
    } cases[] = {{__uuidof(CListViewExtended), {71}}, {__uuidof(::cIconMenu), {0x212, 0x1A, 0x2, 0x117}}};
    for (const auto& [clsid, afterwards] : cases) {
        const auto hook = CreateObject<ISubclass>(clsid);
        for (LONG message = 0; message <= 0x400; ++message) {
            LONG response = -1;
            manager->dispatched = message;
            EXPECT_EQ(S_OK, hook->get_MsgResponse(&response));
            EXPECT_EQ(afterwards.contains(message) ? 2 : 0, response) << message;
            EXPECT_EQ(S_OK, hook->put_MsgResponse(1));
        }
    }
}

}  // namespace
}  // namespace velk::test
