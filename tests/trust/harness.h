// Every member of every class, read from the type library, and calls of it: what is added to the library later is
// covered without a change here.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <list>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/text.h"
#include "support/client.h"
#include "support/heap.h"
#include "support/malloc_spy.h"
#include "support/process_counts.h"
#include "support/test_hook.h"
#include "support/test_window.h"
#include "tools/typelib/resolved_type.h"
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

inline Member ReadMember(const Type& type, const FUNCDESC& function) {
    Member member{DocumentationOf(type, function.memid).name, function.memid, static_cast<WORD>(function.invkind),
                  static_cast<ULONG_PTR>(function.oVft)};
    for (SHORT i = 0; i < function.cParams; ++i) {
        const ELEMDESC& parameter = function.lprgelemdescParam[i];
        const USHORT attributes = parameter.paramdesc.wParamFlags;
        const ResolvedType resolved = Resolve(type, parameter.tdesc);
        member.takes.push_back({resolved.type, resolved.byReference, (attributes & PARAMFLAG_FOPT) != 0});
        member.hasResult |= (attributes & PARAMFLAG_FRETVAL) != 0;
    }
    return member;
}

// Of one of the built libraries, by its file's name.
inline const std::vector<Class>& ReadClasses(const wchar_t* library) {
    static std::map<std::wstring, std::vector<Class>> read;
    std::vector<Class>& classes = read[library];
    if (!classes.empty()) return classes;
    const HMODULE module = LoadLibraryW(BuiltFile(library).c_str());
    for (const Type& coclass : ClassesOf(LoadTypes(BuiltFile(library).c_str()))) {
        const Type face = OwnMembers(Implemented(coclass, 0));
        Class& made =
            classes.emplace_back(Class{NameOf(coclass), AttributesOf(coclass)->guid, AttributesOf(face)->guid, module});
        for (UINT i = 0; i < AttributesOf(face)->cFuncs; ++i) {
            made.members.push_back(ReadMember(face, *FunctionOf(face, i)));
        }
    }
    EXPECT_FALSE(classes.empty());
    return classes;
}

// How much of a long test is run: a part of it with every change, all of it with VELK_TRUST=full in the environment.
inline int AtScale(int always, int full) { return std::getenv("VELK_TRUST") ? full : always; }
// A figure for the table that `./dev trust` writes.
inline void Tell(const std::string& what, const std::string& figure) {
    std::printf("trust: %s: %s\n", what.c_str(), figure.c_str());
}

// ---- What surrounds the calls ----

// What belongs to the process and its other code, as far as the library imports anything that changes it, and what a
// member might leave behind as well, by name.
using Snapshot = std::map<std::string, std::wstring>;

inline Snapshot ProcessState() {
    constexpr unsigned kControl = 0xFFC0;  // the other bits tell what happened
    WORD controlWord = 0;
    unsigned mxcsr = 0;
    asm volatile("fnstcw %0" : "=m"(controlWord));
    asm volatile("stmxcsr %0" : "=m"(mxcsr));
    return {{"floating-point control", std::to_wstring(controlWord) + L" " + std::to_wstring(mxcsr & kControl)},
            {"error mode", std::to_wstring(GetThreadErrorMode())}};
}

inline Snapshot Belongings() {
    Snapshot all = ProcessState();
    all["strings, arrays, task memory"] = std::to_wstring(MallocSpy::Alive());
    all["the library's own heap"] = std::to_wstring(Heap::held.blocks);
    all["kernel handles"] = std::to_wstring(OpenHandles());
    all["drawing objects"] = std::to_wstring(GdiObjects());
    return all;
}

// ---- Calls ----

// An answer that automation knows: success, a numbered exception, or what was wrong with the call.
inline bool IsProper(HRESULT answer) {
    const bool automation = answer >= DISP_E_UNKNOWNINTERFACE && answer <= DISP_E_BUFFERTOOSMALL;
    return answer == S_OK || automation || answer == E_INVALIDARG || answer == E_POINTER || answer == E_OUTOFMEMORY;
}

enum class Arguments { Sane, Any };

// A late-bound call before it is made; all of it is open to damage.
struct Request {
    Request(const Member& member, Client& client, Arguments wanted) : id(member.id), flags(member.kind) {
        for (std::size_t i = member.arguments(); i-- > 0;)
            arguments.push_back(wanted == Arguments::Sane || OneIn(2) ? client.Sane(member.takes[i]) : client.Any());
        parameters = {arguments.data(), names.data(), static_cast<UINT>(arguments.size()), member.IsLet() ? 1u : 0u};
    }
    Request(const Request&) = delete;
    Request& operator=(const Request&) = delete;

