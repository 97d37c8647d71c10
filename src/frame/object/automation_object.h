// The base of every class: identity, reference count, late-bound calls, error information and class information, and
// the guard at the boundary.
//
// A member is written as if failure did not exist: its body runs inside Guard, which turns whatever the body throws
// into what the caller sees, by the policy that the class states once in its ClassInfo.
#pragma once

#include <atomic>
#include <type_traits>
#include <utility>

#include "frame/dispatch/dispatch_face.h"
#include "frame/failure/failure.h"
#include "frame/module/library.h"
#include "platform/platform.h"

namespace velk {

enum class FailurePolicy {
    PassOn,            // the caller gets the error itself
    ComponentFailure,  // the class's own errors reach the caller; every other becomes its component-failure code
    Report,            // a message box titled with the member's name; the caller gets what the result was so far
    ReportAndPassOn,   // the same message box, and the caller gets the error itself
};

struct ClassInfo {
    const wchar_t* name;  // "CCRC32"
    const CLSID& clsid;
    const IID& iid;     // its dispatch interface
    const IID* events;  // its outgoing interface, or null
    FailurePolicy policy;
    HRESULT componentFailure;       // for that policy
    const wchar_t* creationFailed;  // heading of the report of a failed creation
    bool onAnyThread = false;       // else an object is used by the thread that made it, or through a proxy
};

// What needs no knowledge of the class's interface.
class ObjectCore {
  public:
    ObjectCore(const ObjectCore&) = delete;
    ObjectCore& operator=(const ObjectCore&) = delete;

  protected:
    explicit ObjectCore(const ClassInfo& info) noexcept : info_(info) {}
    virtual ~ObjectCore() = default;

    ULONG CountUp() noexcept { return count_.fetch_add(1, std::memory_order_relaxed) + 1; }
    ULONG CountDown() noexcept;

    // Turns the exception that is being handled into the member's answer.
    HRESULT Fail(const wchar_t* member) const noexcept { return Fail(member, info_.policy); }
    HRESULT Fail(const wchar_t* member, FailurePolicy policy) const noexcept;

    // Clients that pass an object to another thread without marshalling it are told in a debug build.
#ifdef NDEBUG
    static constexpr HRESULT CheckThread(const wchar_t*) noexcept { return S_OK; }
#else
    HRESULT CheckThread(const wchar_t* member) const noexcept;
#endif

    HRESULT GetCoclass(ITypeInfo** info) const noexcept;
    HRESULT GetEventsGuid(DWORD kind, GUID* guid) const noexcept;

    const ClassInfo& info_;

  private:
    library::Use use_;
    std::atomic<ULONG> count_ = 1;
#ifndef NDEBUG
    const DWORD thread_ = GetCurrentThreadId();
#endif
};

namespace detail {

// Stores what a member's body gave in what the caller gets.
template <class To, class From>
void HandOver(To& to, From&& from) noexcept {
    if constexpr (std::is_same_v<std::decay_t<From>, bool>) {
        to = from ? VARIANT_TRUE : VARIANT_FALSE;
    } else if constexpr (requires { from.Detach(); }) {
        to = from.Detach();
    } else {
        to = from;
    }
}

}  // namespace detail

// The interface comes first, so that its calls arrive without an adjusted pointer.
template <class Interface>
class AutomationObject : public DispatchFace<Interface>,
                         public ObjectCore,
                         public ISupportErrorInfo,
                         public IProvideClassInfo2 {
  public:
    STDMETHODIMP QueryInterface(REFIID iid, void** object) noexcept override {
        if (!object) return E_POINTER;
        *object = Face(iid);
        if (!*object) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return CountUp(); }
    STDMETHODIMP_(ULONG) Release() noexcept override { return CountDown(); }

    STDMETHODIMP InterfaceSupportsErrorInfo(REFIID iid) noexcept override {
        return iid == __uuidof(Interface) ? S_OK : S_FALSE;
    }
    STDMETHODIMP GetClassInfo(ITypeInfo** info) noexcept override { return GetCoclass(info); }
    STDMETHODIMP GetGUID(DWORD kind, GUID* guid) noexcept override { return GetEventsGuid(kind, guid); }

  protected:
    explicit AutomationObject(const ClassInfo& info) noexcept : ObjectCore(info) {}

    // A class with further interfaces adds them here. The pointer is not counted.
    virtual void* ExtraFace(REFIID) noexcept { return nullptr; }

    template <class Body>
    HRESULT Guard(const wchar_t* member, Body&& body) const noexcept try {
        if (const HRESULT wrong = CheckThread(member)) return wrong;
        body();
        return S_OK;
    } catch (...) {
        return Fail(member);
    }

    // For a member with a result: what the body returns is handed over; after a failure the result is empty.
    template <class T, class Body>
    HRESULT Guard(const wchar_t* member, T* result, Body&& body) const noexcept try {
        if (!result) return E_POINTER;
        *result = T{};
        if (const HRESULT wrong = CheckThread(member)) return wrong;
        detail::HandOver(*result, body());
        return S_OK;
    } catch (...) {
        return Fail(member);
    }

    // For a member, or a part of one, whose errors its class leaves as they are, whatever it does with others.
    template <class Body>
    HRESULT PassOn(Body&& body) const noexcept try {
        if (const HRESULT wrong = CheckThread(L"A member")) return wrong;
        body();
        return S_OK;
    } catch (...) {
        return Fail(nullptr, FailurePolicy::PassOn);
    }
    template <class T, class Body>
    HRESULT PassOn(T* result, Body&& body) const noexcept {
        if (!result) return E_POINTER;
        *result = T{};
        return PassOn([&] { detail::HandOver(*result, body()); });
    }

  private:
    void* Face(REFIID iid) noexcept {
        if (iid == IID_IUnknown || iid == IID_IDispatch || iid == __uuidof(Interface)) {
            return static_cast<Interface*>(this);
        }
        if (iid == IID_ISupportErrorInfo) return static_cast<ISupportErrorInfo*>(this);
        if (iid == IID_IProvideClassInfo) return static_cast<IProvideClassInfo*>(this);
        if (iid == IID_IProvideClassInfo2) return static_cast<IProvideClassInfo2*>(this);
        return ExtraFace(iid);
    }
};

}  // namespace velk
