// What the classes that hook windows ask of a hook manager, call by call.
#include <gtest/gtest.h>

#include <cstdio>
#include <set>
#include <string>
#include <utility>

#include "support/fake.h"
#include "winhelpers/hooked_fixture.h"

namespace velk::test {
namespace {

constexpr HRESULT kRefused = eErrHookManager_NotHooked;

// Notes each call, as "+36a": attach, the message, the window. It is older than IHookManager2.
class NotingManager final : public BareObject<IHookManager> {
  public:
    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) noexcept override {
        return E_NOTIMPL;
    }
    STDMETHODIMP AddHook(ISubclass** hook, LONG hWnd, LONG iMsg) noexcept override {
        return --refused == 0 ? kRefused : Note('+', *hook, hWnd, iMsg);
    }
    STDMETHODIMP RemoveHook(ISubclass** hook, LONG hWnd, LONG iMsg) noexcept override {
        Note('-', *hook, hWnd, iMsg);
        return refusesAll ? kRefused : S_OK;
    }
    STDMETHODIMP get_DispatchedMessage(LONG* result) noexcept override { return *result = dispatched, S_OK; }
    STDMETHODIMP CallPreviousProc(LONG, LONG, LONG wParam, LONG, LONG*) noexcept override {
        return wParam == -5 ? kRefused : E_UNEXPECTED;
    }

    LONG first = 0, dispatched = 0;
    int refused = 0;  // the number of the attach that fails, counted from 1
    bool refusesAll = false;
    std::string calls;
    ComPtr<ISubclass> kept;

  private:
    HRESULT Note(char what, ISubclass* hook, LONG window, LONG message) {
        kept = ComPtr<ISubclass>(hook);
        calls += what + std::to_string(message) + (window == first ? "a " : "b ");
        return S_OK;
    }
};

class HookCalls : public testing::Test {
  protected:
    HookCalls() { manager->first = a.handle(); }

    // a b: attaches to that window; r: lets go; e: the client's last reference; a digit: that attach is refused; !: all
    // that is taken off is refused. Failures are noted with their numbers.
    std::string Play(const CLSID& clsid, const char* events) {
        auto object = CreateObject<IDispatch>(clsid);
        const bool menu = clsid == __uuidof(::cIconMenu);
        manager->refusesAll = false, manager->calls.clear();
        for (; *events; ++events) {
            HRESULT code = S_OK;
            if (*events == 'a' || *events == 'b') {
                const LONG window = (*events == 'a' ? a : b).handle();
                code = Call(object.get(), menu ? L"Attach" : L"Init", {Arg(window)}).code;
                EXPECT_TRUE(menu || manager->refusesAll || window == Get(object.get(), L"hWnd").value.lVal);
            } else if (*events == 'r') {
                code = Call(object.get(), menu ? L"Detach" : L"Release").code;
            } else if (*events == 'e') {
                object = nullptr;
            } else if (*events == '!') {
                manager->refusesAll = true;
            } else {
                manager->refused = *events - '0';
            }
            char number[20] = "";
            if (code != S_OK) std::snprintf(number, sizeof number, "%lX ", static_cast<unsigned long>(code));
            manager->calls += number;
        }
        return manager->calls;
    }

    const ComPtr<NotingManager> manager = ComPtr<NotingManager>::Attach(new NotingManager);
    const Fake<decltype(&CoCreateInstance), std::function<HRESULT(REFCLSID, IUnknown*, DWORD, REFIID, void**)>> create{
        "CoCreateInstance", &CoCreateInstance,
        [this](REFCLSID, IUnknown*, DWORD, REFIID iid, void** object) { return manager->QueryInterface(iid, object); }};
    const TestWindow a, b;
};

TEST_F(HookCalls, LetGoOfEachHookWithTheLastReference) {
    const std::string on = "+279a +530a +26a +2a +529a +44a +43a +288a ",
                      off = "-279a -530a -26a -2a -529a -44a -43a -288a ";
    const struct {
        CLSID clsid;
        const char* events;
        std::string calls;
    } cases[] = {
        {__uuidof(CFormSizeConstraint), "abre", "+36a -36a +36b -36b -36b "},  // once more at its end
        {__uuidof(CFormSizeConstraint), "1a", "800444B2 "},
        {__uuidof(CFormSizeConstraint), "a!re", "+36a -36a 800444B2 -36a "},
        {__uuidof(CListViewExtended), "2a1aa1be", "+71a +78a +71a +78a -71a -78a +78b -71b -78b "},  // no failure
        {__uuidof(CListViewExtended), "a!e", "+71a +78a -71a -78a "},                                // each is tried
        {__uuidof(CListViewExtended), "a!b", "+71a +78a -71a -78a 8004472F "},
        {__uuidof(::cIconMenu), "3aaa", "+279a +530a " + off + "80044803 " + on},  // wholly or not at all, and once
        {__uuidof(::cIconMenu), "a!e", on + off},
        {__uuidof(::cIconMenu), "a!rre", on + off + "80044803 "},
    };
    for (const auto& [clsid, events, calls] : cases) {
        EXPECT_EQ(calls, Play(clsid, events)) << events;
        manager->refusesAll = false;
    }
    EXPECT_NE(S_OK, manager->kept->get_MsgResponse(&manager->dispatched)) << "a hook that could not be taken off";
    LONG result = 1;
    EXPECT_NE(S_OK, manager->kept->WindowProc(a.handle(), WM_NOTIFY, 0, 0, &result));
    manager->kept = nullptr;
    EXPECT_TRUE(CanUnload());
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
        const NMHDR header{};
        LONG_PTR result = 1;
        const LONG message = clsid == __uuidof(CListViewExtended) ? WM_NOTIFY : WM_ENTERMENULOOP;
        EXPECT_EQ(kRefused, ComPtr<ISubclass>(hook).As<ISubclass2>()->WindowProcPtr(
                                a.handle(), message, -5, reinterpret_cast<LPARAM>(&header), &result))
            << "the hook manager's own number";
    }
}

}  // namespace
}  // namespace velk::test
