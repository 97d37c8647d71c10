// Every member of every class, read from the type library, and calls of it: what is added to the library later is
// covered without a change here.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <list>
#include <optional>
#include <string>
#include <vector>

#include "support/client.h"
#include "support/heap.h"
#include "support/malloc_spy.h"
#include "support/process_counts.h"
#include "support/scratch_folder.h"
#include "support/test_hook.h"
#include "support/test_window.h"
#include "trust/values.h"

namespace velk::test {

// ---- What there is ----

inline constexpr const wchar_t *kMain = L"VelkSprt.dll", *kHooks = L"VelkSub.dll";

struct Member {
    std::wstring name;
    DISPID id;
    WORD kind;  // DISPATCH_ flag
    ULONG_PTR slot;
    std::vector<Taken> takes{};  // by the slot: a result comes last
    bool hasResult = false;

    bool IsLet() const noexcept { return (kind & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0; }
    std::size_t arguments() const noexcept { return takes.size() - hasResult; }
};

struct Class {
    std::wstring name;
    CLSID clsid;
    HMODULE library;
    std::vector<Member> members{};

    ComPtr<IDispatch> MakeObject() const { return CreateObject<IDispatch>(clsid, library); }
};

// Of one of the built libraries, by its file's name.
const std::vector<Class>& ReadClasses(const wchar_t* library);
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

// What no call can harm anything past; see there.
std::list<ImportPatch> CalmPlatform();

// A platform that they cannot harm, the hook library with a hook to pass to it, and files to read.
class Surroundings {
  public:
    explicit Surroundings(const wchar_t* library);
    Surroundings(const Surroundings&) = delete;
    Surroundings& operator=(const Surroundings&) = delete;
    ~Surroundings();

  private:
    const std::list<ImportPatch> calm_ = CalmPlatform();
    const HookLibrary hooks_;
    const ComPtr<TestHook> hook_ = TestHook::Make(2);
    const ScratchFolder folder_;
    const std::wstring settings_ = BuiltFile(L"MyFileSettings.ini");
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
    bool operator==(const Belongings&) const = default;
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

// A compiled client's call through the vtable, with what each argument and the result is or finds in its place; null
// and zero where there is none.
HRESULT CallSlot(IDispatch* object, const Member& member, std::vector<std::optional<Variant>>& places);

// What the thread's last error is told with has to be gone with the thread's own reference.
void ForgetError();

// Connects an object's events, if it has any: a sink that is refused, and one that is not.
class AnySink {
  public:
    void Connect(IUnknown* source);
    void Disconnect() {
        if (const auto point = std::exchange(point_, nullptr)) point->Unadvise(cookie_);
    }
    void Forget() { point_ = nullptr; }  // which holds the source, too

  private:
    ComPtr<IConnectionPoint> point_;
    DWORD cookie_ = 0;
};

// Windows as calls meet them, and check that what hooked them leaves them as they were. Without a parent on the screen
// they cost little.
class AttemptWindows {
  public:
    AttemptWindows();
    AttemptWindows(const AttemptWindows&) = delete;
    AttemptWindows& operator=(const AttemptWindows&) = delete;
    ~AttemptWindows() { realWindows.clear(); }

    void ExpectUntouched() const;

  private:
    const TestWindow windows_[2]{TestWindow(WS_CHILD), TestWindow(WS_CHILD)};
    const WNDPROC procedure_ = windows_[0].CurrentProcedure();
    const int properties_ = windows_[0].CountProperties();
};

// Calls of one member of one object with sane arguments; the same ones for the same seed. With odd seeds objects that
// hook windows have one from the start, and those with events a sink.
class Attempt {
  public:
    struct Answer {
        HRESULT called;
        HRESULT code;  // what the member failed with
    };

    Attempt(const Class& one, const Member& member, unsigned seed);
    Attempt(const Attempt&) = delete;
    Attempt& operator=(const Attempt&) = delete;
    ~Attempt();

    Answer Make(unsigned seed, const std::function<void()>& before = {}, const std::function<void()>& after = {});
    IDispatch* object() const noexcept { return object_.get(); }
    void MayLeaveHooks() noexcept { hooks_ = false; }  // after one that could not be added

  private:
    std::optional<AttemptWindows> windows_;  // outlive the object; hooks are destroyed with it
    ComPtr<IDispatch> object_;
    const Member& member_;
    bool hooks_, connects_;
};

}  // namespace velk::test
