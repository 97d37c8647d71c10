// The base of every class: identity, reference count, late-bound calls, error information and class information, and
// the guard at the boundary.
//
// A member is written as if failure did not exist: its body runs inside Guard, which turns whatever the body throws
// into what the caller sees, by the policy that the class states once in its ClassInfo. And it is written as if nobody
// else had the object: Guard keeps it alive until the member ends, though the client's code, which a report, an event
// or an object's own member may run, drops the last reference.
#pragma once

#include <atomic>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "frame/dispatch/dispatch_impl.h"
#include "frame/dispatch/quick_call.h"
#include "frame/failure/failure.h"
#include "frame/module/library.h"
#include "platform/platform.h"
#include "platform/text.h"
#include "platform/variant.h"

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
    const IID& iid;               // its dispatch interface
    const IID* events = nullptr;  // its outgoing interface
    FailurePolicy policy;
    HRESULT componentFailure = S_OK;          // for that policy
    const wchar_t* creationFailed = nullptr;  // heading of the report of a failed creation, for a class with OnCreate
    const wchar_t* reportedPrefix = L"";      // stands before members' names in reports
    DISPID defaultMember = DISPID_UNKNOWN;    // what late-bound clients get for the object itself
};

// Which threads may use an object: the one that made it, where others have a proxy, or any.
enum class UsedBy { OneThread, AnyThread };

// What needs no knowledge of the class's interface.
class ObjectCore {
  public:
    ObjectCore(const ObjectCore&) = delete;
    ObjectCore& operator=(const ObjectCore&) = delete;

  protected:
    explicit ObjectCore(const ClassInfo& info) noexcept : info_(info) {}
    virtual ~ObjectCore() = default;

    // Keeps an object alive while one of its members runs. The calls of one thread are counted, which costs next to
    // nothing.
    class OneThreadHold {
      public:
        explicit OneThreadHold(const ObjectCore& object) noexcept : object_(const_cast<ObjectCore&>(object)) {
            ++object_.calls_;
        }
        OneThreadHold(const OneThreadHold&) = delete;
        OneThreadHold& operator=(const OneThreadHold&) = delete;
        ~OneThreadHold() {
            if ((--object_.calls_ | object_.count_.load(std::memory_order_relaxed)) == 0) object_.Destroy();
        }

      private:
        ObjectCore& object_;
    };

    // The same by a reference.
    class AnyThreadHold {
      public:
        explicit AnyThreadHold(const ObjectCore& object) noexcept : object_(const_cast<ObjectCore&>(object)) {
            object_.CountUp();
        }
        AnyThreadHold(const AnyThreadHold&) = delete;
        AnyThreadHold& operator=(const AnyThreadHold&) = delete;
        ~AnyThreadHold() { object_.CountDown(); }

      private:
        ObjectCore& object_;
    };

    ULONG CountUp() noexcept { return count_.fetch_add(1, std::memory_order_relaxed) + 1; }
    ULONG CountDown() noexcept;
    bool CountUpIfAlive() noexcept;  // false when the object is being destroyed, by this thread or another

    enum class Policy { OfClass, PassOn };

    // Turns the exception that is being handled, `thrown` if it was caught as one, into the member's answer. A member
    // is named as its function is.
    HRESULT Fail(const char* member, Policy policy, const Thrown* thrown) const noexcept;

    // The face that is asked for, of those that every class has.
    static void* FaceOf(REFIID iid, const IID& own, IDispatch* object, ISupportErrorInfo* errors,
                        IProvideClassInfo2* description) noexcept;

    // Clients that pass an object to another thread without marshalling it are told in a debug build.
#ifdef NDEBUG
    static constexpr HRESULT CheckThread(const char*) noexcept { return S_OK; }
#else
    HRESULT CheckThread(const char* member) const noexcept;
#endif

    // A late-bound call of what the type library does not list: the default member, or the enumerator. `object` is this
    // one.
    HRESULT InvokeUnlisted(const InterfacePlan& plan, IDispatch* object, const dispatch::Request& request) noexcept;

    // The items of a class that can be enumerated, in order.
    virtual std::optional<std::vector<Variant>> Items() { return std::nullopt; }

    HRESULT GetCoclass(ITypeInfo** info) const noexcept;
    HRESULT GetEventsGuid(DWORD kind, GUID* guid) const noexcept;

    const ClassInfo& info_;

  private:
    void Destroy() noexcept;

    // What late-bound clients ask for without finding it in the type library: an enumerator, "For Each". It gives the
    // items as they were when it was asked for, so it stays valid whatever becomes of the object.
    HRESULT InvokeEnumerator(const DISPPARAMS& parameters, VARIANT* result, EXCEPINFO* exception) noexcept;

    library::Use use_;
    std::atomic<ULONG> count_ = 1;
    unsigned calls_ = 0;  // members that are running
#ifndef NDEBUG
    const DWORD thread_ = GetCurrentThreadId();
#endif
};

