// Every member of every class, read from the type library, and calls of it: what is added to the library later is
// covered without a change here.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <list>
#include <optional>
#include <string>
#include <vector>

#include "support/gdi_objects.h"
#include "support/heap.h"
#include "support/malloc_spy.h"
#include "support/report_recorder.h"
#include "support/scratch_folder.h"
#include "support/test_hook.h"
#include "support/test_window.h"
#include "trust/calm_platform.h"
#include "trust/values.h"

namespace velk::test {

inline constexpr LONG kSumOfDigits = -873187034;  // the checksum of "123456789"

// ---- What there is ----

inline constexpr const wchar_t *kMain = L"VelkSprt.dll", *kHooks = L"VelkSub.dll";

struct Member {
    std::wstring name;
    DISPID id;
    WORD kind;  // DISPATCH_ flag
    ULONG_PTR slot;
    std::vector<Taken> parameters{};
    std::optional<Taken> result{};

    bool IsLet() const noexcept { return (kind & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0; }
};

struct Class {
    std::wstring name;
    CLSID clsid;
    HMODULE library;
    std::vector<Member> members{};

    ComPtr<IDispatch> MakeObject() const;
};

// Of one of the built libraries, by its file's name.
const std::vector<Class>& ReadClasses(const wchar_t* library);
bool CanUnload(const wchar_t* library);
inline std::string Narrow(const std::wstring& text) { return {text.begin(), text.end()}; }

// What every class and member is put through. The one in hand is named even when the process ends.
void ForEachMember(const wchar_t* library, const std::function<void(const Class&, const Member&)>& trial);
inline std::string inHand;

// How much of a long test is run: a part of it with every change, all of it with VELK_TRUST=full in the environment.
inline int AtScale(int always, int full) { return std::getenv("VELK_TRUST") ? full : always; }
// A figure for the table that `./dev trust` writes.
inline void Tell(const std::string& what, const std::string& figure) {
    std::printf("trust: %s: %s\n", what.c_str(), figure.c_str());
}

// ---- What surrounds the calls ----

// A platform that they cannot harm, the hook library with a hook to pass to it, and files to read.
class Surroundings {
  public:
    explicit Surroundings(const wchar_t* library);
    Surroundings(const Surroundings&) = delete;
    Surroundings& operator=(const Surroundings&) = delete;
    ~Surroundings();

  private:
    const CalmPlatform calm_;
    const HookLibrary hooks_;
    const ComPtr<TestHook> hook_ = TestHook::Make(2);
    const ScratchFolder folder_;
};

// What belongs to the process and its other code.
struct ProcessState {
    WORD controlWord = 0;
    unsigned mxcsr = 0;
    UINT errorMode = GetErrorMode();
    LCID threadLocale = GetThreadLocale();
    int priority = GetThreadPriority(GetCurrentThread());
    std::string locale = setlocale(LC_ALL, nullptr);
    std::wstring paths;  // the current folder, the one to load libraries from, the search path

    ProcessState();
    bool operator==(const ProcessState&) const = default;
};

// What a member might leave behind or change.
struct Belongings {
    LONG blocks = MallocSpy::Alive();
    std::ptrdiff_t heap = Heap::held.blocks;
    std::size_t handles = OpenHandles();
    int drawing = GdiObjects();
    ProcessState process{};

    void ExpectNoMore() const;
};

// Runs the client's code in place of each message box.
class OpenBox {
  public:
    explicit OpenBox(std::function<void()> whileOpen) { whileOpen_ = std::move(whileOpen); }
    ~OpenBox() { whileOpen_ = nullptr; }

  private:
    static int WINAPI Show(HWND, LPCWSTR, LPCWSTR, UINT) { return whileOpen_(), IDOK; }

    static inline std::function<void()> whileOpen_;
    const ScopedVariable asBoxes_{L"VELKSPRT_REPORTS", nullptr};
    const ImportPatch patch_{Library(), "MessageBoxW", reinterpret_cast<void*>(&Show)};
};

// ---- Calls ----

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

enum class Arguments { Sane, Any };

// A late-bound call before it is made; all of it is open to damage.
struct Request {
    Request(const Member& member, Client& client, Arguments wanted);
    Request(const Request&) = delete;
    Request& operator=(const Request&) = delete;

    HRESULT SendTo(IDispatch* object, LCID locale = LOCALE_USER_DEFAULT, VARIANT* result = nullptr,
                   EXCEPINFO* raised = nullptr, UINT* bad = nullptr) {
        return object->Invoke(id, iid, locale, flags, isNull ? nullptr : &parameters, result, raised, bad);
    }
    void Damage(Client& client);

    DISPID id;
    WORD flags;
    IID iid = IID_NULL;
    std::vector<VARIANT> arguments;
    std::vector<DISPID> names = std::vector<DISPID>(64, DISPID_PROPERTYPUT);
    DISPPARAMS parameters{};
    bool isNull = false;
};

// A compiled client's call through the vtable: null and zero for everything, but for what is given. A result comes
// last.
class SlotCall {
  public:
    explicit SlotCall(const Member& member);

    void Give(std::size_t argument, Variant value = {});  // where a pointer is taken, in a place of the client's
    HRESULT Make(IDispatch* object);

  private:
    const Member& member_;
    std::vector<Taken> takes_;
    std::vector<Variant> places_;
    std::vector<LONGLONG> words_;
};

// One call with sane arguments; the same ones for the same seed. Objects that hook windows get one, every second time
// before the call.
class Attempt {
  public:
    struct Answer {
        HRESULT called;
        HRESULT code;  // what the member failed with
    };

    Attempt(const Class& one, const Member& member, unsigned seed);
    Attempt(const Attempt&) = delete;
    Attempt& operator=(const Attempt&) = delete;
    ~Attempt() { realWindow = 0; }

    Answer Make(const std::function<void()>& before = {}, const std::function<void()>& after = {});
    IDispatch* object() const noexcept { return object_.get(); }

  private:
    std::optional<TestWindow> window_;  // outlives the object; hooks are destroyed with it
    ComPtr<IDispatch> object_;
    const Member& member_;
    unsigned seed_;
};

// For objects that hook windows: the member for it has one of two names.
inline void AttachTo(LONG window, IDispatch* object) {
    for (const wchar_t* const attach : {L"Init", L"Attach"}) Call(object, attach, {Arg(window)});
}

}  // namespace velk::test
