// Every member of every class, read from the type library, and calls of it: what is added to the library later is
// covered without a change here.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <list>
#include <map>
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
    IID iid;
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
    const ComPtr<TestHook> hook_ = TestHook::Make();
    const ScratchFolder folder_;
    const std::wstring settings_ = BuiltFile(L"MyFileSettings.ini");
};

// What belongs to the process and its other code, and what a member might leave behind as well, by name.
using Snapshot = std::map<std::string, std::wstring>;
Snapshot ProcessState();
Snapshot Belongings();

// ---- Calls ----

// An answer that automation knows: success, a numbered exception, or what was wrong with the call.
bool IsProper(HRESULT answer);

enum class Arguments { Sane, Any };

// A late-bound call before it is made; all of it is open to damage.
struct Request {
    Request(const Member& member, Client& client, Arguments wanted);
    Request(const Request&) = delete;
    Request& operator=(const Request&) = delete;

    // Without the places that the client does not want to be told in.
    Outcome SendTo(IDispatch* object, LCID locale = LOCALE_USER_DEFAULT, bool result = true, bool exception = true,
                   bool badArgument = true);
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

// What the thread's last error is told with has to be gone with the thread's own reference. The interface and the text
// that it had.
std::pair<IID, std::wstring> ForgetError();

// An object of a class, and windows as calls meet them. What hooked those leaves them as they were, in the end. Without
// a parent on the screen they cost little.
class Subject {
  public:
    explicit Subject(const Class& one, bool isAttached = false);  // to a window, if that is what the class is for
    Subject(const Subject&) = delete;
    Subject& operator=(const Subject&) = delete;
    ~Subject();

    void Connect();  // its events, if it has any: a sink that is refused, and one that is not
    void Disconnect() {
        if (const auto point = std::exchange(point_, nullptr)) point->Unadvise(cookie_);
    }
    void LetGo() { point_ = nullptr, object = nullptr; }  // whose connection stays
    void MayLeaveHooks() noexcept { hooks_ = false; }     // after one that could not be added

    ComPtr<IDispatch> object;

  private:
    const TestWindow windows_[2]{TestWindow(WS_CHILD), TestWindow(WS_CHILD)};
    const WNDPROC procedure_ = windows_[0].CurrentProcedure();
    const int properties_ = windows_[0].CountProperties();
    bool hooks_;
    ComPtr<IConnectionPoint> point_;
    DWORD cookie_ = 0;
};

// A call with sane arguments, the same ones for the same seed.
Outcome Attempt(Subject& subject, const Member& member, unsigned seed, const std::function<void()>& before = {},
                const std::function<void()>& after = {});

}  // namespace velk::test