    // Without the places that the client does not want to be told in.
    Outcome SendTo(IDispatch* object, LCID locale = LOCALE_USER_DEFAULT, bool result = true, bool exception = true,
                   bool badArgument = true) {
        Outcome outcome;
        EXCEPINFO thrown{};
        outcome.result =
            object->Invoke(id, iid, locale, flags, isNull ? nullptr : &parameters, result ? &outcome.value : nullptr,
                           exception ? &thrown : nullptr, badArgument ? &outcome.badArgument : nullptr);
        outcome.Take(thrown);
        return outcome;
    }
    void Damage(Client& client) {
        static const DISPID kIds[] = {0, -1, -3, -4, -5, 3, 99, 0x7FFFFFFF, static_cast<DISPID>(0x80000000)};
        const auto upTo = [](UINT count) { return static_cast<UINT>(Below(static_cast<int>(count) + 1)); };
        const UINT huge = 0xFFFFFFFF - upTo(2), given = parameters.cArgs;
        const std::function<void()> kinds[] = {
            [&] { parameters.cArgs = upTo(given); },
            [&] {
                for (int i = 1 + Below(20); i > 0; --i) arguments.push_back(client.Any());
                parameters.rgvarg = arguments.data();
                parameters.cArgs = static_cast<UINT>(arguments.size());
            },
            [&] { parameters.rgvarg = nullptr; },
            [&] { parameters.rgdispidNamedArgs = nullptr, parameters.cNamedArgs = upTo(2); },
            [&] {
                parameters.cNamedArgs = upTo(given + 1);
                for (DISPID& name : names) name = OneIn(3) ? AnyOf(kIds) : Below(4);
            },
            [&] { parameters.cArgs = huge; },
            [&] { parameters.cNamedArgs = huge; },
            [&] { id = AnyOf(kIds); },
            [&] { flags = static_cast<WORD>(OneIn(2) ? Below(16) : engine()); },
            [&] { iid = OneIn(2) ? IID_IDispatch : IID_IUnknown; },
            [&] { isNull = true; }};
        AnyOf(kinds)();
    }

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
inline HRESULT CallSlot(IDispatch* object, const Member& member, std::vector<std::optional<Variant>>& places) {
    constexpr VARTYPE kPointer = sizeof(void*) == 4 ? VT_UI4 : VT_UI8;
    std::vector<VARTYPE> types;
    std::vector<Variant> words(member.takes.size());
    std::vector<VARIANTARG*> arguments;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const auto& [type, byReference, optional] = member.takes[i];
        types.push_back(byReference || type & VT_ARRAY ? kPointer : type);
        arguments.push_back(&words[i]);
        if (!places[i]) continue;
        Variant& place = *places[i];
        if (type != VT_VARIANT) place.vt = type;
        void* const at = type == VT_VARIANT ? static_cast<void*>(&place) : static_cast<void*>(&place.llVal);
        words[i].llVal = byReference ? reinterpret_cast<LONG_PTR>(at) : place.llVal;
    }
    Variant answer;
    EXPECT_EQ(S_OK, DispCallFunc(object, member.slot, CC_STDCALL, VT_I4, static_cast<UINT>(types.size()), types.data(),
                                 arguments.data(), &answer));
    return answer.lVal;
}

// What the thread's last error is told with has to be gone with the thread's own reference. The interface and the text
// that it had.
inline std::pair<IID, std::wstring> ForgetError() {
    ComPtr<IErrorInfo> error;
    if (GetErrorInfo(0, error.Receive()) != S_OK) return {};
    IID iid{};
    Bstr text;
    error->GetGUID(&iid);
    error->GetDescription(text.Receive());
    EXPECT_EQ(0u, error.Detach()->Release()) << "somebody else holds it, too";
    return {iid, std::wstring(View(text.get()))};
}

// An object of a class, and windows as calls meet them. What hooked those leaves them as they were, in the end. Without
// a parent on the screen they cost little.
class Subject {
  public:
    // To a window, if that is what the class is for.
    explicit Subject(const Class& one, bool isAttached = false)
        : object(one.MakeObject()), hooks_(object.As<ISubclass>()) {
        PumpMessages();  // what is left of earlier windows would pile up, and each call look through all of it
        for (const TestWindow& window : windows_) realWindows.push_back(window.handle());
        if (!hooks_ || !isAttached) return;
        for (const wchar_t* const attach : {L"Init", L"Attach"}) Call(object.get(), attach, {Arg(realWindows[0])});
    }
    Subject(const Subject&) = delete;
    Subject& operator=(const Subject&) = delete;
    ~Subject() {
        Disconnect();
        object = nullptr;
        realWindows.clear();
        for (const TestWindow& window : windows_) {
            EXPECT_TRUE(!hooks_ || procedure_ == window.CurrentProcedure());
            EXPECT_TRUE(!hooks_ || properties_ == window.CountProperties());
        }
    }

    // Its events, if it has any: a sink that is refused, and one that is not.
    void Connect() {
        ComPtr<IEnumConnectionPoints> points;
        ComPtr<IConnectionPoint> point;
        const auto container = object.As<IConnectionPointContainer>();
        if (!container || FAILED(container->EnumConnectionPoints(points.Receive()))) return;
        points->Next(1, point.Receive(), nullptr);
        EXPECT_TRUE(FAILED(point->Advise(points.get(), &cookie_))) << "it hears no events";
        if (SUCCEEDED(point->Advise(AnyOf(Objects()).get(), &cookie_))) point_ = std::move(point);
    }
    void Disconnect() {
        if (const auto point = std::exchange(point_, nullptr)) point->Unadvise(cookie_);
    }
    void LetGo() { point_ = nullptr, object = nullptr; }  // whose connection stays
    void MayLeaveHooks() noexcept { hooks_ = false; }     // after one that could not be added

    ComPtr<IDispatch> object;

  private:
    // Messages that calls make up bring pointers that they make up, and the platform's own procedure would follow them.
    static std::optional<LRESULT> Answer(HWND, UINT message, WPARAM, LPARAM) noexcept {
        if (message == WM_CLOSE || message == WM_DESTROY) return std::nullopt;
        return message == WM_NCCREATE;
    }

    const TestWindow windows_[2]{TestWindow(WS_CHILD, &Answer), TestWindow(WS_CHILD, &Answer)};
    const WNDPROC procedure_ = windows_[0].CurrentProcedure();
    const int properties_ = windows_[0].CountProperties();
    bool hooks_;
    ComPtr<IConnectionPoint> point_;
    DWORD cookie_ = 0;
};

}  // namespace velk::test
