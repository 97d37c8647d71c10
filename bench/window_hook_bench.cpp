// What a hook adds to the messages of its window: to those that no hook wants, against the platform's own bare
// subclassing (a procedure that only calls the one before), and to the hooked one. The windows' procedures are called
// directly: what it costs the platform to bring a message there is the same for all.
#include <cstdio>

#include "ratio.h"
#include "support/test_hook.h"
#include "support/test_window.h"

namespace {

using namespace velk;

constexpr UINT kUnwanted = WM_APP + 1;
constexpr UINT kHooked = WM_APP + 2;

LRESULT CALLBACK Plain(HWND, UINT, WPARAM, LPARAM) { return 0; }

WNDPROC previous = nullptr;

LRESULT CALLBACK Bare(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    return CallWindowProcW(previous, window, message, wParam, lParam);
}

class Hook final : public test::BareObject<ISubclass> {
  public:
    explicit Hook(LONG response) : response_(response) {}
    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) noexcept override {
        return E_NOTIMPL;
    }
    STDMETHODIMP get_MsgResponse(LONG* result) noexcept override { return *result = response_, S_OK; }
    STDMETHODIMP put_MsgResponse(LONG) noexcept override { return S_OK; }
    STDMETHODIMP WindowProc(LONG, LONG, LONG, LONG, LONG* result) noexcept override { return *result = 0, S_OK; }

  private:
    LONG response_;
};

class Window {
  public:
    explicit Window(WNDPROC procedure) { Set(procedure); }
    LONG handle() const { return window_.handle(); }
    WNDPROC Set(WNDPROC procedure) {
        return reinterpret_cast<WNDPROC>(
            SetWindowLongPtrW(window_.get(), GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(procedure)));
    }
    // A call of the window's procedure with a message.
    auto Caller(UINT message) const {
        const auto procedure = reinterpret_cast<WNDPROC>(GetWindowLongPtrW(window_.get(), GWLP_WNDPROC));
        return [procedure, message, window = window_.get()] { bench::Keep(procedure(window, message, 0, 0)); };
    }

  private:
    test::TestWindow window_;
};

void Attach(IHookManager* manager, const Window& window, LONG response, UINT message) {
    const auto hook = ComPtr<ISubclass>::Attach(new Hook(response));
    ISubclass* given = hook.get();
    if (FAILED(manager->AddHook(&given, window.handle(), static_cast<LONG>(message)))) std::printf("not hooked\n");
}

bool Costs(IHookManager* manager) {
    const Window plain(&Plain), alone(&Plain), after(&Plain), many(&Plain);
    Window bare(&Plain);
    previous = bare.Set(&Bare);
    Attach(manager, alone, eMsgResponse_HookAlone, kHooked);
    Attach(manager, after, eMsgResponse_PreviousFirst, kHooked);
    for (UINT i = 0; i < 50; ++i) Attach(manager, many, eMsgResponse_PreviousFirst, kHooked + i);
    const auto [none, peer, unwanted, unwantedOfMany, hookedAlone, hookedAfter] =
        bench::MedianTimes(plain.Caller(kUnwanted), bare.Caller(kUnwanted), alone.Caller(kUnwanted),
                           many.Caller(kUnwanted), alone.Caller(kHooked), after.Caller(kHooked));
    bool met = bench::Report("unwanted, bare subclass", unwanted - none, peer - none, 1.0 / 3);
    met &= bench::Report("unwanted, limit of 100 ns", unwanted - none, 100, 1);
    met &= bench::Report("unwanted, 50 other hooks", unwantedOfMany - none, peer - none, 1.0 / 3);
    bench::Report("hooked, hook alone", hookedAlone - none, peer - none, 0);
    bench::Report("hooked, previous first", hookedAfter - none, peer - none, 0);
    return met;
}

}  // namespace

int main() {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    bool met = false;
    {
        const auto library = test::HookLibrary();
        ComPtr<IHookManager> manager;
        CoCreateInstance(__uuidof(HookManager), nullptr, CLSCTX_INPROC_SERVER, __uuidof(IHookManager),
                         manager.ReceiveVoid());
        met = manager && Costs(manager.get());
    }
    return met ? 0 : 1;
}