namespace detail {

// Stores what a member's body gave in what the caller gets.
template <class To, class From>
void StoreResult(To& to, From&& from) noexcept {
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
template <class Interface, UsedBy kThreads = UsedBy::OneThread>
class AutomationObject : public DispatchImpl<Interface>,
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

    // Held from the start: what is asked for an argument's value may drop the last reference before the member begins.
    // In a quick call nothing is asked, and the member holds the object itself.
    STDMETHODIMP Invoke(DISPID id, REFIID reserved, LCID locale, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                        EXCEPINFO* exception, UINT* badArgument) noexcept override {
        const InterfacePlan* const plan = this->Plan();
        if (!plan) return E_OUTOFMEMORY;
        const QuickCall* const quick = plan->Quick(id, flags);
        if (dispatch::IsQuick(quick, reserved, parameters, result)) {
            if (!quick->count) return dispatch::InvokeQuick(*quick, this, result, exception);
            HRESULT ended;
            if (dispatch::InvokeLending(*quick, this, *parameters, result, exception, &ended)) return ended;
        }
        const Hold hold(*this);
        const dispatch::Request request{id, reserved, locale, flags, parameters, result, exception, badArgument};
        const HRESULT called = dispatch::Invoke(*plan, References::OnlyRead, this, request);
        return called == DISP_E_MEMBERNOTFOUND ? InvokeUnlisted(*plan, this, request) : called;
    }

    STDMETHODIMP InterfaceSupportsErrorInfo(REFIID iid) noexcept override {
        return iid == __uuidof(Interface) ? S_OK : S_FALSE;
    }
    STDMETHODIMP GetClassInfo(ITypeInfo** info) noexcept override { return GetCoclass(info); }
    STDMETHODIMP GetGUID(DWORD kind, GUID* guid) noexcept override { return GetEventsGuid(kind, guid); }

  protected:
    using Hold = std::conditional_t<kThreads == UsedBy::OneThread, OneThreadHold, AnyThreadHold>;

    explicit AutomationObject(const ClassInfo& info) noexcept : ObjectCore(info) {}

    // A class with further interfaces adds them here. The pointer is not counted.
    virtual void* ExtraInterface(REFIID) noexcept { return nullptr; }

    // A body that gives an HRESULT says itself how the member ends. The name is that of the calling function.
    template <class Body>
    HRESULT Guard(Body&& body, const char* member = __builtin_FUNCTION()) const noexcept {
        return Run<Policy::OfClass>(member, body);
    }
    // For a member with a result: what the body gives is handed over; after a failure the result is empty.
    template <class T, class Body>
    HRESULT Guard(T* result, Body&& body, const char* member = __builtin_FUNCTION()) const noexcept {
        return Run<Policy::OfClass>(member, result, body);
    }

    // For what is deliberately reported under another name than its function's.
    template <class Body>
    HRESULT GuardAs(const char* member, Body&& body) const noexcept {
        return Run<Policy::OfClass>(member, body);
    }
    template <class T, class Body>
    HRESULT GuardAs(const char* member, T* result, Body&& body) const noexcept {
        return Run<Policy::OfClass>(member, result, body);
    }

    // For a member, or a part of one, whose errors its class leaves as they are, whatever it does with others.
    template <class Body>
    HRESULT PassOn(Body&& body, const char* member = __builtin_FUNCTION()) const noexcept {
        return Run<Policy::PassOn>(member, body);
    }
    template <class T, class Body>
    HRESULT PassOn(T* result, Body&& body, const char* member = __builtin_FUNCTION()) const noexcept {
        return Run<Policy::PassOn>(member, result, body);
    }

    // A property that is kept as it is given: a text, a truth value or a number. An enumeration is kept as a Long.
    template <class T, class Field>
    HRESULT Get(T* result, const Field& field, const char* member = __builtin_FUNCTION()) const noexcept {
        return Run<Policy::OfClass>(member, AsNumber(result), [&] {
            if constexpr (std::is_same_v<Field, std::wstring>) {
                return Bstr(field);
            } else {
                return field;
            }
        });
    }
    template <class T, class Field>
    HRESULT Let(T* value, Field& field, const char* member = __builtin_FUNCTION()) const noexcept {
        return Run<Policy::OfClass>(member, [&] {
            if constexpr (std::is_same_v<Field, std::wstring>) {
                field = View(Given(value));
            } else if constexpr (std::is_same_v<Field, bool>) {
                field = Given(value) != VARIANT_FALSE;
            } else {
                field = Given(AsNumber(value));
            }
        });
    }

  private:
    // The hold stands around all that a member does, its report included.
    template <Policy kPolicy, class Body>
    HRESULT Run(const char* member, Body&& body) const noexcept {
        if constexpr (kThreads == UsedBy::OneThread) {
            if (const HRESULT wrong = CheckThread(member)) return wrong;
        }
        const Hold hold(*this);
        return Try<kPolicy>(member, body);
    }
    template <Policy kPolicy, class T, class Body>
    HRESULT Run(const char* member, T* result, Body&& body) const noexcept {
        if (!result) return E_POINTER;
        *result = T{};
        return Run<kPolicy>(member, [&] { detail::StoreResult(*result, body()); });
    }

    template <Policy kPolicy, class Body>
    HRESULT Try(const char* member, Body& body) const noexcept try {
        if constexpr (std::is_same_v<decltype(body()), HRESULT>) {
            return body();
        } else {
            body();
            return S_OK;
        }
    } catch (const Thrown& thrown) {
        return Fail(member, kPolicy, &thrown);
    } catch (...) {
        return Fail(member, kPolicy, nullptr);
    }

    void* Face(REFIID iid) noexcept {
        void* const face = FaceOf(iid, __uuidof(Interface), this, this, this);
        return face ? face : ExtraInterface(iid);
    }
};

}  // namespace velk
