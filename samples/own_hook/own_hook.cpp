// A hook of a program's own: the window asks before it closes and is never narrower than its text. Works in 32-bit and
// 64-bit programs: the hook implements ISubclass2, so that addresses in messages arrive whole.
//
// Needs no registration: VelkSub.dll and its manifest lie beside the program, whose own manifest names them. It tries
// itself out and says what came of it; with any argument the window stays until it is closed twice.
#include <windows.h>

#include <ole2.h>
#include <atomic>
#include <cstdio>
#include <initializer_list>

#include "velksub.h"

namespace {

void Check(const char* what, HRESULT result) {
    if (SUCCEEDED(result)) return;
    std::printf("%s failed: 0x%08lX\n", what, static_cast<unsigned long>(result));
    ExitProcess(1);
}

class Guard final : public ISubclass, public ISubclass2 {
  public:
    explicit Guard(IHookManager* manager) : manager_(manager) {
        Check("IHookManager2", manager->QueryInterface(__uuidof(IHookManager2), reinterpret_cast<void**>(&wide_)));
    }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;

    void Attach(HWND window) {
        ISubclass* hook = this;
        for (const LONG message : {WM_CLOSE, WM_GETMINMAXINFO}) {
            Check("AddHook", manager_->AddHook(&hook, HandleToLong(window), message));
        }
    }
    int asked() const { return asked_; }

    // One object, whichever interface is asked for: the hook manager knows it by its IUnknown.
    STDMETHODIMP QueryInterface(REFIID iid, void** object) noexcept override {
        *object = nullptr;
        if (iid == __uuidof(ISubclass2)) *object = static_cast<ISubclass2*>(this);
        if (iid == IID_IUnknown || iid == IID_IDispatch || iid == __uuidof(ISubclass)) {
            *object = static_cast<ISubclass*>(this);
        }
        if (!*object) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return ++count_; }
    STDMETHODIMP_(ULONG) Release() noexcept override {
        const ULONG left = --count_;
        if (left == 0) delete this;
        return left;
    }

    // The hook manager never calls by name.
    STDMETHODIMP GetTypeInfoCount(UINT*) noexcept override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) noexcept override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) noexcept override { return E_NOTIMPL; }
    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) noexcept override {
        return E_NOTIMPL;
    }

    // WM_CLOSE is ours alone; WM_GETMINMAXINFO is filled by the window first.
    STDMETHODIMP get_MsgResponse(LONG* result) noexcept override {
        LONG message = 0;
        const HRESULT got = manager_->get_DispatchedMessage(&message);
        *result = message == WM_CLOSE ? eMsgResponse_HookAlone : eMsgResponse_PreviousFirst;
        return got;
    }
    STDMETHODIMP put_MsgResponse(LONG) noexcept override { return S_OK; }

    // Not called: the hook manager prefers ISubclass2.
    STDMETHODIMP WindowProc(LONG, LONG, LONG, LONG, LONG*) noexcept override { return E_NOTIMPL; }

    STDMETHODIMP WindowProcPtr(LONG hWnd, LONG iMsg, LONG_PTR wParam, LONG_PTR lParam,
                               LONG_PTR* result) noexcept override {
        *result = 0;
        if (iMsg == WM_GETMINMAXINFO) {
            reinterpret_cast<MINMAXINFO*>(lParam)->ptMinTrackSize.x = 300;
            return S_OK;
        }
        if (++asked_ > 1) return wide_->CallPreviousProcPtr(hWnd, iMsg, wParam, lParam, result);
        SetWindowTextW(static_cast<HWND>(LongToHandle(hWnd)), L"Close once more to leave");
        return S_OK;
    }

  private:
    ~Guard() { wide_->Release(); }

    std::atomic<ULONG> count_ = 1;
    IHookManager* manager_;  // outlives the window, and so the hook
    IHookManager2* wide_ = nullptr;
    int asked_ = 0;
};

int WidthOf(HWND window) {
    RECT is{};
    GetWindowRect(window, &is);
    return static_cast<int>(is.right - is.left);
}

}  // namespace

int main(int count, char**) {
    Check("OleInitialize", OleInitialize(nullptr));
    IHookManager* manager = nullptr;
    Check("HookManager", CoCreateInstance(__uuidof(HookManager), nullptr, CLSCTX_INPROC_SERVER, __uuidof(IHookManager),
                                          reinterpret_cast<void**>(&manager)));
    WNDCLASSW description{};
    description.lpfnWndProc = DefWindowProcW;
    description.lpszClassName = L"OwnHookSample";
    RegisterClassW(&description);
    const HWND window = CreateWindowExW(0, description.lpszClassName, L"A hook of one's own", WS_OVERLAPPEDWINDOW, 40,
                                        40, 420, 200, nullptr, nullptr, nullptr, nullptr);
    auto* const guard = new Guard(manager);
    guard->Attach(window);
    if (count > 1) {
        ShowWindow(window, SW_SHOW);
        for (MSG message; IsWindow(window) && GetMessageW(&message, nullptr, 0, 0) > 0;) DispatchMessageW(&message);
    } else {
        SetWindowPos(window, nullptr, 0, 0, 100, 200, SWP_NOMOVE | SWP_NOZORDER);
        std::printf("asked for a width of 100: %d\n", WidthOf(window));
        SendMessageW(window, WM_CLOSE, 0, 0);
        std::printf("closed once: %s\n", IsWindow(window) ? "still there" : "gone");
        SendMessageW(window, WM_CLOSE, 0, 0);
        std::printf("closed twice: %s, asked %d times\n", IsWindow(window) ? "still there" : "gone", guard->asked());
    }
    guard->Release();  // the window's end has released the rest
    manager->Release();
    OleUninitialize();
    return 0;
}
